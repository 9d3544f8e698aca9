#include "evaluate/deformers.h"

#include <algorithm>
#include <cmath>

#include "boundary/host.h"
#include "scene/geometry.h"

namespace host {
namespace {

enum DeformerType : int32_t { kBend = 5128, kTaper = 5133, kTwist = 5134 };
enum DeformerParameter : int32_t { kSize = 1000, kMode, kStrength, kDirection };
constexpr double kNormalOne = 32000;              // of the numbers of normals
constexpr double kUnlimited = 1, kWithinBox = 2;  // modes; others stay in the box along its axis only

// Along y of its box, from `low` on for `height`; `strength` is what happens over all of it.
struct Deformer {
  int32_t type;
  double mode;
  Vector half;
  double low, height, strength, direction;

  bool Holds(const Vector& p) const {
    return std::abs(p.x) <= half.x && std::abs(p.y) <= half.y && std::abs(p.z) <= half.z;
  }
  // How far along the box a point is, as a part of it.
  double PartOf(double y) const {
    const double part = (y - low) / height;
    return mode == kUnlimited ? part : std::clamp(part, 0.0, 1.0);
  }
};

Deformer Read(const BaseObject& object) {
  const HostGeData* size = container::FindData(&object.data, kSize);
  const Vector box = size && size->type == HOST_DATA_VECTOR ? size->value.vector : Vector{};
  const Vector half = kelvar::Absolute(box) * 0.5;
  return {object.type.id,
          NumberOf(object, kMode, 0),
          half,
          -half.y,
          2 * half.y,
          NumberOf(object, kStrength, 0),
          NumberOf(object, kDirection, 0)};
}

Vector Twist(const Deformer& deformer, const Vector& p) {
  const double angle = deformer.strength * deformer.PartOf(p.y), c = std::cos(angle), s = std::sin(angle);
  return {c * p.x + s * p.z, p.y, c * p.z - s * p.x};
}

Vector Taper(const Deformer& deformer, const Vector& p) {
  const double scale = 1 - deformer.strength * deformer.PartOf(p.y);
  return {scale * p.x, p.y, scale * p.z};
}

// Onto a circle that the axis of the box becomes an arc of; what lies past the arc goes on straight.
Vector Bend(const Deformer& deformer, const Vector& p) {
  const double angle = deformer.strength * deformer.PartOf(p.y);
  if (std::abs(deformer.strength) < 1e-12 || angle == 0) return p;
  const double c = std::cos(deformer.direction), s = std::sin(deformer.direction);
  const double along = c * p.x + s * p.z, across = c * p.z - s * p.x;
  const double radius = deformer.height / deformer.strength;
  const double past = p.y - deformer.low - deformer.height * deformer.PartOf(p.y);
  const double bent = radius - (radius - along) * std::cos(angle) + past * std::sin(angle);
  const double y = deformer.low + (radius - along) * std::sin(angle) + past * std::cos(angle);
  return {c * bent - s * across, y, s * bent + c * across};
}

// In the system of the shape.
struct Deformation {
  bool Moves(const Vector& point) const {
    return deformer.mode != kWithinBox || deformer.Holds(kelvar::Transformed(into, point));
  }
  Vector Moved(const Vector& point) const {
    const Vector p = kelvar::Transformed(into, point);
    return kelvar::Transformed(back, deformer.type == kBend    ? Bend(deformer, p)
                                     : deformer.type == kTaper ? Taper(deformer, p)
                                                               : Twist(deformer, p));
  }
  // Of what stands at a point.
  Vector MovedWay(const Vector& point, const Vector& way) const { return Moved(point + way) - Moved(point); }

