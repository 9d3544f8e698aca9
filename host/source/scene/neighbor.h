// Which polygons lie at which points and edges.
#ifndef HOST_SCENE_NEIGHBOR_H
#define HOST_SCENE_NEIGHBOR_H

#include <array>
#include <span>
#include <vector>

#include "kelvar.framework/source/tables/t_neighbor.h"
#include "scene/select.h"

namespace host {

// As many polygons as have numbers for their edges.
constexpr int32_t kMaxPolygons = INT32_MAX / 4;

inline std::array<int32_t, 4> Corners(const CPolygon& polygon) {
  return {polygon.a, polygon.b, polygon.c, polygon.d};
}
// A triangle has no edge 2, from c to d.
inline bool IsTriangle(const CPolygon& polygon) { return polygon.c == polygon.d; }

// Where all corners are points.
inline bool IsValid(const CPolygon& polygon, size_t points) {
  for (int32_t corner : Corners(polygon))
    if (corner < 0 || size_t(corner) >= points) return false;
  return true;
}

struct Edge {
  int32_t low, high;      // points
  int32_t first, second;  // polygons, the one with the lower number first; -1: none
};

}  // namespace host

// Polygons with corners out of range take no part. Of more than two polygons at an edge the first two are
// neighbours of one another, and the others have the first for theirs.
struct Neighbor {
  Neighbor() = default;
  // Of the selected polygons only, unless `selection` is null.
  Neighbor(std::span<const CPolygon> polygons, size_t points, const BaseSelect* selection = nullptr);

  // -1 for none.
  int32_t FindEdge(int32_t a, int32_t b) const;
  // The polygon on the other side of an edge of that one; -1 for none.
  int32_t Across(int32_t edge, int32_t polygon) const;
  std::span<const int32_t> PolygonsAt(int32_t point) const;
  int32_t PolygonCount() const { return int32_t(edgeOf.size() / 4); }

  std::vector<host::Edge> edges;         // in the order of `low`, then of `high`
  std::vector<int32_t> edgesOfLow;       // where those begin that have this `low`; one more at the end
  std::vector<int32_t> edgeOf;           // of each edge of each polygon; -1: none
  std::vector<int32_t> polygonsOfPoint;  // in order for each point
  std::vector<int32_t> beginOfPoint;     // where they begin; one more at the end
};

#endif
