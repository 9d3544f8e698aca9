// Geometry on its way into an object.
#ifndef HOST_EVALUATE_MESH_H
#define HOST_EVALUATE_MESH_H

#include <optional>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

struct PolygonObject;

namespace host {

// A polygon's front is where its corners a, b, c turn about (b - a) x (c - a), which points outwards.
struct Mesh {
  std::vector<Vector> points;
  std::vector<CPolygon> polygons;  // a triangle has c and d the same
  std::vector<UVWStruct> uvw;      // of each polygon; empty: none
  std::vector<uint8_t> ngonEdges;  // bits 0 to 3: which edges lie inside an n-gon; empty: none
  std::vector<int32_t> breaks;     // edges across which the shading breaks: 4 * polygon + 0 to 3
  std::optional<double> phong;     // smooth shading up to that angle in radians; none: flat
};

// A new object of it, with tags for what it has. Throws std::bad_alloc.
PolygonObject* NewObject(const Mesh& mesh);

}  // namespace host

#endif
