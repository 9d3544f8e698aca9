/* Group 41: the neighbourhood of polygons.
 * group     HOST_GROUP_NEIGHBOR
 * class     Neighbor */
#ifndef KELVAR_T_NEIGHBOR_H
#define KELVAR_T_NEIGHBOR_H

#include "t_pointobject.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct PolygonObject PolygonObject;
typedef struct Neighbor Neighbor;

/* Of a polygon's edges a to b, b to c, c to d and d to a. */
typedef struct HostPolyInfo {
  int32_t face[4]; /* the polygon on the other side, or -1 */
  int32_t edge[4]; /* the number of the edge, each edge counted once; -1 for the missing edge of a triangle */
  int32_t mark[4]; /* 1 where this polygon is the first one of the edge */
} HostPolyInfo;

typedef struct HostNeighborGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new one, of no object.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  Neighbor* (*Alloc)(void);

  /* Ends it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(Neighbor* self);

  /* Makes it that of the object, or of the selected polygons of it. It keeps nothing of the object's.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Init)(Neighbor* self, PolygonObject* op, const BaseSelect* sel);

  /* Makes it that of no object.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Flush)(Neighbor* self);

  /* How many edges there are, each counted once.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetEdgeCount)(const Neighbor* self);

  /* The polygons at the edge of two points; -1 for one that is missing.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetEdgePolys)(const Neighbor* self, int32_t a, int32_t b, int32_t* first, int32_t* second);

  /* How many polygons have that point, and which.
   * owner   the neighbourhood
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetPointPolys)(const Neighbor* self, int32_t point, const int32_t** polygons);

  /* The polygon on the other side of an edge; -1 without one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*GetNeighbor)(const Neighbor* self, int32_t a, int32_t b, int32_t polygon);

  /* The edges and neighbours of a polygon. 0 out of range.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetPolyInfo)(const Neighbor* self, int32_t polygon, HostPolyInfo* info);
} HostNeighborGroup;

#ifdef __cplusplus
}
#endif
#endif
