// The geometry that primitives make of their parameters.
#ifndef HOST_EVALUATE_PRIMITIVES_H
#define HOST_EVALUATE_PRIMITIVES_H

#include <optional>
#include <vector>

#include "evaluate/mesh.h"
#include "scene/object.h"

namespace host {

struct SplineShape {
  std::vector<Vector> points;
  std::vector<Tangent> tangents;      // of each point, from it, for Bezier splines only
  std::vector<HostSegment> segments;  // never empty; all are closed, or none is
  int32_t type = 0;                   // SPLINEOBJECT_TYPE
};

bool IsPrimitive(int32_t type);
bool IsSplinePrimitive(int32_t type);

// Nothing for an object that is no such primitive. What the parameters say beyond what can be is limited, such
// as a fillet that is wider than its cube. Throws std::bad_alloc.
std::optional<Mesh> MakePrimitive(const BaseObject& object);
std::optional<SplineShape> MakeSplinePrimitive(const BaseObject& object);

// A new object of it, with the other settings of a spline (how it is interpolated) from `settings` where that
// has them. Throws std::bad_alloc.
SplineObject* NewObject(const SplineShape& shape, const BaseContainer& settings);

}  // namespace host

#endif
