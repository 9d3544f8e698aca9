#include "scene/spline.h"

#include <cmath>
#include <numeric>
#include <random>

#include "kelvar/matrix.h"
#include "scene/geometry.h"
#include "scene/triangulate.h"
#include "scene_support.h"

namespace {

using namespace host::splineobject;
using host::Curve;
using host::Interpolation;

constexpr double kNaN = NAN;
const std::vector<Vector> kZigzag = {{0, 0, 0}, {1, 2, 0}, {2, 0, 1}, {4, 1, 0}, {5, -1, 2}};

void ExpectNear(const Vector& a, const Vector& b) { EXPECT_LT(kelvar::Distance(a, b), 1e-9); }

std::string Show(const Vector& v) {
  char shown[100];
  snprintf(shown, sizeof shown, "%g %g %g", v.x, v.y, v.z);
  return shown;
}

// Smooth ones go through their points at equal steps of the parameter, and so do their ends.
TEST(Curves, GoThroughPoints) {
  for (const auto type :
       {Interpolation::kLinear, Interpolation::kCubic, Interpolation::kAkima, Interpolation::kBezier})
    for (const bool isClosed : {false, true}) {
      const Curve curve = {kZigzag, {}, type, isClosed};
      const int32_t spans = isClosed ? 5 : 4;
      ASSERT_EQ(curve.SpanCount(), spans);
      for (int32_t i = 0; i <= spans; ++i) ExpectNear(curve.PointAt(double(i) / spans), kZigzag[size_t(i % 5)]);
    }
  const Curve open = {kZigzag, {}, Interpolation::kBSpline, false};
  ExpectNear(open.PointAt(0), kZigzag[0]);
  ExpectNear(open.PointAt(1), kZigzag[4]);
  const Vector knot = (kZigzag[0] + 4 * kZigzag[1] + kZigzag[2]) * (1.0 / 6);
  ExpectNear(open.PointAt(0.25), knot);
  const Curve closed = {kZigzag, {}, Interpolation::kBSpline, true};
  ExpectNear(closed.PointAt(0.2), knot);
  ExpectNear(closed.PointAt(1), (kZigzag[4] + 4 * kZigzag[0] + kZigzag[1]) * (1.0 / 6));
}

// The parameter is the abscissa where the points stand at equal steps, so ordinates follow a function.
TEST(Curves, FollowFunctions) {
  const auto sample = [](auto function) {
    std::vector<Vector> points;
    for (int i = 0; i < 6; ++i) points.push_back({double(i), function(i), 0});
    return points;
  };
  const auto line = [](double x) { return 3 * x - 1; };
  const auto square = [](double x) { return x * x; };
  const auto points = sample(line), parabola = sample(square);
  for (double t : {0.0, 0.07, 0.2, 0.5, 0.93, 1.0}) {
    for (int32_t type = 0; type < 4; ++type)
      ExpectNear(Curve{points, {}, Interpolation(type), false}.PointAt(t), {5 * t, line(5 * t), 0});
    // Akima has a parabola as it is; central differences have one between inner points.
    ExpectNear(Curve{parabola, {}, Interpolation::kAkima, false}.PointAt(t), {5 * t, square(5 * t), 0});
  }
  for (double t : {0.2, 0.3, 0.5, 0.79})
    ExpectNear(Curve{parabola, {}, Interpolation::kCubic, false}.PointAt(t), {5 * t, square(5 * t), 0});
  // A step does not make Akima's curve swing where three points lie in a line.
  const auto step = sample([](double x) { return x < 3 ? 0.0 : 1.0; });
  EXPECT_NEAR((Curve{step, {}, Interpolation::kAkima, false}.PointAt(0.3).y), 0, 1e-12);
}

TEST(Curves, AreSmooth) {
  for (const auto type : {Interpolation::kCubic, Interpolation::kAkima, Interpolation::kBSpline})
    for (const bool isClosed : {false, true}) {
      const Curve curve = {kZigzag, {}, type, isClosed};
      const double spans = curve.SpanCount();
      for (int i = isClosed ? 0 : 1; i < spans; ++i) {
        const double knot = i / spans;
        const Vector before = curve.TangentAt(i == 0 ? 1 : knot - 1e-10),
                     behind = curve.TangentAt(knot + 1e-10);
        EXPECT_LT(kelvar::Distance(before, behind), 1e-7) << i;
      }
      for (double t = 0.03; t < 1; t += 0.1) {
        const Vector way = curve.PointAt(t + 1e-6) - curve.PointAt(t - 1e-6);
        EXPECT_LT(kelvar::Distance(curve.TangentAt(t), kelvar::Normalized(way)), 1e-4);
      }
    }
}

TEST(Curves, HaveDirectionsWhereTheVelocityIsZero) {
  const std::vector<Vector> points = {{0, 0, 0}, {0, 4, 0}};
  const std::vector<Tangent> tangents = {{{}, {}}, {{3, 0, 0}, {}}};
  const Curve curve = {points, tangents, Interpolation::kBezier, false};
  ExpectNear(curve.TangentAt(0), {0.6, 0.8, 0});
  ExpectNear(curve.TangentAt(1), {-1, 0, 0});
  ExpectNear((Curve{points, {}, Interpolation::kBezier, false}.TangentAt(1)), {0, 1, 0});
  const std::vector<Vector> same(3, {1, 1, 1});
  ExpectNear((Curve{same, {}, Interpolation::kCubic, true}.TangentAt(0.4)), {});
}

TEST(Curves, HaveLengths) {
  const auto bezier = [](Vector right, Vector left, Vector end) {
    const std::vector<Vector> points = {{}, end};
    const std::vector<Tangent> tangents = {{{}, right}, {left, {}}};
    return Curve{points, tangents, Interpolation::kBezier, false}.Length();
  };
  const double third = 1.0 / 3;
  const struct {
    double length, wanted;
  } kCases[] = {
      {bezier({third, 0, 0}, {-third, -2 * third, 0}, {1, 1, 0}), (2 * std::sqrt(5) + std::asinh(2)) / 4},
      {bezier({1e200, 0, 0}, {1e200, 0, 0}, {}), 1.5e200},
      {bezier({1e-160, 0, 0}, {1e-160, 0, 0}, {}), 1.5e-160},
      {bezier({1, 0, 0}, {1, 0, 0}, {}), 1.5},                                      // there and back
      {bezier({}, {0, -1, 0}, {0, 1, 0}), 1},                                       // slow at its ends
      {bezier({}, {-2 * third, -1, 0}, {1, 1, 0}), (13 * std::sqrt(13) - 8) / 27},  // y² = x³
      {bezier({1e8, 0, 0}, {1e8, 0, 0}, {}), 1.5e8},
      {Curve{kZigzag, {}, Interpolation::kLinear, false}.Length(),
       std::sqrt(5) + std::sqrt(6) + std::sqrt(6) + 3}};
  for (const auto& one : kCases) EXPECT_NEAR(one.length / one.wanted, 1, 1e-9) << one.wanted;
  // A curve in many small steps is never longer.
  for (int32_t type = 0; type < 4; ++type) {
    const Curve curve = {kZigzag, {}, Interpolation(type), true};
    double steps = 0;
    for (int i = 0; i < 5000; ++i)
      steps += kelvar::Distance(curve.PointAt(i / 5000.0), curve.PointAt((i + 1) / 5000.0));
    EXPECT_NEAR(steps / curve.Length(), 1, 1e-6);
    EXPECT_LE(steps, curve.Length() * (1 + 1e-9));
  }
}

class Splines : public Scene {
 protected:
  SplineObject* Make(int32_t type, const std::vector<Vector>& points) {
    SplineObject* made = Alloc(int32_t(points.size()), type);
    kept_.emplace_back(made);
    std::copy(points.begin(), points.end(), made->Points().begin());
    return made;
  }
  LineObject* MakeLines(const std::vector<std::vector<Vector>>& lines) {
    LineObject* made = host::lineobject::Alloc(0, 0);
    kept_.emplace_back(made);
    for (const auto& line : lines) {
      const int32_t count = made->points.Count(), lineCount = made->segments.Count();
      EXPECT_TRUE(host::lineobject::ResizeSegments(made, count + int32_t(line.size()), lineCount + 1));
      std::copy(line.begin(), line.end(), made->Points().begin() + count);
      made->segments.Items<HostSegment>().back() = {int32_t(line.size()), 1};
    }
    return made;
  }

