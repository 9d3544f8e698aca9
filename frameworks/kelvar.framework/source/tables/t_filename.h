/* Group 9: paths of files and folders.
 * group     HOST_GROUP_FILENAME
 * value     Filename HostFilename */
#ifndef KELVAR_T_FILENAME_H
#define KELVAR_T_FILENAME_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostFilenameGroup {
  uint32_t size;
  uint32_t reserved;

  /* Makes an empty path in the memory of `self`, which holds nothing yet. Required.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Construct)(HostFilename* self);

  /* A copy. Required.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*Copy)(const HostFilename* self);

  /* Makes `self` equal to `other`. Required.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*CopyFrom)(HostFilename* self, const HostFilename* other);

  /* Ends a path and clears its word. Required.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Destroy)(HostFilename* self);

  /* A path from its text.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*FromString)(const HostString* text);

  /* The path's text, in the bytes of the file system, which need not be UTF-8.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetString)(const HostFilename* self);

  /* The path without its last component.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetDirectory)(const HostFilename* self);

  /* The last component.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetFileString)(const HostFilename* self);

  /* Appends one component. An empty name, a name with a separator, and "." and ".." are
   * errors.
   * owner   the caller, of the error text
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*Append)(HostFilename* self, const HostString* name);

  /* Whether the path has a text.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*Content)(const HostFilename* self);
} HostFilenameGroup;

#ifdef __cplusplus
}
#endif
#endif
