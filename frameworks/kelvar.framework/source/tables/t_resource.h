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

  /* Takes a resource back; null is allowed.
   * owner   the host
   * thread  main
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
} HostResourceGroup;

#ifdef __cplusplus
}
#endif
#endif
