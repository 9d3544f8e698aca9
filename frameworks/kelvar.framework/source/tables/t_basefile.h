/* Group 12: the file stream.
 * group     HOST_GROUP_BASE_FILE
 * class     BaseFile */
#ifndef KELVAR_T_BASEFILE_H
#define KELVAR_T_BASEFILE_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseFile BaseFile;

typedef struct HostBaseFileGroup {
  uint32_t size;
  uint32_t reserved;

  /* Opens a file for reading. A folder, a pipe and a device are errors.
   * owner   the caller, of `*result` until Close, and of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*OpenForReading)(const HostFilename* path, BaseFile** result);

  /* The length in bytes.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   -1 */
  int64_t (*GetLength)(BaseFile* self);

  /* Reads up to `bytes` bytes; fewer only at the end of the file. The number read.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   -1 */
  int64_t (*ReadBytes)(BaseFile* self, void* buffer, int64_t bytes);

  /* Closes the file; null is allowed.
   * owner   the host
   * thread  any
   * waits   disk
   * since   23100
   * fails   nothing */
  void (*Close)(BaseFile* self);
} HostBaseFileGroup;

#ifdef __cplusplus
}
#endif
#endif