  Deformer deformer;
  Matrix into, back;
};

// Whether there is no way into the system, and back from it all would be as flat.
bool IsFlat(const Matrix& m) {
  const Vector lengths{kelvar::Length(m.v1), kelvar::Length(m.v2), kelvar::Length(m.v3)};
  const double longest = std::max({lengths.x, lengths.y, lengths.z});
  if (!(longest > 0 && std::isfinite(lengths.x + lengths.y + lengths.z))) return true;
  const double unit = 1 / longest;
  // Of no use either where it is out of the range of numbers.
  if (!std::isnormal(kelvar::Dot(m.v1, kelvar::Cross(m.v2, m.v3)))) return true;
  const double volume = kelvar::Dot(m.v1 * unit, kelvar::Cross(m.v2 * unit, m.v3 * unit));
  return !(std::abs(volume) > 1e-12 * (lengths.x * unit) * (lengths.y * unit) * (lengths.z * unit));
}

// Ways on the surface beside a corner tell how its normal turns; so short that they are straight.
void DeformNormals(const Deformation& deformation, PolygonObject& mesh) {
  VariableTag* tag = FindBlock(mesh, kDataNormal);
  const auto numbers = tag ? tag->Items<int16_t>() : std::span<int16_t>();
  const auto polygons = mesh.Polygons();
  if (numbers.size() != 12 * polygons.size()) return;
  const Box box = mesh.OwnBox();
  const Vector size = box.high - box.low;
  // Points far away don't make the ways longer than the deformer's own shape allows.
  const double height = kelvar::Length(deformation.back.v2 * deformation.deformer.height);
  const double longest = std::min(std::max({size.x, size.y, size.z}), height);
  for (size_t i = 0; i < 4 * polygons.size(); ++i) {
    if (!IsValid(polygons[i / 4], mesh.Points().size())) continue;
    const Vector& point = mesh.Points()[size_t(Corners(polygons[i / 4])[i % 4])];
    const auto at = numbers.subspan(3 * i, 3);
    const Vector normal = kelvar::Normalized(Vector{double(at[0]), double(at[1]), double(at[2])});
    if (normal == Vector{} || !deformation.Moves(point)) continue;
    const double step = std::max(1e-5 * (longest > 0 ? longest : 1), 1e-9 * kelvar::Length(point));
    const Vector axis = std::abs(normal.x) < 0.9 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    const Vector u = kelvar::Normalized(kelvar::Cross(normal, axis)), v = kelvar::Cross(normal, u);
    const Vector along = kelvar::Normalized(deformation.MovedWay(point, u * step));
    const Vector across = kelvar::Normalized(deformation.MovedWay(point, v * step));
    const Vector moved = kelvar::Normalized(kelvar::Cross(along, across));
    const bool isFinite = std::isfinite(moved.x + moved.y + moved.z);
    at[0] = at[1] = at[2] = 0;
    if (isFinite) {
      at[0] = int16_t(std::lround(kNormalOne * moved.x));
      at[1] = int16_t(std::lround(kNormalOne * moved.y));
      at[2] = int16_t(std::lround(kNormalOne * moved.z));
    }
  }
}

void DeformTangents(const Deformation& deformation, SplineObject& spline) {
  VariableTag* tag = FindBlock(spline, kDataTangent);
  const auto tangents = tag ? tag->Items<Tangent>() : std::span<Tangent>();
  for (size_t i = 0; i < std::min(tangents.size(), spline.Points().size()); ++i) {
    const Vector& point = spline.Points()[i];
    if (!deformation.Moves(point)) continue;
    for (Vector* way : {&tangents[i].vl, &tangents[i].vr}) *way = deformation.MovedWay(point, *way);
  }
}

}  // namespace

bool IsBuiltInDeformer(int32_t type) { return type == kBend || type == kTaper || type == kTwist; }

void Deform(const BaseObject& deformer, const Matrix& deformerGlobal, const Matrix& global,
            PointObject& shape) {
  const Deformation deformation{Read(deformer), kelvar::Product(kelvar::Inverse(deformerGlobal), global),
                                kelvar::Product(kelvar::Inverse(global), deformerGlobal)};
  if (!(deformation.deformer.height > 0) || IsFlat(deformerGlobal) || IsFlat(global)) return;
  if (auto* mesh = As<PolygonObject>(&shape)) DeformNormals(deformation, *mesh);
  if (auto* spline = As<SplineObject>(&shape)) DeformTangents(deformation, *spline);
  for (Vector& point : shape.Points())
    if (deformation.Moves(point)) point = deformation.Moved(point);
}

}  // namespace host
