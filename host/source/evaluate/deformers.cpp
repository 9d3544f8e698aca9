#include "evaluate/deformers.h"

#include <algorithm>
#include <cmath>

#include "boundary/host.h"
#include "scene/geometry.h"

namespace host {
namespace {

enum DeformerType : int32_t { kBend = 5128, kTaper = 5133, kTwist = 5134 };
enum DeformerParameter : int32_t { kSize = 1000, kMode, kStrength, kDirection };
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

}  // namespace

bool IsBuiltInDeformer(int32_t type) { return type == kBend || type == kTaper || type == kTwist; }

void Deform(const BaseObject& deformer, const Matrix& deformerGlobal, const Matrix& global,
            std::span<Vector> points) {
  const Deformer read = Read(deformer);
  if (!(read.height > 0)) return;
  const Matrix into = kelvar::Product(kelvar::Inverse(deformerGlobal), global);
  const Matrix back = kelvar::Product(kelvar::Inverse(global), deformerGlobal);
  for (Vector& point : points) {
    const Vector p = kelvar::Transformed(into, point);
    if (read.mode == kWithinBox && !read.Holds(p)) continue;
    const Vector moved = read.type == kBend    ? Bend(read, p)
                         : read.type == kTaper ? Taper(read, p)
                                               : Twist(read, p);
    point = kelvar::Transformed(back, moved);
  }
}

}  // namespace host
