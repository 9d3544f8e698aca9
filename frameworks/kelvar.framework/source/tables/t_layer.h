/* Group 33: layers.
 * group     HOST_GROUP_LAYER
 * class     LayerObject : BaseList2D */
#ifndef KELVAR_T_LAYER_H
#define KELVAR_T_LAYER_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct LayerObject LayerObject;

typedef struct HostLayerGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new layer for that document, which it is not yet in.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  LayerObject* (*Alloc)(BaseDocument* document);
} HostLayerGroup;

#ifdef __cplusplus
}
#endif
#endif
