// Curves through points.
#ifndef HOST_SCENE_SPLINE_H
#define HOST_SCENE_SPLINE_H

#include <array>
#include <span>

#include "kelvar.framework/source/tables/t_splineobject.h"
#include "scene/object.h"

namespace host {

enum class Interpolation : int32_t { kLinear, kCubic, kAkima, kBSpline, kBezier };

// One segment of a spline. Between each two points, the last and the first of a closed one too, lies a span,
// and each span takes an equal part of the parameter from 0 to 1.
//
// Cubic: at each point the direction from its neighbour before to that behind; without curvature at open ends.
// Akima: directions after Akima, with lengths in place of the slopes' amounts.
// B-spline: uniform and cubic. It starts and ends in the points of open ends, where it has no curvature.
// Bezier: by the tangents; points without any have zero ones.
struct Curve {
  std::span<const Vector> points;
  std::span<const Tangent> tangents;
  Interpolation interpolation = Interpolation::kLinear;
  bool isClosed = false;

  int32_t SpanCount() const;
  // The control points of a span's cubic.
  std::array<Vector, 4> Span(int32_t span) const;

  // Parameters out of range are those of the ends. Zero without points.
  Vector PointAt(double t) const;
  // Of length 1; zero where there is no direction.
  Vector TangentAt(double t) const;
  // Exact; of a curve without spans that of its points.
  Box Bounds() const;
  // To nine digits.
  double Length() const;

  // What makes a Bezier curve the same as the cubic one.
  Tangent SmoothTangent(int32_t point) const;

 private:
  // With indices beyond the ends: around a closed curve, mirrored at the ends of an open one.
  Vector At(int32_t point) const;
  Vector Chord(int32_t span) const;
  Vector CubicVelocity(int32_t point) const;
  Vector AkimaVelocity(int32_t point) const;
};

// What a spline's segment is; without points for a number that none has. A spline without segments has one, of
// all its points.
Curve CurveOf(const SplineObject& spline, int32_t segment);

}  // namespace host

#endif
