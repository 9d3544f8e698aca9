/* Group 11: the folder browser.
 * group     HOST_GROUP_BROWSE_FILES
 * class     BrowseFiles */
#ifndef KELVAR_T_BROWSEFILES_H
#define KELVAR_T_BROWSEFILES_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BrowseFiles BrowseFiles;

typedef struct HostBrowseFilesGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new browser.
   * owner   the caller, until Free
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BrowseFiles* (*Create)(void);

  /* Starts to list a folder: the names in ascending order of their bytes, files and folders
   * mixed, so that every machine has the same order.
   * owner   the caller, of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*Start)(BrowseFiles* self, const HostFilename* folder);

  /* Goes to the next entry, the first one after Start; 0 behind the last.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*Next)(BrowseFiles* self);

  /* The name of the entry, without its folder, in the bytes of the file system.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetName)(const BrowseFiles* self);

  /* Whether the entry is a folder.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*IsFolder)(const BrowseFiles* self);

  /* Whether the entry is hidden.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*IsHidden)(const BrowseFiles* self);

  /* Ends a browser; null is allowed.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BrowseFiles* self);
} HostBrowseFilesGroup;

#ifdef __cplusplus
}
#endif
#endif
