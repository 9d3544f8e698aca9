/* Group 28: objects.
 * group     HOST_GROUP_OBJECT
 * class     BaseObject : BaseList2D */
#ifndef KELVAR_T_OBJECT_H
#define KELVAR_T_OBJECT_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseObject BaseObject;

typedef struct HostObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new object of that type; null when it is none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*Alloc)(int32_t type);
} HostObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
