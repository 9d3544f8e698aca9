// Curves by their parameters: first in the plane of x and y.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include "evaluate/primitives_shapes.h"
#include "kelvar/matrix.h"

namespace host {
namespace {

constexpr double kPi = std::numbers::pi;
enum SplineType : int32_t { kLinear = 0, kCubic = 1, kBezier = 4 };

// What is left of an angle so far above 0 that its turns are lost.
double Limited(double angle) { return std::clamp(angle, -1e6, 1e6); }

// But for rounding.
bool IsSame(const Vector& a, const Vector& b) {
  return kelvar::Distance(a, b) <= 1e-12 * (kelvar::Length(a) + kelvar::Length(b));
}

class Path {
 public:
  explicit Path(int32_t type) { shape.type = type; }

  // One at the place of the last one takes that one's place.
  void Add(const Vector& point, const Tangent& tangent = {}) {
    if (shape.points.size() > begin_ && IsSame(point, shape.points.back())) {
      shape.tangents.back().vr = tangent.vr;
      return;
    }
    shape.points.push_back(point);
    shape.tangents.push_back(tangent);
  }

  // Around the origin, with its ends as corners.
  void Arc(double width, double height, double from, double to) {
    const int32_t steps = std::max(int32_t(std::ceil(std::abs(to - from) / (kPi / 2) - 1e-9)), 1);
    const double angle = (to - from) / steps, reach = 4.0 / 3 * std::tan(angle / 4);
    for (int32_t i = 0; i <= steps; ++i) {
      const double at = from + angle * i;
      const Vector ahead = Vector{-width * std::sin(at), height * std::cos(at), 0} * reach;
      Add({width * std::cos(at), height * std::sin(at), 0},
          {i > 0 ? -ahead : Vector{}, i < steps ? ahead : Vector{}});
    }
  }

  // Corners that all turn by the same angle, each with a round of that radius, as far as there is room.
  void RoundCorners(const std::vector<Vector>& corners, double angle, double radius) {
    double shortest = kelvar::Distance(corners.front(), corners.back());
    for (size_t i = 1; i < corners.size(); ++i)
      shortest = std::min(shortest, kelvar::Distance(corners[i - 1], corners[i]));
    const double cut = std::min(radius * std::tan(angle / 2), shortest / 2);
    const double reach = cut / std::tan(angle / 2) * 4 / 3 * std::tan(angle / 4);
    for (size_t i = 0; i < corners.size(); ++i) {
      const Vector& corner = corners[i];
      const Vector back = kelvar::Normalized(corners[(i + corners.size() - 1) % corners.size()] - corner);
      const Vector ahead = kelvar::Normalized(corners[(i + 1) % corners.size()] - corner);
      Add(corner + back * cut, {{}, -back * reach});
      Add(corner + ahead * cut, {-ahead * reach, {}});
    }
  }

  void End(bool closed) {
    auto& [points, tangents, segments, type] = shape;
    if (closed && points.size() > begin_ + 1 && IsSame(points.back(), points[begin_])) {
      tangents[begin_].vl = tangents.back().vl;
      points.pop_back();
      tangents.pop_back();
    }
    segments.push_back({int32_t(points.size() - begin_), closed});
    begin_ = points.size();
  }

  SplineShape Take() {
    if (shape.type != kBezier) shape.tangents.clear();
    return std::move(shape);
  }

  SplineShape shape;

