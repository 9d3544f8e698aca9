/* Group 30: materials.
 * group     HOST_GROUP_MATERIAL
 * class     BaseMaterial : BaseList2D */
#ifndef KELVAR_T_MATERIAL_H
#define KELVAR_T_MATERIAL_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseMaterial BaseMaterial;

typedef struct HostMaterialGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new material of that type; null when it is none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseMaterial* (*Alloc)(int32_t type);
} HostMaterialGroup;

#ifdef __cplusplus
}
#endif
#endif
