#include "evaluate/primitives.h"

#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <set>

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
using Setup = std::vector<Setting>;

// Straight into the container, as scripts may.
Element Made(int32_t type, const Setup& settings) {
  Element made(New(type));
  for (const Setting& setting : settings) host::container::SetData(&made->data, setting.id, &setting.value);
  return made;
}

Mesh MeshOf(int32_t type, const Setup& settings) {
  const Element made = Made(type, settings);
  const auto mesh = host::MakePrimitive(static_cast<const BaseObject&>(*made));
  EXPECT_TRUE(mesh) << type;
  return mesh.value_or(Mesh{});
}

SplineShape CurveOf(int32_t type, const Setup& settings) {
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
  std::map<std::pair<int32_t, int32_t>, int> ways;
  std::set<int32_t> used;
  for (size_t i = 0; i < mesh.polygons.size(); ++i) {
    const std::vector<int32_t> corners = CornersOf(mesh.polygons[i]);
    double area = 0;
    for (size_t j = 0; j < corners.size(); ++j) {
      ++ways[{corners[j], corners[(j + 1) % corners.size()]}];
      used.insert(corners[j]);
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
  int edges = 0;
  for (const auto& [edge, count] : ways) {
    const auto back = ways.find({edge.second, edge.first});
    edges += back == ways.end() || edge.first < edge.second;
    figures.open += back == ways.end();
    figures.crooked += count != 1;
  }
  figures.unused = int(mesh.points.size() - used.size());
  figures.euler = int(used.size()) - edges + int(mesh.polygons.size());
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

struct Case {
  const char* name;
  int32_t type;
  Setup settings;
  int euler;  // 2 for a ball, 0 for a ring
  size_t polygons;
  double area, volume;
  Vector half;  // of the box about the origin
  double tolerance = 1e-9;
};

TEST_F(Primitives, SolidsAreClosedAndOfTheRightSize) {
  const double apothem = std::cos(kPi / 36), slant = std::hypot(200, 100 * apothem), golden = std::numbers::phi;
  const double ico = 4 / std::sqrt(10 + 2 * std::sqrt(5)), dodeca = 4 / (std::sqrt(3) * (1 + std::sqrt(5)));
  const double r = 100 * dodeca, third = 2 * kPi / 3;
  const Setup slice{{1001, 1}, {1002, 0.0}, {1003, kPi / 2}};
  const auto with = [](Setup setup, const Setup& more) {
    setup.insert(setup.end(), more.begin(), more.end());
    return setup;
  };
  const double disc36 = NgonArea(36), ring36 = NgonLength(36);
  const Case cases[] = {
      {"cube", kCube, {}, 2, 6, 240000, 8e6, {100, 100, 100}},
      {"cube in segments",
       kCube,
       {{1100, Vector{10, 20, 40}}, {1101, 2}, {1102, 3}, {1103, 4}},
       2,
       52,
       2800,
       8000,
       {5, 10, 20}},
      {"cube without a fillet's radius", kCube, {{1105, 1}, {1106, 0.0}}, 2, 6, 240000, 8e6, {100, 100, 100}},
      // Inner box, its sides moved outwards, quarters of cylinders, a ball of eight corners.
      {"cube with a fillet",
       kCube,
       {{1105, 1}, {1106, 40.0}, {1107, 40}, {1102, 2}},
       2,
       6 + 4 + 480 + 4 * 40 + 8 * 1600,
       6 * 14400 + 12 * 120 * 40 * kPi / 2 + 4 * kPi * 1600,
       std::pow(120, 3) + 6 * 14400 * 40 + 3 * 120 * kPi * 1600 + 4.0 / 3 * kPi * 64000,
       {100, 100, 100},
       1e-3},
      {"cube that is a ball",
       kCube,
       {{1105, 1}, {1106, 500.0}, {1107, 40}},
       2,
       8 * 1600,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"cube that is a capsule",
       kCube,
       {{1100, Vector{400, 200, 200}}, {1105, 1}, {1106, 500.0}, {1107, 40}},
       2,
       4 * 40 + 8 * 1600,
       2 * kPi * 100 * 200 + 4 * kPi * 1e4,
       kPi * 1e4 * 200 + 4.0 / 3 * kPi * 1e6,
       {200, 100, 100},
       1e-3},
      {"sphere",
       kSphere,
       {{1111, 200}},
       2,
       200 * 100,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"least sphere",
       kSphere,
       {{1111, 3}},
       2,
       6,
       6 * std::sqrt(3) / 2 * 1e4 * std::sqrt(1.25),
       NgonArea(3) / 3 * 2e6,
       {100, 100, 100},
       1e9},
      {"sphere of a tetrahedron",
       kSphere,
       {{1111, 300}, {1112, 1}},
       2,
       4 * 99 * 99,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"sphere of a hexahedron",
       kSphere,
       {{1111, 160}, {1112, 2}},
       2,
       6 * 40 * 40,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"sphere of an octahedron",
       kSphere,
       {{1111, 160}, {1112, 3}},
       2,
       8 * 40 * 40,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"sphere of an icosahedron",
       kSphere,
       {{1111, 160}, {1112, 4}},
       2,
       20 * 32 * 32,
       4 * kPi * 1e4,
       4.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"hemisphere",
       kSphere,
       {{1111, 200}, {1112, 5}},
       2,
       200 * 51,
       3 * kPi * 1e4,
       2.0 / 3 * kPi * 1e6,
       {100, 100, 100},
       1e-3},
      {"cylinder",
       kCylinder,
       {{1135, 3}},
       2,
       36 * 14,
       2 * disc36 * 2500 + ring36 * 50 * 200,
       disc36 * 2500 * 200,
       {50, 100, 50}},
      {"quarter of a cylinder",
       kCylinder,
       with({{1133, 9}}, slice),
       2,
       9 * 10 + 2 * 11,
       disc36 * 1250 + ring36 * 50 * 50 + 2 * 50 * 200,
       disc36 * 2500 * 50,
       {50, 100, 50}},
      {"cylinder sliced by more than a turn",
       kCylinder,
       {{1001, 1}, {1002, 7.0}, {1003, -7.0}},
       2,
       36 * 10,
       2 * disc36 * 2500 + ring36 * 50 * 200,
       disc36 * 2500 * 200,
       {50, 100, 50}},
      {"cylinder with a fillet",
       kCylinder,
       {{1133, 400}, {1132, 1}, {1136, 1}, {1137, 40}, {1138, 10.0}},
       2,
       400 * 83,
       2 * kPi * 1600 + 2 * kPi * 50 * 180 + 2 * (kPi * kPi * 10 * 40 + 2 * kPi * 100),
       kPi * 2500 * 180 + 2 * (kPi * 1600 * 10 + kPi * kPi / 2 * 100 * 40 + 2.0 / 3 * kPi * 1000),
       {50, 100, 50},
       1e-3},
      {"cylinder that is a capsule",
       kCylinder,
       {{1133, 400}, {1132, 1}, {1136, 1}, {1137, 40}, {1138, 1e9}},
       2,
       400 * 81,
       2 * kPi * 50 * 100 + 4 * kPi * 2500,
       kPi * 2500 * 100 + 4.0 / 3 * kPi * 125000,
       {50, 100, 50},
       1e-3},
      {"cone",
       kCone,
       {{1146, 2}},
       2,
       36 * 10,
       disc36 * 1e4 + ring36 * 100 * slant / 2,
       disc36 * 1e4 * 200 / 3,
       {100, 100, 100}},
      {"cone on its tip",
       kCone,
       {{1140, 100.0}, {1141, 0.0}},
       2,
       36 * 9,
       disc36 * 1e4 + ring36 * 100 * slant / 2,
       disc36 * 1e4 * 200 / 3,
       {100, 100, 100}},
      {"truncated cone",
       kCone,
       {{1140, 50.0}},
       2,
       36 * 10,
       disc36 * 12500 + ring36 * 75 * std::hypot(200, 50 * apothem),
       disc36 * 200 / 3 * 17500,
       {100, 100, 100}},
      {"half of a cone",
       kCone,
       {{1001, 1}, {1144, 18}},
       2,
       18 * 9 + 2 * 10,
       (disc36 * 1e4 + ring36 * 100 * slant / 2) / 2 + 200 * 100,
       disc36 * 1e4 * 100 / 3,
       {100, 100, 100}},
      {"torus",
       kTorus,
       {{1152, 400}, {1153, 200}},
       0,
       80000,
       4 * kPi * kPi * 2000,
       2 * kPi * kPi * 100 * 400,
       {120, 20, 120},
       1e-3},
      {"half of a torus",
       kTorus,
       {{1152, 400}, {1153, 200}, {1001, 1}},
       2,
       80400,
       2 * kPi * kPi * 2000 + 2 * kPi * 400,
       kPi * kPi * 100 * 400,
       {120, 20, 120},
       1e-3},
      {"tube",
       kTube,
       {{1185, 2}},
       0,
       36 * 6,
       2 * disc36 * 7500 + ring36 * 150 * 100,
       disc36 * 7500 * 100,
       {100, 50, 100}},
      {"tube with a fillet",
       kTube,
       {{1184, 400}, {1186, 1}, {1187, 40}, {1188, 500.0}},
       0,
       400 * 162,
       2 * kPi * 75 * (2 * kPi * 25 + 100),
       2 * kPi * 75 * (kPi * 625 + 50 * 50),
       {100, 50, 100},
       1e-3},
      {"part of a tube",
       kTube,
       with({{1184, 9}}, slice),
       2,
       9 * 4 + 8,
       (2 * disc36 * 7500 + ring36 * 150 * 100) / 4 + 2 * 5000,
       disc36 * 7500 * 25,
       {100, 50, 100}},
      {"pyramid",
       kPyramid,
       {{1171, 3}},
       2,
       9 * 5,
       40000 + 4 * 100 * std::hypot(100, 200),
       40000 * 200 / 3.0,
       {100, 100, 100}},
      {"capsule",
       kCapsule,
       {{1194, 400}, {1193, 100}},
       2,
       400 * 208,
       2 * kPi * 50 * 100 + 4 * kPi * 2500,
       kPi * 2500 * 100 + 4.0 / 3 * kPi * 125000,
       {50, 100, 50},
       1e-3},
      {"capsule that is a ball",
       kCapsule,
       {{1194, 400}, {1193, 100}, {1191, 10.0}},
       2,
       400 * 200,
       4 * kPi * 25,
       4.0 / 3 * kPi * 125,
       {5, 5, 5},
       1e-3},
      {"oil tank",
       kOilTank,
       {{1215, 400}, {1214, 100}},
       2,
       400 * 208,
       2 * kPi * 50 * 150 + 2 * kPi * (2500 + 625),
       kPi * 2500 * 150 + kPi * 25 / 3 * (3 * 2500 + 625),
       {50, 100, 50},
       1e-3},
      {"flat oil tank",
       kOilTank,
       {{1212, 0.0}},
       2,
       36 * 24,
       2 * disc36 * 2500 + ring36 * 50 * 200,
       disc36 * 2500 * 200,
       {50, 100, 50},
       1e-6},
      {"tetrahedron",
       kPlatonic,
       {{1202, 0}, {1201, 3}},
       2,
       36,
       8 / std::sqrt(3) * 1e4,
       8 / (9 * std::sqrt(3)) * 1e6,
       {100, 100, 100},
       1e-9},
      {"hexahedron",
       kPlatonic,
       {{1202, 1}, {1201, 3}},
       2,
       54,
       8e4,
       8 / (3 * std::sqrt(3)) * 1e6,
       Vector{1, 1, 1} * (100 / std::sqrt(3))},
      {"octahedron",
       kPlatonic,
       {{1202, 2}, {1201, 3}},
       2,
       72,
       4 * std::sqrt(3) * 1e4,
       4.0 / 3 * 1e6,
       {100, 100, 100}},
      {"dodecahedron",
       kPlatonic,
       {{1202, 3}},
       2,
       24,
       3 * std::sqrt(25 + 10 * std::sqrt(5)) * r * r,
       (15 + 7 * std::sqrt(5)) / 4 * r * r * r,
       Vector{1, 1, 1} * (100 * golden / std::sqrt(3))},
      {"dodecahedron in segments",
       kPlatonic,
       {{1202, 3}, {1201, 2}},
       2,
       240,
       3 * std::sqrt(25 + 10 * std::sqrt(5)) * r * r,
       (15 + 7 * std::sqrt(5)) / 4 * r * r * r,
       Vector{1, 1, 1} * (100 * golden / std::sqrt(3))},
      {"icosahedron",
       kPlatonic,
       {{1201, 2}},
       2,
       80,
       5 * std::sqrt(3) * ico * ico * 1e4,
       5.0 / 12 * (3 + std::sqrt(5)) * ico * ico * ico * 1e6,
       Vector{1, 1, 1} * (100 * golden / std::sqrt(golden * golden + 1))},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Mesh mesh = MeshOf(c.type, c.settings);
    const Figures f = FiguresOf(mesh);
    EXPECT_EQ(mesh.polygons.size(), c.polygons);
    EXPECT_EQ(f.euler, c.euler);
    EXPECT_EQ(f.open, 0);
    EXPECT_EQ(f.crooked, 0);
    EXPECT_EQ(f.unused, 0);
    EXPECT_GT(f.leastArea, 0);
    EXPECT_NEAR(f.area / c.area, 1, c.tolerance);
    EXPECT_NEAR(f.volume / c.volume, 1, c.tolerance);
    EXPECT_EQ(mesh.uvw.size(), mesh.polygons.size());
    const bool isAcrossSeam =
        c.type == kSphere && (c.settings.size() > 1 && (c.settings[1].value.value.integer % 3) == 1);
    EXPECT_GE(f.leastUV, isAcrossSeam ? -0.05 : -1e-12);
    EXPECT_LE(f.mostUV, isAcrossSeam ? 1.05 : 1 + 1e-12);
    // Round ones may have no point at the very end of the box.
    for (const auto& [got, wanted] :
         {std::pair{f.high.x, c.half.x}, {f.high.y, c.half.y}, {f.high.z, c.half.z}}) {
      EXPECT_LE(got, wanted * (1 + 1e-9));
    }
    (void)third;
  }
}

}  // namespace
