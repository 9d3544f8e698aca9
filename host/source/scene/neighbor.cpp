#include "scene/neighbor.h"

#include <algorithm>

#include "boundary/host.h"
#include "scene/object.h"

using host::Edge;

namespace {

// Numbers of how many there are of each become numbers of where they begin.
void Accumulate(std::vector<int32_t>& counts) {
  int32_t sum = 0;
  for (int32_t& count : counts) sum += std::exchange(count, sum);
}

// One edge of one polygon, on its way into its place.
struct Side {
  int32_t high;
  int32_t number;  // 4 * polygon + 0 to 3
};

}  // namespace

Neighbor::Neighbor(std::span<const CPolygon> polygons, size_t points, const BaseSelect* selection)
    : edgesOfLow(points + 1), edgeOf(4 * polygons.size(), -1), beginOfPoint(points + 1) {
  const auto forEachPolygon = [&](auto visit) {
    const auto valid = [&](int32_t i) {
      if (host::IsValid(polygons[size_t(i)], points)) visit(i, host::Corners(polygons[size_t(i)]));
    };
    if (selection) return host::ForEach(*selection, int32_t(polygons.size()), valid);
    for (int32_t i = 0; i < int32_t(polygons.size()); ++i) valid(i);
  };
  const auto forEachPoint = [](const auto& corners, auto visit) {
    for (size_t k = 0; k < 4; ++k)
      if (std::find(corners.begin(), corners.begin() + k, corners[k]) == corners.begin() + k)
        visit(size_t(corners[k]));
  };
  const auto forEachSide = [](int32_t polygon, const auto& corners, auto visit) {
    for (size_t k = 0; k < 4; ++k) {
      const auto [low, high] = std::minmax(corners[k], corners[(k + 1) % 4]);
      if (low != high) visit(size_t(low), Side{high, 4 * polygon + int32_t(k)});
    }
  };

  std::vector<int32_t> beginOfLow(points + 1);
  forEachPolygon([&](int32_t polygon, const auto& corners) {
    forEachPoint(corners, [&](size_t point) { ++beginOfPoint[point]; });
    forEachSide(polygon, corners, [&](size_t low, const Side&) { ++beginOfLow[low]; });
  });
  Accumulate(beginOfPoint);
  Accumulate(beginOfLow);

  polygonsOfPoint.resize(size_t(beginOfPoint.back()));
  std::vector<Side> sides(size_t(beginOfLow.back()));
  std::vector<int32_t> nextOfPoint = beginOfPoint, nextOfLow = beginOfLow;
  forEachPolygon([&](int32_t polygon, const auto& corners) {
    forEachPoint(corners, [&](size_t point) { polygonsOfPoint[size_t(nextOfPoint[point]++)] = polygon; });
    forEachSide(polygon, corners,
                [&](size_t low, const Side& side) { sides[size_t(nextOfLow[low]++)] = side; });
  });

  edges.reserve(sides.size() / 2);
  for (size_t low = 0; low < points; ++low) {
    edgesOfLow[low] = int32_t(edges.size());
    const auto begin = sides.begin() + beginOfLow[low], end = sides.begin() + beginOfLow[low + 1];
    std::sort(begin, end, [](const Side& a, const Side& b) {
      return a.high != b.high ? a.high < b.high : a.number < b.number;
    });
    for (auto side = begin; side != end; ++side) {
      const int32_t polygon = side->number / 4;
      if (side == begin || side->high != (side - 1)->high)
        edges.push_back({int32_t(low), side->high, polygon, -1});
      else if (Edge& edge = edges.back(); edge.second < 0 && edge.first != polygon)
        edge.second = polygon;
      edgeOf[size_t(side->number)] = int32_t(edges.size()) - 1;
    }
  }
  edgesOfLow[points] = int32_t(edges.size());
}

int32_t Neighbor::FindEdge(int32_t a, int32_t b) const {
  const auto [low, high] = std::minmax(a, b);
  if (low < 0 || size_t(low) + 1 >= edgesOfLow.size()) return -1;
  const auto begin = edges.begin() + edgesOfLow[size_t(low)], end = edges.begin() + edgesOfLow[size_t(low) + 1];
  const auto edge =
      std::lower_bound(begin, end, high, [](const Edge& one, int32_t point) { return one.high < point; });
  return edge != end && edge->high == high ? int32_t(edge - edges.begin()) : -1;
}

int32_t Neighbor::Across(int32_t edge, int32_t polygon) const {
  const Edge& one = edges[size_t(edge)];
  return one.first == polygon ? one.second : one.first;
}

std::span<const int32_t> Neighbor::PolygonsAt(int32_t point) const {
  if (point < 0 || size_t(point) + 1 >= beginOfPoint.size()) return {};
  const auto begin = size_t(beginOfPoint[size_t(point)]), end = size_t(beginOfPoint[size_t(point) + 1]);
  return {polygonsOfPoint.data() + begin, end - begin};
}

namespace host::neighbor {

Neighbor* Alloc() { return new Neighbor; }

void Free(Neighbor* self) { delete self; }

HostBool Init(Neighbor* self, PolygonObject* op, const BaseSelect* sel) {
  const auto* object = As<PolygonObject>(op);
  if (!self || !object || object->Polygons().size() > size_t(kMaxPolygons)) return 0;
  *self = Neighbor(object->Polygons(), object->Points().size(), sel);
  return 1;
}

void Flush(Neighbor* self) {
  if (self) *self = {};
}

int32_t GetEdgeCount(const Neighbor* self) { return self ? int32_t(self->edges.size()) : 0; }

HostBool GetEdgePolys(const Neighbor* self, int32_t a, int32_t b, int32_t* first, int32_t* second) {
  if (!self || !first || !second) return 0;
  const int32_t edge = self->FindEdge(a, b);
  *first = *second = -1;
  if (edge < 0) return 0;
  *first = self->edges[size_t(edge)].first;
  *second = self->edges[size_t(edge)].second;
  return 1;
}

int32_t GetPointPolys(const Neighbor* self, int32_t point, const int32_t** polygons) {
  const auto found = self ? self->PolygonsAt(point) : std::span<const int32_t>();
  if (polygons) *polygons = found.empty() ? nullptr : found.data();
  return int32_t(found.size());
}

int32_t GetNeighbor(const Neighbor* self, int32_t a, int32_t b, int32_t polygon) {
  const int32_t edge = self ? self->FindEdge(a, b) : -1;
  if (edge < 0 || polygon < 0 || polygon >= self->PolygonCount()) return -1;
  const auto own = self->edgeOf.begin() + 4 * ptrdiff_t(polygon);
  return std::find(own, own + 4, edge) != own + 4 ? self->Across(edge, polygon) : -1;
}

HostBool GetPolyInfo(const Neighbor* self, int32_t polygon, HostPolyInfo* info) {
  if (!self || !info || polygon < 0 || polygon >= self->PolygonCount()) return 0;
  for (size_t k = 0; k < 4; ++k) {
    const int32_t edge = self->edgeOf[4 * size_t(polygon) + k];
    info->edge[k] = edge;
    info->face[k] = edge < 0 ? -1 : self->Across(edge, polygon);
    info->mark[k] = edge >= 0 && self->edges[size_t(edge)].first == polygon;
  }
  return 1;
}

}  // namespace host::neighbor
