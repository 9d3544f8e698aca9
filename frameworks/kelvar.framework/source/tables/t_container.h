/* Group 23: containers of settings.
 * group     HOST_GROUP_CONTAINER
 * class     BaseContainer */
#ifndef KELVAR_T_CONTAINER_H
#define KELVAR_T_CONTAINER_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseContainer BaseContainer;

typedef struct HostContainerGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new, empty container.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*Alloc)(int32_t id);

  /* Destroys a container that the caller owns.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseContainer* self);

  /* A copy with all entries.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetClone)(const BaseContainer* self);

  /* Whether both have the same id and the same entries.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsEqual)(const BaseContainer* self, const BaseContainer* other);

  /* The container's own id. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetId)(const BaseContainer* self);

  /* Sets the container's own id. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetId)(BaseContainer* self, int32_t id);
} HostContainerGroup;

#ifdef __cplusplus
}
#endif
#endif
