/* Group 29: tags.
 * group     HOST_GROUP_TAG
 * class     BaseTag : BaseList2D */
#ifndef KELVAR_T_TAG_H
#define KELVAR_T_TAG_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseTag BaseTag;

typedef struct HostTagGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new tag of that type; null when it is none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*Alloc)(int32_t type);
} HostTagGroup;

#ifdef __cplusplus
}
#endif
#endif
