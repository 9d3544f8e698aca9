#include "evaluate/primitives.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

#include "kelvar/matrix.h"
#include "scene/gedata.h"
#include "scene_support.h"

namespace {

using host::Mesh;
using host::SplineShape;
using host::Value;

constexpr double kPi = std::numbers::pi, kInfinity = std::numeric_limits<double>::infinity();
constexpr int32_t kSphere = 5160, kPlatonic = 5161, kCone = 5162, kTorus = 5163, kDisc = 5164, kTube = 5165,
                  kPyramid = 5167, kPlane = 5168, kCylinder = 5170, kCapsule = 5171, kOilTank = 5172,
                  kNSide = 5179, kCircle = 5181, kArc = 5182, kHelix = 5185, kRectangle = 5186;

struct Setting {
  Setting(int32_t ofId, int number) : id(ofId), value(Value::Int32(number).Release()) {}
  Setting(int32_t ofId, double number) : id(ofId), value(Value::Float(number).Release()) {}
  Setting(int32_t ofId, const Vector& vector) : id(ofId), value(Value::Of(vector).Release()) {}

  int32_t id;
  HostGeData value;
};
using Parameters = std::vector<Setting>;

// Straight into the container, as scripts may.
Element Made(int32_t type, const Parameters& settings) {
  Element made(New(type));
  for (const Setting& setting : settings) host::container::SetData(&made->data, setting.id, &setting.value);
  return made;
}

Mesh MeshOf(int32_t type, const Parameters& settings) {
  const Element made = Made(type, settings);
  const auto mesh = host::MakePrimitive(static_cast<const BaseObject&>(*made));
  EXPECT_TRUE(mesh) << type;
  return mesh.value_or(Mesh{});
}

SplineShape CurveOf(int32_t type, const Parameters& settings) {
  const Element made = Made(type, settings);
  const auto shape = host::MakeSplinePrimitive(static_cast<const BaseObject&>(*made));
  EXPECT_TRUE(shape) << type;
  return shape.value_or(SplineShape{});
}

std::vector<int32_t> CornersOf(const CPolygon& polygon) {
  if (polygon.c == polygon.d) return {polygon.a, polygon.b, polygon.c};
  return {polygon.a, polygon.b, polygon.c, polygon.d};
}

struct Figures {
  int euler = 0;
  int open = 0;     // edges of one polygon
  int crooked = 0;  // edges of more than two, or of two that turn the same way
  int unused = 0;   // points
  double area = 0, volume = 0;
  Vector low{kInfinity, kInfinity, kInfinity}, high{-kInfinity, -kInfinity, -kInfinity};
  double leastUV = kInfinity, mostUV = -kInfinity;
  double leastArea = kInfinity;
};

Figures FiguresOf(const Mesh& mesh) {
  Figures figures;
  std::vector<std::pair<int32_t, int32_t>> ways;
  std::vector<bool> used(mesh.points.size());
  for (size_t i = 0; i < mesh.polygons.size(); ++i) {
    const std::vector<int32_t> corners = CornersOf(mesh.polygons[i]);
    double area = 0;
    for (size_t j = 0; j < corners.size(); ++j) {
      ways.push_back({corners[j], corners[(j + 1) % corners.size()]});
      used.at(size_t(corners[j])) = true;
    }
    for (size_t j = 2; j < corners.size(); ++j) {
      const Vector &a = mesh.points.at(corners[0]), &b = mesh.points.at(corners[j - 1]),
                   &c = mesh.points.at(corners[j]);
      area += kelvar::Length(kelvar::Cross(b - a, c - a)) / 2;
      figures.volume += kelvar::Dot(a, kelvar::Cross(b, c)) / 6;
    }
    figures.area += area;
    figures.leastArea = std::min(figures.leastArea, area);
    for (const Vector& uv : {mesh.uvw[i].a, mesh.uvw[i].b, mesh.uvw[i].c, mesh.uvw[i].d}) {
      figures.leastUV = std::min({figures.leastUV, uv.x, uv.y});
      figures.mostUV = std::max({figures.mostUV, uv.x, uv.y});
    }
  }
  std::sort(ways.begin(), ways.end());
  figures.crooked = int(ways.end() - std::unique(ways.begin(), ways.end()));
  int edges = 0;
  for (const auto& [from, to] : ways) {
    const bool isOpen = !std::binary_search(ways.begin(), ways.end(), std::pair{to, from});
    edges += isOpen || from < to;
    figures.open += isOpen;
  }
  const int points = int(std::count(used.begin(), used.end(), true));
  figures.unused = int(mesh.points.size()) - points;
  figures.euler = points - edges + int(mesh.polygons.size());
  for (const Vector& p : mesh.points) {
    figures.low = {std::min(figures.low.x, p.x), std::min(figures.low.y, p.y), std::min(figures.low.z, p.z)};
    figures.high = {std::max(figures.high.x, p.x), std::max(figures.high.y, p.y),
                    std::max(figures.high.z, p.z)};
  }
  return figures;
}

// The area of a regular polygon in a circle of radius 1, and its circumference.
double NgonArea(int n) { return n / 2.0 * std::sin(2 * kPi / n); }
double NgonLength(int n) { return 2 * n * std::sin(kPi / n); }

class Primitives : public Scene {};

struct Size {
  double area, volume;
};

// `euler` is 2 for a ball and 0 for a ring; pictures may go on by `beyond`.
void ExpectSolid(const char* name, int32_t type, const Parameters& parameters, int euler, size_t polygons,
                 const Size& size, double tolerance = 1e-9, double beyond = 1e-12) {
  SCOPED_TRACE(name);
  const Mesh mesh = MeshOf(type, parameters);
  const Figures f = FiguresOf(mesh);
  EXPECT_EQ(mesh.polygons.size(), polygons);
  EXPECT_EQ(mesh.uvw.size(), polygons);
  EXPECT_EQ(f.euler, euler);
  EXPECT_EQ(f.open, 0);
  EXPECT_EQ(f.crooked, 0);
  EXPECT_EQ(f.unused, 0);
  EXPECT_GT(f.leastArea, 0);
  EXPECT_NEAR(f.area / size.area, 1, tolerance);
  EXPECT_NEAR(f.volume / size.volume, 1, tolerance);
  EXPECT_GE(f.leastUV, -beyond);
  EXPECT_LE(f.mostUV, 1 + beyond);
}

Size Ball(double radius) { return {4 * kPi * radius * radius, 4.0 / 3 * kPi * std::pow(radius, 3)}; }
// The length is that between the two halves of the ball.
Size Pill(double radius, double length) {
  const Size ball = Ball(radius);
  return {ball.area + 2 * kPi * radius * length, ball.volume + kPi * radius * radius * length};
}

TEST_F(Primitives, BoxesAndBallsAreClosedAndOfTheRightSize) {
  ExpectSolid("cube", kCube, {}, 2, 6, {240000, 8e6});
  ExpectSolid("in segments", kCube, {{1100, Vector{10, 20, 40}}, {1101, 2}, {1102, 3}, {1103, 4}}, 2, 52,
              {2800, 8000});
  ExpectSolid("without a radius", kCube, {{1105, 1}, {1106, 0.0}}, 2, 6, {240000, 8e6});
  // An inner box, its sides moved outwards, quarters of cylinders, and a ball of eight corners.
  const Size corners = Ball(40);
  ExpectSolid("round", kCube, {{1105, 1}, {1106, 40.0}, {1107, 40}, {1102, 2}}, 2,
              6 + 4 + 480 + 4 * 40 + 8 * 1600,
              {6 * 14400 + 12 * 120 * 20 * kPi + corners.area,
               120 * 14400 + 6 * 14400 * 40 + 3 * 120 * kPi * 1600 + corners.volume},
              1e-3);
  ExpectSolid("a ball", kCube, {{1105, 1}, {1106, 500.0}, {1107, 40}}, 2, 8 * 1600, Ball(100), 1e-3);
  ExpectSolid("a pill", kCube, {{1100, Vector{400, 200, 200}}, {1105, 1}, {1106, 500.0}, {1107, 40}}, 2,
              4 * 40 + 8 * 1600, Pill(100, 200), 1e-3);
  ExpectSolid("pyramid", kPyramid, {{1171, 3}}, 2, 45, {40000 + 400 * std::hypot(100, 200), 40000 * 200 / 3.0});

  ExpectSolid("sphere", kSphere, {{1111, 200}}, 2, 200 * 100, Ball(100), 1e-3);
  ExpectSolid("least", kSphere, {{1111, 3}}, 2, 6, {3e4 * std::sqrt(3.75), NgonArea(3) / 3 * 2e6});
  ExpectSolid("by tetrahedron", kSphere, {{1111, 300}, {1112, 1}}, 2, 4 * 99 * 99, Ball(100), 1e-3, 0.1);
  ExpectSolid("by hexahedron", kSphere, {{1111, 160}, {1112, 2}}, 2, 6 * 40 * 40, Ball(100), 1e-3);
  ExpectSolid("by octahedron", kSphere, {{1111, 160}, {1112, 3}}, 2, 8 * 40 * 40, Ball(100), 1e-3);
  ExpectSolid("by icosahedron", kSphere, {{1111, 160}, {1112, 4}}, 2, 20 * 32 * 32, Ball(100), 1e-3, 0.1);
  ExpectSolid("half", kSphere, {{1111, 200}, {1112, 5}}, 2, 200 * 51, {3e4 * kPi, 2e6 / 3 * kPi}, 1e-3);

  const double ico = 400 / std::sqrt(10 + 2 * std::sqrt(5)), dodeca = 400 / (std::sqrt(3) * (1 + std::sqrt(5)));
  const Size twelve{3 * std::sqrt(25 + 10 * std::sqrt(5)) * std::pow(dodeca, 2),
                    (15 + 7 * std::sqrt(5)) / 4 * std::pow(dodeca, 3)};
  ExpectSolid("4", kPlatonic, {{1202, 0}, {1201, 3}}, 2, 36, {8e4 / std::sqrt(3), 8e6 / (9 * std::sqrt(3))});
  ExpectSolid("6", kPlatonic, {{1202, 1}, {1201, 3}}, 2, 54, {8e4, 8e6 / (3 * std::sqrt(3))});
  ExpectSolid("8", kPlatonic, {{1202, 2}, {1201, 3}}, 2, 72, {4e4 * std::sqrt(3), 4e6 / 3});
  ExpectSolid("12", kPlatonic, {{1202, 3}}, 2, 24, twelve);
  ExpectSolid("12 in segments", kPlatonic, {{1202, 3}, {1201, 2}}, 2, 240, twelve);
  ExpectSolid("20", kPlatonic, {{1201, 2}}, 2, 80,
              {5 * std::sqrt(3) * ico * ico, 5.0 / 12 * (3 + std::sqrt(5)) * std::pow(ico, 3)});
}

TEST_F(Primitives, TurnedOnesAreClosedAndOfTheRightSize) {
  const double disc = NgonArea(36), rim = NgonLength(36), apothem = std::cos(kPi / 36);
  const Setting sliced{1001, 1}, toQuarter{1003, kPi / 2};
  const Size cylinder{2 * disc * 2500 + rim * 50 * 200, disc * 2500 * 200};
  ExpectSolid("cylinder", kCylinder, {{1135, 3}}, 2, 36 * 14, cylinder);
  ExpectSolid("quarter", kCylinder, {{1133, 9}, sliced, toQuarter}, 2, 9 * 10 + 2 * 11,
              {cylinder.area / 4 + 2 * 50 * 200, cylinder.volume / 4});
  ExpectSolid("more than a turn", kCylinder, {sliced, {1002, 7.0}, {1003, -7.0}}, 2, 36 * 10, cylinder);
  ExpectSolid("round", kCylinder, {{1133, 400}, {1132, 1}, {1136, 1}, {1137, 40}, {1138, 10.0}}, 2, 400 * 83,
              {2 * kPi * 1600 + 2 * kPi * 50 * 180 + 2 * (kPi * kPi * 10 * 40 + 2 * kPi * 100),
               kPi * 2500 * 180 + 2 * (kPi * 16000 + kPi * kPi / 2 * 4000 + 2.0 / 3 * kPi * 1000)},
              1e-3);
  ExpectSolid("a pill", kCylinder, {{1133, 400}, {1132, 1}, {1136, 1}, {1137, 40}, {1138, 1e9}}, 2, 400 * 81,
              Pill(50, 100), 1e-3);

  const Size cone{disc * 1e4 + rim * 50 * std::hypot(200, 100 * apothem), disc * 1e4 * 200 / 3};
  ExpectSolid("cone", kCone, {{1146, 2}}, 2, 36 * 10, cone);
  ExpectSolid("on its tip", kCone, {{1140, 100.0}, {1141, 0.0}}, 2, 36 * 9, cone);
  ExpectSolid("truncated", kCone, {{1140, 50.0}}, 2, 36 * 10,
              {disc * 12500 + rim * 75 * std::hypot(200, 50 * apothem), disc * 17500 * 200 / 3});
  ExpectSolid("half", kCone, {sliced, {1144, 18}}, 2, 18 * 9 + 2 * 10,
              {cone.area / 2 + 200 * 100, cone.volume / 2});

  const Size torus{4 * kPi * kPi * 2000, 2 * kPi * kPi * 100 * 400};
  ExpectSolid("torus", kTorus, {{1152, 400}, {1153, 200}}, 0, 80000, torus, 1e-3);
  ExpectSolid("half", kTorus, {{1152, 400}, {1153, 200}, sliced}, 2, 80400,
              {torus.area / 2 + 2 * kPi * 400, torus.volume / 2}, 1e-3);
  const Size tube{2 * disc * 7500 + rim * 150 * 100, disc * 7500 * 100};
  ExpectSolid("tube", kTube, {{1185, 2}}, 0, 36 * 6, tube);
  ExpectSolid("filled", kTube, {{1180, 0.0}, {1181, 100.0}, {1182, 200.0}}, 2, 36 * 3,
              {2 * NgonArea(36) * 1e4 + NgonLength(36) * 100 * 200, NgonArea(36) * 1e4 * 200});
  ExpectSolid("quarter", kTube, {{1184, 9}, sliced, toQuarter}, 2, 9 * 4 + 8,
              {tube.area / 4 + 2 * 5000, tube.volume / 4});
  ExpectSolid("round", kTube, {{1184, 400}, {1186, 1}, {1187, 40}, {1188, 500.0}}, 0, 400 * 162,
              {2 * kPi * 75 * (2 * kPi * 25 + 100), 2 * kPi * 75 * (kPi * 625 + 50 * 50)}, 1e-3);

  ExpectSolid("capsule", kCapsule, {{1194, 400}, {1193, 100}}, 2, 400 * 208, Pill(50, 100), 1e-3);
  ExpectSolid("a ball", kCapsule, {{1194, 400}, {1193, 100}, {1191, 10.0}}, 2, 400 * 200, Ball(5), 1e-3);
  ExpectSolid("oil tank", kOilTank, {{1215, 400}, {1214, 100}}, 2, 400 * 208,
              {2 * kPi * 50 * 150 + 2 * kPi * (2500 + 625), kPi * 2500 * 150 + kPi * 25 / 3 * (3 * 2500 + 625)},
              1e-3);
  ExpectSolid("flat", kOilTank, {{1212, 0.0}}, 2, 36 * 24, cylinder);
}

// Twice the segments, a quarter of the fault.
TEST_F(Primitives, RoundOnesComeNearer) {
  const auto check = [](int32_t type, Parameters parameters, int32_t across, int32_t along, const Size& size) {
    SCOPED_TRACE(testing::Message() << type << " " << parameters.size());
    const auto fault = [&](int32_t segments) {
      parameters.push_back({across, segments});
      parameters.push_back({along, segments});
      const Figures f = FiguresOf(MeshOf(type, parameters));
      return Size{size.area - f.area, size.volume - f.volume};
    };
    const Size coarse = fault(120), fine = fault(240);
    EXPECT_NEAR(coarse.area / fine.area, 4, 0.05);
    EXPECT_NEAR(coarse.volume / fine.volume, 4, 0.05);
  };
  for (const int32_t kind : {0, 1, 2, 3, 4}) check(kSphere, {{1112, kind}}, 1111, 1111, Ball(100));
  check(kTorus, {}, 1152, 1153, {4 * kPi * kPi * 2000, 2 * kPi * kPi * 100 * 400});
  check(kCapsule, {}, 1193, 1194, Pill(50, 100));
  check(kOilTank, {{1212, 50.0}}, 1214, 1215, Pill(50, 100));
}

TEST_F(Primitives, OrientationsTurnThem) {
  // A cone of 100 and 200 with its tip where it looks, then planes.
  const struct {
    int32_t type, axis;
    Vector low, high, front;
  } cases[] = {
      {kCone, 0, {-100, -100, -100}, {100, 100, 100}, {100, 0, 0}},
      {kCone, 1, {-100, -100, -100}, {100, 100, 100}, {-100, 0, 0}},
      {kCone, 3, {-100, -100, -100}, {100, 100, 100}, {0, -100, 0}},
      {kCone, 4, {-100, -100, -100}, {100, 100, 100}, {0, 0, 100}},
      {kCone, 5, {-100, -100, -100}, {100, 100, 100}, {0, 0, -100}},
      {kPlane, 0, {0, -200, -50}, {0, 200, 50}, {1, 0, 0}},
      {kPlane, 1, {0, -200, -50}, {0, 200, 50}, {-1, 0, 0}},
      {kPlane, 2, {-50, 0, -200}, {50, 0, 200}, {0, 1, 0}},
      {kPlane, 3, {-50, 0, -200}, {50, 0, 200}, {0, -1, 0}},
      {kPlane, 4, {-50, -200, 0}, {50, 200, 0}, {0, 0, 1}},
      {kPlane, 5, {-50, -200, 0}, {50, 200, 0}, {0, 0, -1}},
      {kDisc, 4, {-100, -100, 0}, {100, 100, 0}, {0, 0, 1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.type << " " << c.axis);
    const Mesh mesh = MeshOf(c.type, {{1000, c.axis}, {c.type == kPlane ? 1120 : 1, 100.0}});
    const Figures f = FiguresOf(mesh);
    EXPECT_LT(kelvar::Distance(f.low, c.low), 1e-9);
    EXPECT_LT(kelvar::Distance(f.high, c.high), 1e-9);
    if (c.type == kCone) {
      EXPECT_GT(f.volume, 0);
      EXPECT_LT(kelvar::Distance(mesh.points.back(), c.front), 1e-9);
    } else {
      for (const CPolygon& polygon : mesh.polygons) {
        const Vector &a = mesh.points[polygon.a], &b = mesh.points[polygon.b], &corner = mesh.points[polygon.c];
        EXPECT_LT(kelvar::Distance(kelvar::Normalized(kelvar::Cross(b - a, corner - a)), c.front), 1e-9);
      }
    }
    // Seen from outside, the picture of a plane stands upright.
    if (c.type == kPlane && c.axis != 2 && c.axis != 3) {
      for (size_t i = 0; i < mesh.polygons.size(); ++i)
        EXPECT_NEAR(mesh.uvw[i].a.y, 0.5 - mesh.points[mesh.polygons[i].a].y / 400, 1e-9);
    }
  }
}

// The picture is nowhere mirrored: seen from outside, u goes to the right and v down.
TEST_F(Primitives, PicturesAreNotMirrored) {
  const Parameters slice{{1001, 1}, {1003, 2.0}, {1105, 1}, {1136, 1}, {1186, 1}, {1202, 3}, {1201, 2}};
  for (const int32_t type : {kCube, kSphere, kPlatonic, kCone, kTorus, kDisc, kTube, kPyramid, kPlane,
                             kCylinder, kCapsule, kOilTank})
    for (int32_t kind = 0; kind < (type == kSphere ? 6 : 1); ++kind) {
      SCOPED_TRACE(testing::Message() << type << " " << kind);
      Parameters parameters = slice;
      if (type == kSphere) parameters.push_back({1112, kind});
      const Mesh mesh = MeshOf(type, parameters);
      size_t mirrored = 0, wide = 0;
      for (const UVWStruct& uv : mesh.uvw) {
        const Vector turn = kelvar::Cross(uv.b - uv.a, uv.c - uv.a);
        mirrored += turn.z < 1e-12;
        wide += std::abs(uv.a.x - uv.c.x) > 0.5;  // most of the way round: a seam gone wrong
      }
      EXPECT_EQ(mirrored, 0U);
      if (type == kSphere) {
        EXPECT_EQ(wide, 0U);
      }
    }
}

TEST_F(Primitives, OpenOnesHaveTheRightEdges) {
  const struct {
    int32_t type;
    Parameters parameters;
    int euler, open;
    double area;
  } cases[] = {
      {kPlane, {{1122, 3}, {1123, 2}}, 1, 10, 160000},
      {kDisc, {{1162, 2}}, 1, 36, NgonArea(36) * 1e4},
      {kDisc, {{1160, 50.0}}, 0, 72, NgonArea(36) * 7500},
      {kDisc, {{1001, 1}, {1163, 18}}, 1, 20, NgonArea(36) * 5000},
      {kCylinder, {{1134, 0}}, 0, 72, NgonLength(36) * 50 * 200},
      {kCone, {{1145, 0}}, 1, 36, NgonLength(36) * 50 * std::hypot(200, 100 * std::cos(kPi / 36))},
      {kCube, {{1104, 1}}, 6, 24, 240000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    const Figures f = FiguresOf(MeshOf(c.type, c.parameters));
    EXPECT_EQ(f.euler, c.euler);
    EXPECT_EQ(f.open, c.open);
    EXPECT_EQ(f.crooked, 0);
    EXPECT_EQ(f.unused, 0);
    EXPECT_NEAR(f.area / c.area, 1, 1e-9);
  }
}

TEST_F(Primitives, WhatHasNoSurfaceHasNoPolygons) {
  const struct {
    int32_t type;
    Parameters parameters;
  } cases[] = {{kCone, {{1140, 0.0}, {1141, 0.0}}},
               {kCone, {{1140, 0.0}, {1141, 0.0}, {1145, 0}, {1001, 1}}},
               {kDisc, {{1160, 100.0}, {1161, 100.0}}},
               {kTube, {{1180, 0.0}, {1181, 0.0}}},
               {kCylinder, {{1131, 0.0}, {1134, 0}}}};
  for (const auto& c : cases) {
    const Mesh mesh = MeshOf(c.type, c.parameters);
    EXPECT_TRUE(mesh.polygons.empty() && mesh.uvw.empty() && mesh.breaks.empty()) << c.type;
    EXPECT_FALSE(mesh.points.empty()) << c.type;
  }
}

// Whatever the container holds: corners are points, points are numbers.
TEST_F(Primitives, SenselessParametersAreLimited) {
  const double nan = std::nan("");
  for (const int32_t type : {kCube, kSphere, kPlatonic, kCone, kTorus, kDisc, kTube, kPyramid, kPlane,
                             kCylinder, kCapsule, kOilTank, kNSide, kCircle, kArc, kHelix, kRectangle}) {
    const Element element(New(type));
    for (const double number : {0.0, -5.0, 1e-320, 1e300, kInfinity, -kInfinity, nan})
      for (const int flags : {0, 1}) {
        SCOPED_TRACE(testing::Message() << type << " " << number << " " << flags);
        for (const host::Parameter& parameter : element->type.parameters) {
          const int32_t id = parameter.Number();
          if (parameter.valueType == HOST_DATA_INT32)
            host::Put(element->data, id, Value::Int32(parameter.max == 1 ? flags : number > 0 ? 5 : -1000));
          if (parameter.valueType == HOST_DATA_FLOAT) host::Put(element->data, id, Value::Float(number));
          if (parameter.valueType == HOST_DATA_VECTOR)
            host::Put(element->data, id, Value::Of({number, flags ? 1 : number, number}));
        }
        const auto& object = static_cast<const BaseObject&>(*element);
        std::vector<Vector> points;
        if (const auto mesh = host::MakePrimitive(object)) {
          const Figures f = FiguresOf(*mesh);
          EXPECT_TRUE(!mesh->polygons.empty() || type == kDisc || !(number > 0));
          EXPECT_EQ(mesh->polygons.empty() ? 0 : f.unused, 0);
          EXPECT_EQ(f.crooked, 0);
          EXPECT_TRUE(std::isfinite(f.area) && std::isfinite(f.volume));
          EXPECT_TRUE(f.leastUV > -1 && f.mostUV < 2);
          points = mesh->points;
        } else {
          const auto shape = host::MakeSplinePrimitive(object);
          ASSERT_TRUE(shape);
          size_t count = 0;
          for (const HostSegment& segment : shape->segments) count += size_t(segment.cnt);
          EXPECT_EQ(count, shape->points.size());
          EXPECT_EQ(shape->tangents.size(), shape->type == 4 ? count : 0);
          points = shape->points;
          for (const Tangent& tangent : shape->tangents) points.insert(points.end(), {tangent.vl, tangent.vr});
        }
        EXPECT_FALSE(points.empty());
        for (const Vector& point : points)
          if (!std::isfinite(point.x + point.y + point.z)) {
            ADD_FAILURE() << "a point is no number";
            break;
          }
      }
    host::Put(element->data, 1101, Value::Text("of another type"));
    EXPECT_EQ(host::MakePrimitive(static_cast<const BaseObject&>(*element)).has_value(),
              host::IsPrimitive(type));
  }
  const Element null(New());
  EXPECT_FALSE(host::MakePrimitive(static_cast<const BaseObject&>(*null)));
  EXPECT_FALSE(host::MakeSplinePrimitive(static_cast<const BaseObject&>(*null)));
}

// The length of Bezier curves, in short lines.
double LengthOf(const SplineShape& shape) {
  double length = 0;
  size_t begin = 0;
  for (const HostSegment& segment : shape.segments) {
    const size_t count = size_t(segment.cnt);
    for (size_t i = 0; i + 1 < count + size_t(segment.closed); ++i) {
      const size_t from = begin + i, to = begin + (i + 1) % count;
      const Vector &a = shape.points[from], &d = shape.points[to];
      const bool isBezier = shape.type == 4;
      const Vector b = isBezier ? a + shape.tangents[from].vr : a, c = isBezier ? d + shape.tangents[to].vl : d;
      Vector last = a;
      for (int step = 1; step <= 200; ++step) {
        const double t = step / 200.0, s = 1 - t;
        const Vector at = a * (s * s * s) + b * (3 * s * s * t) + c * (3 * s * t * t) + d * (t * t * t);
        length += kelvar::Distance(last, at);
        last = at;
      }
    }
    begin += count;
  }
  return length;
}

TEST_F(Primitives, CurvesHaveTheirLengths) {
  const struct {
    int32_t type;
    Parameters parameters;
    size_t points, segments;
    bool isClosed;
    double length;
  } cases[] = {
      {kCircle, {}, 4, 1, true, 400 * kPi},
      {kCircle, {{1303, 1}, {1010, 2}}, 8, 2, true, 600 * kPi},
      {kRectangle, {{1011, 1}}, 4, 1, true, 1600},
      {kRectangle, {{1312, 1}}, 8, 1, true, 1200 + 100 * kPi},
      {kRectangle, {{1312, 1}, {1311, 100.0}}, 6, 1, true, 600 + 100 * kPi},
      {kRectangle, {{1312, 1}, {1313, 1e9}, {1011, 1}}, 4, 1, true, 400 * kPi},
      {kNSide, {}, 6, 1, true, 1200},
      {kNSide, {{1322, 1}, {1323, 1e9}}, 6, 1, true, 2 * kPi * 100 * std::sqrt(3)},
      {kArc, {}, 2, 1, false, 100 * kPi},
      {kArc, {{1340, 1}}, 3, 1, true, 100 * kPi + 400},
      {kArc, {{1340, 2}, {1011, 1}}, 2, 1, true, 100 * kPi + 200 * std::sqrt(2)},
      {kArc, {{1340, 3}, {1344, kPi}}, 6, 1, true, 300 * kPi + 200},
      {kHelix, {{1337, 1000}, {1010, 1}}, 1000, 1, false, std::hypot(800 * kPi, 200)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.type << " " << c.length);
    const SplineShape shape = CurveOf(c.type, c.parameters);
    EXPECT_EQ(shape.points.size(), c.points);
    ASSERT_EQ(shape.segments.size(), c.segments);
    EXPECT_EQ(shape.segments[0].closed != 0, c.isClosed);
    EXPECT_NEAR(LengthOf(shape) / c.length, 1, 5e-4);
  }
  const auto reach = [](int32_t plane) {
    Vector low{}, high{};
    for (const Vector& p : CurveOf(kArc, {{1010, plane}}).points)
      high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    return high - low;
  };
  EXPECT_LT(kelvar::Distance(reach(0), {200, 200, 0}), 1e-9);
  EXPECT_LT(kelvar::Distance(reach(1), {0, 200, 200}), 1e-9);
  EXPECT_LT(kelvar::Distance(reach(2), {200, 0, 200}), 1e-9);
}

TEST_F(Primitives, MeshesBecomeObjects) {
  const Mesh mesh = MeshOf(kCylinder, {});
  const Element made(host::NewObject(mesh));
  auto& object = static_cast<PolygonObject&>(*made);
  EXPECT_EQ(object.Points().size(), mesh.points.size());
  EXPECT_TRUE(std::equal(mesh.points.begin(), mesh.points.end(), object.Points().begin()));
  ASSERT_EQ(object.Polygons().size(), mesh.polygons.size());
  EXPECT_EQ(object.Polygons().back().c, mesh.polygons.back().c);
  const VariableTag* uvw = host::FindBlock(object, host::kDataUVW);
  ASSERT_TRUE(uvw);
  ASSERT_EQ(size_t(uvw->Count()), mesh.uvw.size());
  EXPECT_EQ(uvw->Items<UVWStruct>().back().b, mesh.uvw.back().b);
  // The rims are sharp on both sides.
  size_t broken = 0;
  for (const host::Run& run : object.phongBreak.runs) broken += size_t(run.last - run.first + 1);
  EXPECT_EQ(broken, 4U * 36);
  const BaseTag* phong = host::object::GetTag(&object, 5612, 0);
  ASSERT_TRUE(phong);
  EXPECT_NEAR(host::container::FindData(&phong->data, 1001)->value.real, 40 * kPi / 180, 1e-9);

  const Element flat(host::NewObject(MeshOf(kPlatonic, {{1202, 3}})));
  EXPECT_FALSE(host::object::GetTag(static_cast<BaseObject*>(flat.get()), 5612, 0));
  // In each pentagon one edge, told from both sides.
  const auto& ngons = static_cast<PolygonObject&>(*flat).ngonEdges;
  ASSERT_EQ(ngons.size(), 24U);
  EXPECT_EQ(std::accumulate(ngons.begin(), ngons.end(), 0), 12 * (8 + 1));

  const Element circle = Made(kCircle, {{1303, 1}, {1003, 5}});
  const Element curve(
      host::NewObject(*host::MakeSplinePrimitive(static_cast<BaseObject&>(*circle)), circle->data));
  auto& spline = static_cast<SplineObject&>(*curve);
  EXPECT_EQ(spline.Points().size(), 8U);
  ASSERT_EQ(spline.Segments().size(), 2U);
  EXPECT_EQ(spline.Segments()[1].cnt, 4);
  ASSERT_TRUE(host::FindBlock(spline, host::kDataTangent));
  EXPECT_NE(host::FindBlock(spline, host::kDataTangent)->Items<Tangent>()[0].vr.y, 0);
  EXPECT_EQ(host::container::FindData(&spline.data, 1003)->value.integer, 5);
  EXPECT_EQ(host::container::FindData(&spline.data, 1001)->value.integer, 1);
}

}  // namespace
