/* Group 5: texts.
 * group     HOST_GROUP_STRING
 * value     String HostString */
#ifndef KELVAR_T_STRING_H
#define KELVAR_T_STRING_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostStringGroup {
  uint32_t size;
  uint32_t reserved;

  /* The host's remembered answers of the resource symbol hook, or null. The module clears
   * the word when it installs its hook; nobody but the host reads it. */
  void* symbolCache;

  /* A text of `size` bytes of UTF-8. Bytes that are not UTF-8 become U+FFFD. Required.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*FromUtf8)(const char* utf8, int64_t size);

  /* A copy. Required. Quick.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*Copy)(const HostString* self);

  /* Ends a text and clears its word. Required. Quick.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Destroy)(HostString* self);

  /* The text as UTF-8 with a zero behind it, valid while the value lives unchanged; never
   * null. `size` receives the number of bytes and may be null. Required. Quick.
   * owner   the text
   * thread  any
   * waits   no
   * since   23100
   * fails   text */
  const char* (*GetUtf8)(const HostString* self, int64_t* size);

  /* Turns the bytes of a text file into a text: UTF-8, with or without a byte order mark.
   * Bytes that are not UTF-8 are an error that names the line and the byte.
   * owner   the caller, of the text and the error text
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*Decode)(const void* bytes, int64_t size, HostString* result);

  /* A text that keeps `size` bytes as they are: for names of files, and for output that is
   * not UTF-8.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*FromBytes)(const char* bytes, int64_t size);
} HostStringGroup;

#ifdef __cplusplus
}
#endif
#endif
