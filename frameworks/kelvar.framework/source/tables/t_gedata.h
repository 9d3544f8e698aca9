/* Group 25: tagged values.
 * group     HOST_GROUP_GEDATA
 * functions kelvar::gedata */
#ifndef KELVAR_T_GEDATA_H
#define KELVAR_T_GEDATA_H

#include "t_container.h"
#include "t_values.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostGeDataGroup {
  uint32_t size;
  uint32_t reserved;

  /* A copy that shares nothing with the value.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostGeData (*Copy)(const HostGeData* self);

  /* Ends what the value owns and makes it no value.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Destroy)(HostGeData* self);

  /* Whether both have the same type and value; links, when they point at the same object.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsEqual)(const HostGeData* self, const HostGeData* other);

  /* A value of the type 25.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostGeData (*FromMatrix)(const Matrix* matrix);

  /* The matrix of a value of the type 25. Quick.
   * owner   the value
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const Matrix* (*GetMatrix)(const HostGeData* self);

  /* A value of the type 132 with a copy of the container.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostGeData (*FromContainer)(const BaseContainer* container);

  /* The container of a value of the type 132. Quick.
   * owner   the value
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetContainer)(const HostGeData* self);

  /* A value of a type of custom data, with a copy of `value`, which is of the struct that HostCustomType names;
   * the type's default for null.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostGeData (*FromCustom)(int32_t type, const void* value);

  /* The struct of a value of that type of custom data; null for a value of another type. Quick.
   * owner   the value
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const void* (*GetCustom)(const HostGeData* self, int32_t type);
} HostGeDataGroup;

#ifdef __cplusplus
}
#endif
#endif
