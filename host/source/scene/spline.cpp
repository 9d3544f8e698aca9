#include "scene/spline.h"

#include <algorithm>
#include <cmath>

#include "kelvar/vector.h"

namespace host {
namespace {

using Cubic = std::array<Vector, 4>;

constexpr double kTolerance = 1e-10;
constexpr int kDepth = 40;

Vector Mix(const Vector& a, const Vector& b, double t) { return a * (1 - t) + b * t; }

Vector PointOf(const Cubic& c, double t) {
  const Vector middle = Mix(c[1], c[2], t);
  return Mix(Mix(Mix(c[0], c[1], t), middle, t), Mix(middle, Mix(c[2], c[3], t), t), t);
}

Vector VelocityOf(const Cubic& c, double t) {
  const Vector a = c[1] - c[0], b = c[2] - c[1], d = c[3] - c[2];
  return 3 * Mix(Mix(a, b, t), Mix(b, d, t), t);
}

// Where the velocity is zero, the direction in which the curve leaves; at its end, that in which it arrives.
Vector DirectionOf(const Cubic& c, double t) {
  const double size =
      std::max({kelvar::Distance(c[0], c[1]), kelvar::Distance(c[1], c[2]), kelvar::Distance(c[2], c[3])});
  const auto isZero = [size](const Vector& v) { return kelvar::Length(v) <= 1e-12 * size; };
  const Vector velocity = VelocityOf(c, t);
  if (!isZero(velocity)) return velocity;
  const double sign = t < 1 ? 1 : -1;
  const Vector acceleration = Mix(c[0] - 2 * c[1] + c[2], c[1] - 2 * c[2] + c[3], t) * sign;
  return isZero(acceleration) ? c[3] - 3 * c[2] + 3 * c[1] - c[0] : acceleration;
}

// By eight points of Gauss and Legendre.
double Integrate(const Cubic& c, double from, double to) {
  constexpr double kAt[] = {0.1834346424956498, 0.5255324099163290, 0.7966664774136267, 0.9602898564975363};
  constexpr double kWeight[] = {0.3626837833783620, 0.3137066458778873, 0.2223810344533745, 0.1012285362903763};
  const double middle = (from + to) / 2, half = (to - from) / 2;
  double sum = 0;
  for (int i = 0; i < 4; ++i)
    sum += kWeight[i] * (kelvar::Length(VelocityOf(c, middle - half * kAt[i])) +
                         kelvar::Length(VelocityOf(c, middle + half * kAt[i])));
  return sum * half;
}

// Halves what is not yet good enough. A cusp takes one half at each depth.
double LengthOf(const Cubic& c, double from, double to, double whole, double tolerance, int depth) {
  const double middle = (from + to) / 2;
  const double first = Integrate(c, from, middle), second = Integrate(c, middle, to);
  const bool isGood = !(std::abs(first + second - whole) > tolerance * (to - from));  // or no number
  if (isGood || depth == 0) return first + second;
  return LengthOf(c, from, middle, first, tolerance, depth - 1) +
         LengthOf(c, middle, to, second, tolerance, depth - 1);
}

// Measured in its own size, so that no squares are out of range.
double LengthOf(const Cubic& c) {
  double size = 0;
  for (const Vector& point : c) {
    const Vector way = kelvar::Absolute(point - c[0]);
    size = std::max({size, way.x, way.y, way.z});
  }
  if (size == 0) return 0;
  Cubic scaled;
  for (size_t i = 0; i < 4; ++i) {
    const Vector way = c[i] - c[0];
    scaled[i] = {way.x / size, way.y / size, way.z / size};
  }
  return size * LengthOf(scaled, 0, 1, Integrate(scaled, 0, 1), kTolerance, kDepth);
}

// Where it turns back along an axis, besides its ends. The formula of the roots that doesn't cancel.
void AddTurns(const Cubic& c, double Vector::*axis, Box& box) {
  double a = c[1].*axis - c[0].*axis, b = c[2].*axis - c[1].*axis, d = c[3].*axis - c[2].*axis;
  const double size = std::max({std::abs(a), std::abs(b), std::abs(d)});
  if (!(size > 0)) return;
  a /= size, b /= size, d /= size;
  const double square = a - 2 * b + d, half = b - a, under = half * half - square * a;
  if (!(under >= 0)) return;
  const double sum = -half - std::copysign(std::sqrt(under), half);
  for (const double t : {sum / square, a / sum})
    if (t > 0 && t < 1) box.Add(PointOf(c, t));
}

// From points and the velocities there.
Cubic Hermite(const Vector& a, const Vector& va, const Vector& b, const Vector& vb) {
  return {a, a + va * (1.0 / 3), b - vb * (1.0 / 3), b};
}

// A parameter of the curve as a span and a parameter of it.
struct Place {
  int32_t span;
  double t;
};

Place PlaceOf(double t, int32_t spans) {
  const double at = (t > 0 ? std::min(t, 1.0) : 0.0) * spans;
  const int32_t span = std::min(int32_t(at), spans - 1);
  return {span, at - span};
}

}  // namespace

int32_t Curve::SpanCount() const {
  const auto count = int32_t(points.size());
  return count < 2 ? 0 : isClosed ? count : count - 1;
}

Vector Curve::At(int32_t point) const {
  const auto count = int32_t(points.size());
  if (isClosed) return points[size_t((point % count + count) % count)];
  if (point < 0) return 2 * points.front() - points[size_t(std::min(-point, count - 1))];
  if (point >= count) return 2 * points.back() - points[size_t(std::max(2 * (count - 1) - point, 0))];
  return points[size_t(point)];
}

Vector Curve::Chord(int32_t span) const {
  const int32_t spans = SpanCount();
  if (isClosed || (span >= 0 && span < spans)) return At(span + 1) - At(span);
  // Beyond open ends the chords go on as the last two of them do.
  const bool isBefore = span < 0;
  const int32_t end = isBefore ? 0 : spans - 1, beyond = isBefore ? -span : span - end;
  const Vector last = Chord(end);
  return spans < 2 ? last : last + (last - Chord(isBefore ? 1 : end - 1)) * beyond;
}

Vector Curve::CubicVelocity(int32_t point) const {
  const auto last = int32_t(points.size()) - 1;
  if (isClosed || (point > 0 && point < last)) return (At(point + 1) - At(point - 1)) * 0.5;
  const Vector chord = point == 0 ? Chord(0) : Chord(last - 1);
  if (last < 2) return chord;
  return (3 * chord - CubicVelocity(point == 0 ? 1 : last - 1)) * 0.5;
}

Vector Curve::AkimaVelocity(int32_t point) const {
  const Vector before = Chord(point - 1), behind = Chord(point);
  const double a = kelvar::Distance(Chord(point + 1), behind), b = kelvar::Distance(before, Chord(point - 2));
  const double size = kelvar::Length(before) + kelvar::Length(behind);
  return a + b <= 1e-12 * size ? Mix(before, behind, 0.5) : Mix(before, behind, b / (a + b));
}

Tangent Curve::SmoothTangent(int32_t point) const {
  if (points.size() < 2) return {};
  const Vector right = CubicVelocity(point) * (1.0 / 3);
  return {-right, right};
}

Cubic Curve::Span(int32_t span) const {
  const int32_t next = isClosed && span + 1 == int32_t(points.size()) ? 0 : span + 1;
  const Vector &a = points[size_t(span)], &b = points[size_t(next)];
  switch (interpolation) {
    case Interpolation::kCubic:
      return Hermite(a, CubicVelocity(span), b, CubicVelocity(next));
    case Interpolation::kAkima:
      return Hermite(a, AkimaVelocity(span), b, AkimaVelocity(next));
    case Interpolation::kBSpline: {
      const Vector first = Mix(a, b, 1.0 / 3), second = Mix(a, b, 2.0 / 3);
      return {Mix(Mix(At(span - 1), a, 2.0 / 3), first, 0.5), first, second,
              Mix(second, Mix(b, At(span + 2), 1.0 / 3), 0.5)};
    }
    case Interpolation::kBezier: {
      const auto tangent = [this](int32_t point) {
        return size_t(point) < tangents.size() ? tangents[size_t(point)] : Tangent{};
      };
      return {a, a + tangent(span).vr, b + tangent(next).vl, b};
    }
    default:
      return Hermite(a, b - a, b, b - a);
  }
}

Vector Curve::PointAt(double t) const {
  if (points.empty()) return {};
  const int32_t spans = SpanCount();
  if (spans == 0) return points[0];
  const Place place = PlaceOf(t, spans);
  return PointOf(Span(place.span), place.t);
}

Vector Curve::TangentAt(double t) const {
  const int32_t spans = SpanCount();
  if (spans == 0) return {};
  const Place place = PlaceOf(t, spans);
  const Vector direction = kelvar::Normalized(DirectionOf(Span(place.span), place.t));
  return std::isfinite(kelvar::Length(direction)) ? direction : Vector{};
}

Box Curve::Bounds() const {
  Box box;
  if (SpanCount() == 0)
    for (const Vector& point : points) box.Add(point);
  for (int32_t i = 0; i < SpanCount(); ++i) {
    const Cubic span = Span(i);
    box.Add(span[0]);
    box.Add(span[3]);
    for (const auto axis : {&Vector::x, &Vector::y, &Vector::z}) AddTurns(span, axis, box);
  }
  return box;
}

double Curve::Length() const {
  double length = 0;
  for (int32_t i = 0; i < SpanCount(); ++i) length += LengthOf(Span(i));
  return length;
}

}  // namespace host
