/* Group 37: objects with polygons.
 * group     HOST_GROUP_POLYGON_OBJECT
 * class     PolygonObject : PointObject */
#ifndef KELVAR_T_POLYGONOBJECT_H
#define KELVAR_T_POLYGONOBJECT_H

#include "t_neighbor.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { HOST_EDGES_SELECTED = 0, HOST_EDGES_HIDDEN = 1, HOST_EDGES_PHONG = 2 };

typedef struct HostPolygonObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new object with that many points and polygons, all zero; null below 0 or without memory.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  PolygonObject* (*Alloc)(int32_t pcnt, int32_t vcnt);

  /* How many polygons it has.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetPolygonCount)(const PolygonObject* self);

  /* The selected polygons.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetPolygonS)(PolygonObject* self);

  /* The hidden polygons.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetPolygonH)(PolygonObject* self);

  /* The selected edges: number 4 times polygon, plus 0 for a to b, 1 for b to c, 2 for c to d, 3 for d to
   * a. A triangle has no edge 2.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetEdgeS)(PolygonObject* self);

  /* The hidden edges.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetEdgeH)(PolygonObject* self);

  /* The edges across which shading is not smooth.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetPhongBreak)(PolygonObject* self);

  /* As of a point object; polygons stay, so that corners may be out of range afterwards.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeObject)(PolygonObject* self, int32_t pcnt);

  /* Gives it that many points and polygons; its n-gons become single polygons.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizePolygons)(PolygonObject* self, int32_t pcnt, int32_t vcnt);

  /* The same with room for so many edges inside n-gons.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ResizeNgons)(PolygonObject* self, int32_t pcnt, int32_t vcnt, int32_t nvcnt, int32_t flags);

  /* The selected edges of a kind, each once, by the numbers of the neighbourhood: 0 the selected, 1 the
   * hidden, 2 the phong breaks.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetSelectedEdges)(PolygonObject* self, Neighbor* e, int32_t type);

  /* The same of a selection of polygons' edges.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*ConvertEdges)(PolygonObject* self, Neighbor* e, const BaseSelect* sel);

  /* Selects edges by the numbers of the neighbourhood, as kinds of GetSelectedEdges.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetSelectedEdges)(PolygonObject* self, Neighbor* e, const BaseSelect* sel, int32_t type);

  /* A normal for each corner of each polygon, four a polygon: its own ones, where it has a tag of them, else by
   * the phong tag and the breaks; zero where there is no direction. Null without both. Freed by Free.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  Vector32* (*CreatePhongNormals)(const PolygonObject* self);

  /* The n-gon, or single polygon, that each polygon is part of, and how many of both there are; freed by
   * Free.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  int32_t* (*GetPolygonTranslationMap)(const PolygonObject* self, int32_t* ngons);

  /* For each n-gon the number of its polygons and then those: `*words` words in all. Freed by Free.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  int32_t* (*GetNGonTranslationMap)(const PolygonObject* self, int32_t ngons, const int32_t* polymap,
                                    int32_t* words);

  /* How many n-gons of more than one polygon it has.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetNgonCount)(const PolygonObject* self);

  /* Selects the n-gons of which all polygons are selected, by the numbers of the translation map.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetSelectedNgons)(const PolygonObject* self, BaseSelect* sel);

  /* The same of hidden ones.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetHiddenNgons)(const PolygonObject* self, BaseSelect* sel);

  /* Brings a selection of edges into order: the same edge of two polygons is selected in both or neither,
   * and edges inside n-gons in none. Null for the object's own.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ValidateEdgeSelection)(PolygonObject* self, BaseSelect* sel);

  /* Fills a selection with the edges of a kind, as of GetSelectedEdges, by the numbers of polygons' edges.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetEdgeSelection)(PolygonObject* self, BaseSelect* sel, int32_t type);

  /* For each polygon which of its edges lie inside an n-gon, as bits 0 to 3. Freed by Free.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  uint8_t* (*GetNgonEdgesCompact)(const PolygonObject* self);

  /* The edges across which the shading breaks: at borders, at the object's own breaks, where normals of its
   * own differ by more than the second angle, and where the polygons differ by more than the first;
   * radians.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetShadingBreak)(const PolygonObject* self, HostBool borders, HostBool breaks, HostBool normals,
                                 double autoNormalsAngle, double userNormalsAngle);

  /* The reverse of GetNgonEdgesCompact. 0, and nothing happens, for another number of polygons.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetNgonEdges)(PolygonObject* self, const uint8_t* edges, int32_t count);
} HostPolygonObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
