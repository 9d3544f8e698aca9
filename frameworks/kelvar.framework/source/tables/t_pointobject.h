/* Group 36: objects with points.
 * group     HOST_GROUP_POINT_OBJECT
 * class     PointObject : BaseObject */
#ifndef KELVAR_T_POINTOBJECT_H
#define KELVAR_T_POINTOBJECT_H

#include "t_object.h"
#include "t_select.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct PointObject PointObject;

typedef struct HostPointObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* The selected points.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetPointS)(PointObject* self);

  /* The hidden points.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetPointH)(PointObject* self);

  /* How many points it has.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetPointCount)(const PointObject* self);

  /* Gives it that many points; new ones are zero, and what belongs to lost ones goes too. 0, and nothing
   * happens, below 0 or without memory.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeObject)(PointObject* self, int32_t pcnt);

  /* How much the modifier acts on each point, 0 to 1, by the restriction tags; null when nothing restricts
   * it. As many numbers as points, freed by Free.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  float* (*CalcVertexMap)(PointObject* self, BaseObject* modifier);
} HostPointObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
