// Selections of edges: by the numbers of the polygons' edges, each edge twice or more, or by those of a
// neighbourhood, each once.

#include "boundary/host.h"
#include "scene/geometry.h"

namespace host {
namespace {

// Null for no such kind.
BaseSelect* EdgesOf(PolygonObject& object, int32_t kind) {
  switch (kind) {
    case HOST_EDGES_SELECTED:
      return &object.selectedEdges;
    case HOST_EDGES_HIDDEN:
      return &object.hiddenEdges;
    case HOST_EDGES_PHONG:
      return &object.phongBreak;
    default:
      return nullptr;
  }
}

// A byte for each edge of the neighbourhood: whether one of its polygons has it selected.
std::vector<uint8_t> MarkEdges(const Neighbor& neighbor, const BaseSelect& sides) {
  std::vector<uint8_t> marks(neighbor.edges.size());
  ForEach(sides, int32_t(neighbor.edgeOf.size()), [&](int32_t side) {
    if (const int32_t edge = neighbor.edgeOf[size_t(side)]; edge >= 0) marks[size_t(edge)] = 1;
  });
  return marks;
}

// All edges of polygons that have a mark.
std::vector<Run> MarkedSides(const Neighbor& neighbor, const std::vector<uint8_t>& marks) {
  std::vector<Run> sides;
  for (size_t side = 0; side < neighbor.edgeOf.size(); ++side) {
    const int32_t edge = neighbor.edgeOf[side];
    if (edge >= 0 && marks[size_t(edge)]) Append(sides, int32_t(side), int32_t(side));
  }
  return sides;
}

// The same selection in order, as ValidateEdgeSelection tells.
std::vector<Run> Validated(const PolygonObject& object, const BaseSelect& sides) {
  if (sides.runs.empty()) return {};
  const Neighbor neighbor = NeighborOf(object);
  std::vector<uint8_t> marks = MarkEdges(neighbor, sides);
  for (size_t i = 0; i < object.ngonEdges.size() && i < object.Polygons().size(); ++i)
    for (size_t k = 0; k < 4; ++k)
      if (const int32_t edge = neighbor.edgeOf[4 * i + k]; edge >= 0 && object.ngonEdges[i] >> k & 1)
        marks[size_t(edge)] &= neighbor.edges[size_t(edge)].second < 0;  // there is nothing to be inside of
  return MarkedSides(neighbor, marks);
}

// Whether the neighbourhood can be that of the object.
bool IsOf(const Neighbor* neighbor, const PolygonObject* object) {
  return neighbor && object && neighbor->edgeOf.size() == 4 * object->Polygons().size();
}

}  // namespace
}  // namespace host

namespace host::polygonobject {

BaseSelect* GetSelectedEdges(PolygonObject* self, Neighbor* e, int32_t type) {
  auto* object = As<PolygonObject>(self);
  return object ? ConvertEdges(object, e, EdgesOf(*object, type)) : nullptr;
}

BaseSelect* ConvertEdges(PolygonObject* self, Neighbor* e, const BaseSelect* sel) {
  if (!sel || !IsOf(e, As<PolygonObject>(self))) return nullptr;
  const std::vector<uint8_t> marks = MarkEdges(*e, *sel);
  std::vector<Run> edges;
  for (size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) Append(edges, int32_t(i), int32_t(i));
  return new BaseSelect(std::move(edges));
}

HostBool SetSelectedEdges(PolygonObject* self, Neighbor* e, const BaseSelect* sel, int32_t type) {
  auto* object = As<PolygonObject>(self);
  BaseSelect* own = object ? EdgesOf(*object, type) : nullptr;
  if (!own || !sel || !IsOf(e, object)) return 0;
  std::vector<uint8_t> marks(e->edges.size());
  select::ToArray(sel, marks.data(), int32_t(marks.size()));
  Replace(*own, MarkedSides(*e, marks));
  Touch(*object, DIRTYFLAGS_SELECT);
  return 1;
}

HostBool ValidateEdgeSelection(PolygonObject* self, BaseSelect* sel) {
  auto* object = As<PolygonObject>(self);
  if (!object) return 0;
  BaseSelect& edges = sel ? *sel : object->selectedEdges;
  Replace(edges, Validated(*object, edges));
  if (!sel) Touch(*object, DIRTYFLAGS_SELECT);
  return 1;
}

HostBool GetEdgeSelection(PolygonObject* self, BaseSelect* sel, int32_t type) {
  auto* object = As<PolygonObject>(self);
  const BaseSelect* own = object ? EdgesOf(*object, type) : nullptr;
  if (!own || !sel) return 0;
  Replace(*sel, Validated(*object, *own));
  return 1;
}

}  // namespace host::polygonobject