 private:
  size_t begin_ = 0;  // of the segment
};

SplineShape MakeCircle(const Settings& settings) {
  const double width = settings.Length(1300);
  const double height = settings.Flag(1301) ? settings.Length(1302) : width;
  Path path(kBezier);
  path.Arc(width, height, 0, 2 * kPi);
  path.End(true);
  if (settings.Flag(1303)) {
    const double inner = std::min(settings.Length(1304), width);
    path.Arc(inner, width > 0 ? height * (inner / width) : 0, 0, 2 * kPi);
    path.End(true);
  }
  return path.Take();
}

SplineShape MakeCorners(const std::vector<Vector>& corners, double radius) {
  Path path(radius > 0 ? kBezier : kLinear);
  if (radius > 0) {
    path.RoundCorners(corners, 2 * kPi / double(corners.size()), radius);
  } else {
    path.shape.points = corners;
    path.shape.tangents.resize(corners.size());
  }
  path.End(true);
  return path.Take();
}

SplineShape MakeRectangle(const Settings& settings) {
  const double x = settings.Length(1310) / 2, y = settings.Length(1311) / 2;
  return MakeCorners({{x, y, 0}, {-x, y, 0}, {-x, -y, 0}, {x, -y, 0}},
                     settings.Flag(1312) ? settings.Length(1313) : 0);
}

SplineShape MakeNSide(const Settings& settings) {
  const double radius = settings.Length(1320);
  std::vector<Vector> corners(settings.Count(1321, 3));
  for (size_t i = 0; i < corners.size(); ++i) {
    const double angle = 2 * kPi * double(i) / double(corners.size());
    corners[i] = {radius * std::cos(angle), radius * std::sin(angle), 0};
  }
  return MakeCorners(corners, settings.Flag(1322) ? settings.Length(1323) : 0);
}

SplineShape MakeHelix(const Settings& settings) {
  const double radius1 = settings.Length(1330), radius2 = settings.Length(1332);
  const double from = Limited(settings.Number(1331)), to = Limited(settings.Number(1333));
  const double height = settings.Length(1335);
  // A half leaves it even; less of it, and more happens at the end.
  const auto biased = [](double t, double bias) {
    return std::pow(t, std::log(std::clamp(bias, 0.001, 0.999)) / std::log(0.5));
  };
  const double radialBias = settings.Number(1334), heightBias = settings.Number(1336);
  const int32_t count = settings.Count(1337, 2);
  SplineShape shape;
  shape.type = kCubic;
  for (int32_t i = 0; i < count; ++i) {
    const double t = double(i) / (count - 1), angle = std::lerp(from, to, t);
    const double radius = std::lerp(radius1, radius2, biased(t, radialBias));
    shape.points.push_back(
        {radius * std::cos(angle), radius * std::sin(angle), height * biased(t, heightBias)});
  }
  shape.segments.push_back({count, false});
  return shape;
}

SplineShape MakeArc(const Settings& settings) {
  const int32_t type = settings.Choice(1340);
  const double radius = settings.Length(1341);
  const double from = Limited(settings.Number(1343));
  const double to = std::clamp(Limited(settings.Number(1344)), from - 2 * kPi, from + 2 * kPi);
  Path path(kBezier);
  path.Arc(radius, radius, from, to);
  if (type == 1) path.Add({});
  if (type == 3) {
    const double inner = std::min(settings.Length(1342), radius);
    path.Arc(inner, inner, to, from);
  }
  path.End(type != 0);
  return path.Take();
}

constexpr struct {
  int32_t type;
  SplineShape (*make)(const Settings&);
} kSplines[] = {
    {5179, MakeNSide}, {5181, MakeCircle}, {5182, MakeArc}, {5185, MakeHelix}, {5186, MakeRectangle},
};

// To the plane of PRIM_PLANE.
Matrix PlaneOf(int32_t plane) {
  if (plane == 1) return {{}, {0, 0, 1}, {0, 1, 0}, {-1, 0, 0}};
  if (plane == 2) return {{}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
  return kIdentityMatrix;
}

void Reverse(SplineShape& shape) {
  for (Tangent& tangent : shape.tangents) std::swap(tangent.vl, tangent.vr);
  size_t begin = 0;
  for (const HostSegment& segment : shape.segments) {
    const size_t end = begin + size_t(segment.cnt);
    std::reverse(shape.points.begin() + begin, shape.points.begin() + end);
    if (!shape.tangents.empty()) std::reverse(shape.tangents.begin() + begin, shape.tangents.begin() + end);
    begin = end;
  }
}

}  // namespace

bool IsSplinePrimitive(int32_t type) {
  return std::any_of(std::begin(kSplines), std::end(kSplines),
                     [type](const auto& known) { return known.type == type; });
}

std::optional<SplineShape> MakeSplinePrimitive(const BaseObject& object) {
  for (const auto& known : kSplines) {
    if (known.type != object.type.id) continue;
    const Settings settings(object);
    SplineShape shape = known.make(settings);
    const Matrix matrix = PlaneOf(settings.Choice(1010));
    for (Vector& point : shape.points) point = kelvar::Rotated(matrix, point);
    for (Tangent& tangent : shape.tangents)
      tangent = {kelvar::Rotated(matrix, tangent.vl), kelvar::Rotated(matrix, tangent.vr)};
    if (settings.Flag(1011)) Reverse(shape);
    return shape;
  }
  return std::nullopt;
}

}  // namespace host