  std::vector<Element> kept_;
};

TEST_F(Splines, HaveSegments) {
  SplineObject* spline = Make(0, kZigzag);
  EXPECT_EQ(GetSegmentCount(spline), 0);
  ExpectNear(GetSplinePoint(spline, 1, 0), kZigzag[4]);
  ExpectNear(GetSplinePoint(spline, 0.5, 1), {});
  EXPECT_FALSE(IsClosed(spline));
  host::Put(spline->data, host::kSplineClosed, host::Value::Int32(1));
  EXPECT_TRUE(IsClosed(spline));
  ExpectNear(GetSplinePoint(spline, 1, 0), kZigzag[0]);

  ASSERT_TRUE(ResizeSegments(spline, 5, 3));
  const HostSegment segments[] = {{2, 0}, {-7, 1}, {1000, 1}};  // the last has the three points that are left
  for (int32_t i = 0; i < 3; ++i) EXPECT_TRUE(SetSegment(spline, i, &segments[i]));
  HostSegment back{};
  EXPECT_TRUE(GetSegment(spline, 2, &back));
  EXPECT_EQ(back.cnt, 1000);
  EXPECT_FALSE(GetSegment(spline, 3, &back));
  EXPECT_FALSE(SetSegment(spline, -1, &back));
  EXPECT_FALSE(IsClosed(spline));
  const struct {
    int32_t segment;
    double t;
    Vector point;
  } kCases[] = {{0, 0.5, {0.5, 1, 0}}, {0, 1, {1, 2, 0}}, {1, 0.5, {}},        {2, 0, {2, 0, 1}},
                {2, 1, {2, 0, 1}},     {3, 0.5, {}},      {-1, 0.5, {}},       {INT32_MAX, 0, {}},
                {0, -5, {0, 0, 0}},    {0, 7, {1, 2, 0}}, {0, kNaN, {0, 0, 0}}};
  for (const auto& one : kCases) ExpectNear(GetSplinePoint(spline, one.t, one.segment), one.point);
  EXPECT_NEAR(GetSplineLength(spline, 0), std::sqrt(5), 1e-12);
  EXPECT_NEAR(GetSplineLength(spline, -1), GetSplineLength(spline, 0) + GetSplineLength(spline, 2), 1e-12);
  EXPECT_EQ(GetSplineLength(spline, 3), 0);
  EXPECT_TRUE(ResizeObject(spline, 1));
  ExpectNear(GetSplinePoint(spline, 1, 0), kZigzag[0]);
  ExpectNear(GetSplineTangent(spline, 1, 0), {});
}

TEST_F(Splines, HaveTangents) {
  Tangent tangent{};
  SplineObject* cubic = Make(1, kZigzag);
  EXPECT_EQ(GetTangentCount(cubic), 0);
  EXPECT_FALSE(SetTangent(cubic, 0, &tangent));
  SplineObject* bezier = Make(4, kZigzag);
  EXPECT_EQ(GetTangentCount(bezier), 5);
  SetDefaultCoeff(bezier);
  for (double t : {0.0, 0.1, 0.4, 0.77, 1.0})
    ExpectNear(GetSplinePoint(bezier, t, 0), GetSplinePoint(cubic, t, 0));
  EXPECT_TRUE(GetTangent(bezier, 1, &tangent));
  EXPECT_EQ(Show(tangent.vr), "0.333333 0 0.166667");
  EXPECT_FALSE(GetTangent(bezier, 5, &tangent));
  ASSERT_TRUE(ResizeObject(bezier, 7));
  EXPECT_EQ(host::FindBlock(*bezier, host::kDataTangent)->Count(), 7);
  EXPECT_TRUE(SetTangent(bezier, 6, &tangent));
}

TEST_F(Splines, MayBeEmptyOrNoNumbers) {
  for (int32_t type = -1; type < 6; ++type)
    for (size_t count = 0; count < 6; ++count)
      for (const Vector& bad : {Vector{kNaN, 0, 0}, Vector{0, HUGE_VAL, 0}, Vector{1e308, -1e308, 0}}) {
        std::vector<Vector> points(kZigzag.begin(), kZigzag.begin() + ptrdiff_t(std::min<size_t>(count, 4)));
        if (count > 1) points[count / 2] = bad;
        SplineObject* spline = Make(std::clamp(type, 0, 4), points);
        host::Put(spline->data, host::kSplineType, host::Value::Int32(type));
        for (const bool isClosed : {false, true}) {
          host::Put(spline->data, host::kSplineClosed, host::Value::Int32(isClosed));
          SetDefaultCoeff(spline);
          GetSplineLength(spline, -1);
          for (double t : {0.0, 0.5, 1.0, kNaN, -HUGE_VAL}) {
            GetSplinePoint(spline, t, 0);
            const double length = kelvar::Length(GetSplineTangent(spline, t, 0));
            EXPECT_TRUE(length == 0 || std::abs(length - 1) < 1e-9) << length;
          }
        }
      }
  for (const auto& [count, type] : {std::pair(-1, 0), {1, -1}, {1, 5}}) EXPECT_EQ(Alloc(count, type), nullptr);
}

// Those of the curve, which goes beyond its points, or less far.
TEST_F(Splines, HaveBoxes) {
  for (int32_t type = 0; type <= 4; ++type)
    for (const bool isClosed : {false, true}) {
      SplineObject* spline = Make(type, kZigzag);
      host::Put(spline->data, host::kSplineClosed, host::Value::Int32(isClosed));
      SetDefaultCoeff(spline);
      host::Box steps;
      for (int i = 0; i <= 20000; ++i) steps.Add(GetSplinePoint(spline, i / 20000.0, 0));
      const Vector low = host::object::GetMp(spline) - host::object::GetRad(spline);
      const Vector high = host::object::GetMp(spline) + host::object::GetRad(spline);
      EXPECT_LT(kelvar::Distance(low, steps.low), 1e-6) << type << isClosed;
      EXPECT_LT(kelvar::Distance(high, steps.high), 1e-6) << type << isClosed;
    }
  const double k = 4.0 / 3 * std::tan(1.4 / 4) * 10, c = 10 * std::cos(0.7), s = 10 * std::sin(0.7);
  SplineObject* arc = Make(4, {{c, -s, 0}, {c, s, 0}});
  const Vector way = Vector{s, c, 0} * (k / 10);
  const Tangent tangents[] = {{{}, way}, {{way.x, -way.y, 0}, {}}};
  for (int32_t i = 0; i < 2; ++i) EXPECT_TRUE(SetTangent(arc, i, &tangents[i]));
  EXPECT_NEAR(host::object::GetMp(arc).x + host::object::GetRad(arc).x, 10, 1e-3);
  SplineObject* odd = Make(1, {{kNaN, 0, 0}, {1, 2, 3}});
  EXPECT_EQ(host::object::GetMp(odd), (Vector{1, 2, 3}));
  SplineObject* far = Make(0, {{1e308, -1e308, 0}, {1e308, 1e308, 0}});
  EXPECT_EQ(host::object::GetMp(far), (Vector{1e308, 0, 0}));
  EXPECT_EQ(host::object::GetRad(far), (Vector{0, 1e308, 0}));
}

// What triangles cover together.
double AreaOf(const LineObject* triangles) {
  double area = 0;
  const auto points = triangles->Points();
  for (size_t i = 0; i + 2 < points.size(); i += 3)
    area += kelvar::Length(kelvar::Cross(points[i + 1] - points[i], points[i + 2] - points[i])) / 2;
  return area;
}

std::vector<Vector> Square(double x, double y, double side) {
  return {{x, y, 0}, {x + side, y, 0}, {x + side, y + side, 0}, {x, y + side, 0}};
}

TEST_F(Splines, LinesAreTriangulated) {
  std::vector<Vector> comb, star;
  for (int i = 0; i < 200; ++i) comb.push_back({double(i), i % 2 ? 1.0 : 20.0, 0});
  comb.insert(comb.end(), {{199, 0, 0}, {0, 0, 0}});
  std::mt19937 random(2);
  double starArea = 0;
  for (int i = 0; i < 3000; ++i) {
    const double angle = i * 2 * 3.14159265358979 / 3000, r = 1 + double(random() % 1000) / 100;
    star.push_back({r * std::cos(angle), r * std::sin(angle), 0});
  }
  for (size_t i = 0; i < star.size(); ++i)
    starArea += kelvar::Cross(star[i], star[(i + 1) % star.size()]).z / 2;
  std::vector<std::vector<Vector>> sieve = {Square(0, 0, 100)};
  for (int i = 0; i < 81; ++i) sieve.push_back(Square(2 + 11 * (i % 9), 2 + 11 * (i / 9), 5));
  const struct {
    const char* what;
    std::vector<std::vector<Vector>> lines;
    int32_t triangles;
    double area;
  } kCases[] = {{"square", {Square(0, 0, 2)}, 2, 4},
                {"twice the same point", {{{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0, 0}}}, 1, 0.5},
                {"points in a row", {{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 1, 0}}}, 3, 2},
                {"comb", {comb}, 200, 199 * 10.5},
                {"star", {star}, 2998, starArea},
                {"hole, with an island", {Square(1, 1, 3), Square(0, 0, 5), Square(2, 2, 1)}, 10, 17},
                {"sieve", sieve, 4 + 81 * 6 - 2, 10000 - 81 * 25},
                {"two", {Square(0, 0, 1), Square(5, 0, 1)}, 4, 2},
                {"too few", {{{0, 0, 0}, {1, 1, 0}}, Square(0, 0, 1)}, 2, 1},
                {"no number beside", {{{0, 0, 0}, {1, kNaN, 0}, {3, 3, 3}}, Square(0, 0, 1)}, 2, 1}};
  const Matrix turned = {{100, -20, 3}, {0.6, 0, 0.8}, {0, 1, 0}, {-0.8, 0, 0.6}};
  for (const auto& one : kCases) {
    auto lines = one.lines;
    for (auto& line : lines)
      for (Vector& point : line) point = kelvar::Transformed(turned, point);
    const LineObject* object = MakeLines(lines);
    for (double regular : {0.0, 3.0}) {
      LineObject* made = host::lineobject::Triangulate(object, regular);
      ASSERT_NE(made, nullptr) << one.what;
      kept_.emplace_back(made);
      EXPECT_NEAR(AreaOf(made) / one.area, 1, 1e-9) << one.what;
      if (regular == 0) {
        EXPECT_EQ(host::lineobject::GetSegmentCount(made), one.triangles) << one.what;
      }
      const auto points = made->Points();
      for (size_t i = 0; regular > 0 && i < points.size(); ++i)
        EXPECT_LE(kelvar::Distance(points[i], points[i / 3 * 3 + (i + 1) % 3]), regular);
    }
  }
  for (const auto& none : {std::vector<std::vector<Vector>>{}, {{}}, {std::vector<Vector>(9)}})
    EXPECT_EQ(host::lineobject::Triangulate(MakeLines(none), 0), nullptr);
  EXPECT_EQ(host::lineobject::Triangulate(MakeLines({Square(0, 0, 1)}), 1e-30), nullptr);  // too many
}

}  // namespace
