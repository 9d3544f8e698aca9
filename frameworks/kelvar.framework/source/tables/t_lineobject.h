/* Group 39: objects with lines.
 * group     HOST_GROUP_LINE_OBJECT
 * class     LineObject : PointObject */
#ifndef KELVAR_T_LINEOBJECT_H
#define KELVAR_T_LINEOBJECT_H

#include "t_pointobject.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostLineObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new object with that many points and segments, all zero; null below 0 or without memory.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  LineObject* (*Alloc)(int32_t pcnt, int32_t scnt);

  /* Gives it that many points and segments.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeSegments)(LineObject* self, int32_t pcnt, int32_t scnt);

  /* How many segments it has.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSegmentCount)(const LineObject* self);

  /* The lines of the triangles between the closed lines, which lie about in a plane: each triangle is a
   * closed segment of three points of its own. What is inside of an odd number of lines is filled. With
   * `regular` above 0 triangles are halved, on the lines too, until no side is longer; null for more than a
   * million of them.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  LineObject* (*Triangulate)(const LineObject* self, double regular);
} HostLineObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
