/* Group 38: splines.
 * group     HOST_GROUP_SPLINE_OBJECT
 * class     SplineObject : PointObject */
#ifndef KELVAR_T_SPLINEOBJECT_H
#define KELVAR_T_SPLINEOBJECT_H

#include "t_pointobject.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostSplineObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new spline of that interpolation (SPLINEOBJECT_TYPE) with that many points, all zero; null below 0, for
   * another interpolation, or without memory.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  SplineObject* (*Alloc)(int32_t pcnt, int32_t type);

  /* The interpolation: 0 linear, 1 cubic, 2 Akima, 3 B-spline, 4 Bezier.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetInterpolationType)(const SplineObject* self);

  /* Whether it is closed; of one with segments, whether all are.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsClosed)(const SplineObject* self);

  /* The point at a parameter from 0 to 1 of a segment, in the object's system, each way from point to point
   * being an equal part of it; zero without points. Cubic and Akima curves go through the points; a B-spline
   * is uniform, and starts and ends in the points of open ends.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetSplinePoint)(const SplineObject* self, double t, int32_t segment);

  /* The direction there, of length 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetSplineTangent)(const SplineObject* self, double t, int32_t segment);

  /* Gives a Bezier spline tangents that make it smooth.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDefaultCoeff)(SplineObject* self);

  /* As of a point object, with segments left as they are.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeObject)(SplineObject* self, int32_t pcnt);

  /* Gives it that many points and segments; new segments are empty.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeSegments)(SplineObject* self, int32_t pcnt, int32_t scnt);

  /* How many segments it has; 0 stands for one of all points.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSegmentCount)(const SplineObject* self);

  /* One of them. 0 out of range.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetSegment)(const SplineObject* self, int32_t id, HostSegment* segment);

  /* Sets it. 0 out of range.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetSegment)(SplineObject* self, int32_t id, const HostSegment* segment);

  /* How many tangents it has: as many as points for a Bezier spline, else 0.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetTangentCount)(const SplineObject* self);

  /* The tangents of a point, from the point. 0 out of range.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetTangent)(const SplineObject* self, int32_t id, Tangent* tangent);

  /* Sets them. 0 out of range.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetTangent)(SplineObject* self, int32_t id, const Tangent* tangent);

  /* The length of a segment; of all for -1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  double (*GetSplineLength)(const SplineObject* self, int32_t segment);
} HostSplineObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
