// Faces of more than four corners, which objects hold as polygons with edges inside.
#ifndef HOST_FILES_SCENE_NGON_H
#define HOST_FILES_SCENE_NGON_H

#include <cstdint>
#include <span>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

namespace host {

// Corners as numbers in the face.
struct NgonPart {
  CPolygon polygon;
  uint8_t inner;  // which of its edges lie inside the face
};

// Cuts a face of at least five corners: a convex one into a fan, any other, while it is not too large, along
// its inside.
void CutNgon(std::span<const Vector> corners, std::vector<NgonPart>& parts);

// A corner of a face: one of a polygon's.
struct Corner {
  int32_t polygon, corner;
};

// The faces of polygons: for each its corners in a row, and how many there are in `sizes`. Polygons whose inner
// edges don't make one face of them stay single.
void JoinNgons(std::span<const CPolygon> polygons, std::span<const uint8_t> inner, std::vector<Corner>& corners,
               std::vector<uint32_t>& sizes);

inline int32_t CornerOf(const CPolygon& polygon, int32_t corner) {
  return corner == 0 ? polygon.a : corner == 1 ? polygon.b : corner == 2 ? polygon.c : polygon.d;
}
inline int32_t CornerCount(const CPolygon& polygon) { return polygon.c == polygon.d ? 3 : 4; }

}  // namespace host

#endif
