// Normals of polygons and their corners, and where the shading breaks.

#include <cmath>

#include "boundary/host.h"
#include "kelvar/vector.h"
#include "scene/geometry.h"
#include "scene/kinds.h"

namespace host {
namespace {

constexpr double kSameAngle = 1e-9;  // rounding never makes a break
constexpr size_t kNormalNumbers = 12;

bool IsFinite(const Vector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// Zero for what has no direction, such as points out of all bounds.
Vector Direction(const Vector& v) {
  const Vector direction = kelvar::Normalized(v);
  return IsFinite(direction) ? direction : Vector{};
}

// 0 where one of them is zero.
double Angle(const Vector& a, const Vector& b) {
  const double angle = std::atan2(kelvar::Length(kelvar::Cross(a, b)), kelvar::Dot(a, b));
  return std::isfinite(angle) ? angle : 0;
}

bool IsWider(const Vector& a, const Vector& b, double limit) { return Angle(a, b) > limit + kSameAngle; }

// Where polygons meet, and how they lie.
struct Surface {
  explicit Surface(const PolygonObject& ofObject)
      : object(ofObject), points(object.Points()), neighbor(NeighborOf(object)) {
    normals.reserve(object.Polygons().size());
    for (const CPolygon& polygon : object.Polygons()) normals.push_back(NormalOf(polygon));
  }

  Vector NormalOf(const CPolygon& polygon) const {
    if (!IsValid(polygon, points.size())) return {};
    const auto [a, b, c, d] = Corners(polygon);
    const Vector &pa = points[size_t(a)], &pb = points[size_t(b)], &pc = points[size_t(c)];
    return Direction(IsTriangle(polygon) ? kelvar::Cross(pb - pa, pc - pa)
                                         : kelvar::Cross(pc - pa, points[size_t(d)] - pb));
  }

  // The edge of `other` that is the same as one of another polygon.
  size_t SideOf(int32_t edge, int32_t other) const {
    size_t side = 4 * size_t(other);
    while (neighbor.edgeOf[side] != edge) ++side;
    return side;
  }

  // The point at which an edge of a polygon begins.
  int32_t PointOf(size_t corner) const { return Corners(object.Polygons()[corner / 4])[corner % 4]; }

  // Calls `visit` with the edges of two polygons that are the same edge, each but the first polygon's once.
  template <class Visit>
  void ForEachSeam(Visit visit) const {
    for (size_t side = 0; side < neighbor.edgeOf.size(); ++side) {
      const int32_t edge = neighbor.edgeOf[side], polygon = int32_t(side / 4);
      const int32_t first = edge < 0 ? polygon : neighbor.edges[size_t(edge)].first;
      if (first != polygon) visit(side, SideOf(edge, first));
    }
  }

  bool IsInner(size_t side) const { return InnerEdges(object, int32_t(side / 4)) >> (side % 4) & 1; }

  const PolygonObject& object;
  std::span<const Vector> points;
  Neighbor neighbor;
  std::vector<Vector> normals;  // of the polygons, of length 1 or zero
};

size_t EndOf(size_t side) { return side / 4 * 4 + (side + 1) % 4; }

// The corners of a seam's second edge at the begin and at the end of the first.
std::pair<size_t, size_t> Matching(const Surface& surface, size_t side, size_t other) {
  const bool isAlong = surface.PointOf(side) == surface.PointOf(other);
  return isAlong ? std::pair{other, EndOf(other)} : std::pair{EndOf(other), other};
}

// The normals that a tag gives the corners; empty without one that is of these polygons.
std::span<const int16_t> OwnNormals(const PolygonObject& object) {
  const VariableTag* tag = FindBlock(object, kDataNormal);
  const auto numbers = tag ? tag->Items<int16_t>() : std::span<const int16_t>();
  return numbers.size() == kNormalNumbers * object.Polygons().size() ? numbers : std::span<const int16_t>();
}

Vector OwnNormal(std::span<const int16_t> numbers, size_t corner) {
  const auto at = numbers.subspan(3 * corner, 3);
  return Direction({double(at[0]), double(at[1]), double(at[2])});
}

std::vector<uint8_t> Bytes(const BaseSelect& selection, size_t count) {
  std::vector<uint8_t> bytes(count);
  select::ToArray(&selection, bytes.data(), int32_t(count));
  return bytes;
}

// The corners around a point are smooth together where the polygons are joined over edges without a break.
Groups JoinCorners(const Surface& surface, double limit, bool usesBreaks) {
  const auto polygons = surface.object.Polygons();
  Groups corners(4 * polygons.size());
  for (size_t i = 0; i < polygons.size(); ++i)
    if (IsTriangle(polygons[i])) corners.Join(int32_t(4 * i + 2), int32_t(4 * i + 3));
  const auto breaks =
      usesBreaks ? Bytes(surface.object.phongBreak, 4 * polygons.size()) : std::vector<uint8_t>();
  surface.ForEachSeam([&](size_t side, size_t other) {
    const bool isBroken = usesBreaks && (breaks[side] || breaks[other]);
    const bool isSharp = IsWider(surface.normals[side / 4], surface.normals[other / 4], limit);
    if ((isBroken || isSharp) && !surface.IsInner(side) && !surface.IsInner(other)) return;
    const auto [begin, end] = Matching(surface, side, other);
    corners.Join(int32_t(side), int32_t(begin));
    corners.Join(int32_t(EndOf(side)), int32_t(end));
  });
  return corners;
}

// The angle of a polygon at one of its corners.
double CornerAngle(const Surface& surface, size_t corner) {
  const CPolygon& polygon = surface.object.Polygons()[corner / 4];
  const size_t k = corner % 4, count = IsTriangle(polygon) ? 3 : 4;
  if (k >= count || !IsValid(polygon, surface.points.size())) return 0;
  const auto corners = Corners(polygon);
  const auto point = [&](size_t at) { return surface.points[size_t(corners[at % count])]; };
  return Angle(point(k + 1) - point(k), point(k + count - 1) - point(k));
}

Vector32 Narrow(const Vector& v) { return {float(v.x), float(v.y), float(v.z)}; }

}  // namespace
}  // namespace host

namespace host::polygonobject {

// The sums of the polygons' normals, each as much as its angle at the corner. Where they have no direction, and
// where a normal of its own has none, that of the polygon.
Vector32* CreatePhongNormals(const PolygonObject* self) {
  const auto* object = As<PolygonObject>(self);
  if (!object) return nullptr;
  const size_t count = 4 * object->Polygons().size();
  if (const auto own = OwnNormals(*object); !own.empty()) {
    const Surface surface(*object);
    auto* made = AllocItems<Vector32>(count);
    for (size_t i = 0; i < count; ++i) {
      const Vector normal = OwnNormal(own, i);
      made[i] = Narrow(normal == Vector{} ? surface.normals[i / 4] : normal);
    }
    return made;
  }
  const auto* phong = static_cast<BaseList2D*>(host::object::GetTag(object, kTypePhong, 0));
  if (!phong) return nullptr;
  const bool hasLimit = NumberOf(*phong, kPhongLimit, 1) != 0;
  const double limit = hasLimit ? NumberOf(*phong, kPhongAngle, kPhongStandard) : HUGE_VAL;

  const Surface surface(*object);
  Groups groups = JoinCorners(surface, limit, NumberOf(*phong, kPhongUsesBreaks, 1) != 0);
  std::vector<Vector> sums(count);
  for (size_t i = 0; i < count; ++i) {
    Vector& sum = sums[size_t(groups.Find(int32_t(i)))];
    sum = sum + surface.normals[i / 4] * CornerAngle(surface, i);
  }
  auto* made = AllocItems<Vector32>(count);
  for (size_t i = 0; i < count; ++i) {
    const Vector normal = Direction(sums[size_t(groups.Find(int32_t(i)))]);
    made[i] = Narrow(normal == Vector{} ? surface.normals[i / 4] : normal);
  }
  return made;
}

BaseSelect* GetShadingBreak(const PolygonObject* self, HostBool borders, HostBool breaks, HostBool normals,
                            double autoNormalsAngle, double userNormalsAngle) {
  const auto* object = As<PolygonObject>(self);
  if (!object) return nullptr;
  const Surface surface(*object);
  const auto& edges = surface.neighbor.edges;
  const auto& edgeOf = surface.neighbor.edgeOf;
  std::vector<uint8_t> broken(edges.size());
  if (borders)
    for (size_t i = 0; i < edges.size(); ++i) broken[i] = edges[i].second < 0;
  if (breaks)
    ForEach(object->phongBreak, int32_t(edgeOf.size()), [&](int32_t side) {
      if (const int32_t edge = edgeOf[size_t(side)]; edge >= 0) broken[size_t(edge)] = 1;
    });
  const auto own = normals ? OwnNormals(*object) : std::span<const int16_t>();
  surface.ForEachSeam([&](size_t side, size_t other) {
    uint8_t& mark = broken[size_t(edgeOf[side])];
    if (IsWider(surface.normals[side / 4], surface.normals[other / 4], autoNormalsAngle)) mark = 1;
    if (own.empty()) return;
    const auto [begin, end] = Matching(surface, side, other);
    for (const auto& [a, b] : {std::pair{side, begin}, std::pair{EndOf(side), end}})
      if (IsWider(OwnNormal(own, a), OwnNormal(own, b), userNormalsAngle)) mark = 1;
  });
  std::vector<Run> sides;
  for (size_t side = 0; side < edgeOf.size(); ++side)
    if (edgeOf[side] >= 0 && broken[size_t(edgeOf[side])]) Append(sides, int32_t(side), int32_t(side));
  return new BaseSelect(std::move(sides));
}

}  // namespace host::polygonobject
