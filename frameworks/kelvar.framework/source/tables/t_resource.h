/* Group 15: texts by id.
 * group     HOST_GROUP_RESOURCE
 * class     GeResource */
#ifndef KELVAR_T_RESOURCE_H
#define KELVAR_T_RESOURCE_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GeResource GeResource;

/* Asked by the host whether a name in a resource file is a constant: HOST_SYMBOL_KNOWN, or
 * -1. Called on the main thread with no lock held. */
typedef int32_t (*ResourceSymbolHook)(const HostString* name);
enum { HOST_SYMBOL_KNOWN = 1199 };

typedef struct HostResourceGroup {
  uint32_t size;
  uint32_t reserved;

  /* Opens a resource folder: its texts in the default language, or in English where a text
   * is missing there.
   * owner   the caller, until Close
   * thread  main
   * waits   disk
   * since   23100
   * fails   null */
  GeResource* (*Open)(const HostFilename* folder);

  /* Takes a resource back; null is allowed. Its links are dead at once. Only with the interpreter's lock
   * held, where Python runs and the resource was linked.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Close)(GeResource* self);

  /* The text with that id.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*LoadText)(const GeResource* self, int32_t id);

  /* Installs the routine that the host asks about names; null removes it.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetSymbolHook)(ResourceSymbolHook hook);

  /* Points a link at the resource; what the link held before is not looked at. 1, or 0 when memory lacks.
   * owner   the caller, of the link
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLink)(GeResource* self, HostLink* link);
} HostResourceGroup;

#ifdef __cplusplus
}
#endif
#endif
