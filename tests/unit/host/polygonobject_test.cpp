#include <cmath>
#include <random>

#include "scene/geometry.h"
#include "scene_support.h"

namespace {

using namespace host::polygonobject;
namespace select = host::select;

constexpr int32_t kPhong = 5612;
constexpr double kPi = 3.14159265358979;

class Polygons : public Scene {
 protected:
  PolygonObject* Make(const std::vector<Vector>& points, const std::vector<CPolygon>& polygons) {
    PolygonObject* made = Alloc(int32_t(points.size()), int32_t(polygons.size()));
    kept_.emplace_back(made);
    std::copy(points.begin(), points.end(), made->Points().begin());
    std::copy(polygons.begin(), polygons.end(), made->Polygons().begin());
    return made;
  }

  // The bits of a point's number are its place.
  PolygonObject* MakeCube() {
    std::vector<Vector> points;
    for (int i = 0; i < 8; ++i)
      points.push_back({double(i & 1) - 0.5, double(i >> 1 & 1) - 0.5, (i >> 2) - 0.5});
    return Make(points, {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}});
  }

  // A grid that closes in both directions.
  PolygonObject* MakeTorus(int32_t n, int32_t m) {
    std::vector<Vector> points;
    std::vector<CPolygon> polygons;
    for (int32_t i = 0; i < n; ++i)
      for (int32_t k = 0; k < m; ++k) {
        const double u = 2 * kPi * i / n, v = 2 * kPi * k / m, r = 3 + std::cos(v);
        points.push_back({r * std::cos(u), std::sin(v), r * std::sin(u)});
        const int32_t i1 = (i + 1) % n, k1 = (k + 1) % m;
        polygons.push_back({i * m + k, i * m + k1, i1 * m + k1, i1 * m + k});
      }
    return Make(points, polygons);
  }

  static void SetPhong(PolygonObject* object, bool hasLimit, double angle, bool usesBreaks = true) {
    BaseTag* tag = host::object::GetTag(object, kPhong, 0);
    if (!tag) tag = host::object::MakeTag(object, kPhong, nullptr);
    ASSERT_NE(tag, nullptr);
    host::Put(tag->data, 1000, host::Value::Int32(hasLimit));
    host::Put(tag->data, 1001, host::Value::Float(angle));
    host::Put(tag->data, 1002, host::Value::Int32(usesBreaks));
  }

  static std::vector<Vector> Normals(const PolygonObject* object) {
    std::vector<Vector> normals;
    Vector32* made = CreatePhongNormals(object);
    if (!made) return {};
    for (int32_t i = 0; i < 4 * GetPolygonCount(object); ++i)
      normals.push_back({double(made[i].x), double(made[i].y), double(made[i].z)});
    host::general::Free(made);
    return normals;
  }

  std::vector<Element> kept_;
};

std::vector<int32_t> Numbers(const BaseSelect& selection) {
  std::vector<int32_t> numbers;
  host::ForEach(selection, std::numeric_limits<int32_t>::max(), [&](int32_t i) { numbers.push_back(i); });
  return numbers;
}

std::vector<int32_t> Numbers(std::unique_ptr<BaseSelect> selection) {
  return selection ? Numbers(*selection) : std::vector<int32_t>{-1};
}

std::vector<int32_t> Take(int32_t* map, int32_t count) {
  std::vector<int32_t> words(map, map + count);
  host::general::Free(map);
  return words;
}

Neighbor NeighborOf(PolygonObject* object) {
  Neighbor made;
  EXPECT_TRUE(host::neighbor::Init(&made, object, nullptr));
  return made;
}

void ExpectNear(const Vector& a, const Vector& b) { EXPECT_LT(kelvar::Distance(a, b), 1e-6); }

// Of a closed surface each edge has two polygons, and each of them knows the other.
TEST_F(Polygons, HaveNeighbors) {
  const struct {
    PolygonObject* object;
    int32_t edges, polygonsAtPoint;
  } kCases[] = {{MakeCube(), 12, 3}, {MakeTorus(7, 5), 70, 4}};
  for (const auto& one : kCases) {
    const Neighbor neighbor = NeighborOf(one.object);
    EXPECT_EQ(host::neighbor::GetEdgeCount(&neighbor), one.edges);
    for (int32_t p = 0; p < int32_t(one.object->Points().size()); ++p) {
      const int32_t* polygons = nullptr;
      EXPECT_EQ(host::neighbor::GetPointPolys(&neighbor, p, &polygons), one.polygonsAtPoint);
      for (int32_t i = 0; i < one.polygonsAtPoint; ++i) {
        const auto corners = host::Corners(one.object->Polygons()[size_t(polygons[i])]);
        EXPECT_NE(std::find(corners.begin(), corners.end(), p), corners.end());
      }
    }
    std::vector<int> marks(size_t(one.edges));
    for (int32_t i = 0; i < GetPolygonCount(one.object); ++i) {
      HostPolyInfo info;
      ASSERT_TRUE(host::neighbor::GetPolyInfo(&neighbor, i, &info));
      const auto corners = host::Corners(one.object->Polygons()[size_t(i)]);
      for (size_t k = 0; k < 4; ++k) {
        const int32_t a = corners[k], b = corners[(k + 1) % 4];
        int32_t first = -2, second = -2;
        EXPECT_TRUE(host::neighbor::GetEdgePolys(&neighbor, b, a, &first, &second));
        EXPECT_EQ(host::neighbor::GetNeighbor(&neighbor, a, b, i), info.face[k]);
        EXPECT_EQ(host::neighbor::GetNeighbor(&neighbor, a, b, info.face[k]), i);
        EXPECT_EQ(first, info.mark[k] ? i : info.face[k]);
        EXPECT_EQ(second, info.mark[k] ? info.face[k] : i);
        marks[size_t(info.edge[k])] += info.mark[k];
      }
    }
    EXPECT_EQ(marks, std::vector<int>(size_t(one.edges), 1));
  }
}

TEST_F(Polygons, HaveNeighborsAtOddEdges) {
  // Three at the edge from 0 to 1, of which one is a triangle; and one that is alone.
  PolygonObject* object =
      Make(std::vector<Vector>(12), {{0, 1, 2, 2}, {1, 0, 3, 4}, {0, 1, 5, 6}, {7, 8, 9, 10}});
  Neighbor neighbor = NeighborOf(object);
  HostPolyInfo info[4];
  for (int32_t i = 0; i < 4; ++i) ASSERT_TRUE(host::neighbor::GetPolyInfo(&neighbor, i, &info[i]));
  EXPECT_EQ(info[0].face[0], 1);
  EXPECT_EQ(info[1].face[0], 0);
  EXPECT_EQ(info[2].face[0], 0);
  EXPECT_EQ(info[0].edge[2], -1);  // of the triangle
  EXPECT_EQ(info[2].mark[0], 0);
  EXPECT_EQ(info[3].face[1], -1);
  EXPECT_FALSE(host::neighbor::GetPolyInfo(&neighbor, 4, info));
  EXPECT_EQ(host::neighbor::GetNeighbor(&neighbor, 0, 1, 3), -1);
  EXPECT_EQ(host::neighbor::GetNeighbor(&neighbor, 0, 5, 2), -1);

  const BaseSelect last({{2, 3}});
  ASSERT_TRUE(host::neighbor::Init(&neighbor, object, &last));
  EXPECT_EQ(host::neighbor::GetEdgeCount(&neighbor), 8);
  ASSERT_TRUE(host::neighbor::GetPolyInfo(&neighbor, 2, info));
  EXPECT_EQ(info[0].face[0], -1);
  host::neighbor::Flush(&neighbor);
  EXPECT_EQ(host::neighbor::GetEdgeCount(&neighbor), 0);
}

TEST_F(Polygons, AreShadedByAngleAndBreaks) {
  PolygonObject* cube = MakeCube();
  EXPECT_TRUE(Normals(cube).empty());
  const auto facing = [](size_t polygon) {
    const double sign = polygon % 2 ? 1 : -1;
    return polygon < 2 ? Vector{0, 0, sign} : polygon < 4 ? Vector{0, sign, 0} : Vector{sign, 0, 0};
  };
  const auto point = [&](size_t corner) {
    return cube->Points()[size_t(host::Corners(cube->Polygons()[corner / 4])[corner % 4])];
  };
  const auto expect = [&](auto wanted) {
    const auto normals = Normals(cube);
    ASSERT_EQ(normals.size(), 24u);
    for (size_t i = 0; i < 24; ++i) ExpectNear(normals[i], kelvar::Normalized(wanted(i)));
  };
  SetPhong(cube, true, kPi / 2 - 0.01);
  expect([&](size_t i) { return facing(i / 4); });
  for (const bool hasLimit : {true, false}) {
    SetPhong(cube, hasLimit, kPi / 2);
    expect(point);
  }
  ASSERT_TRUE(select::SelectAll(GetPhongBreak(cube), 0, 3));  // around the first polygon, told by itself only
  expect([&](size_t i) {
    return i < 4 ? facing(0) : point(i).z < 0 ? point(i) + Vector{0, 0, 0.5} : point(i);
  });
  SetPhong(cube, false, 0, false);
  expect(point);
}

// A break that ends at a point does not part what lies around the point.
TEST_F(Polygons, AreSmoothAroundTheEndOfABreak) {
  PolygonObject* torus = MakeTorus(8, 8);
  SetPhong(torus, false, 0);
  const auto smooth = Normals(torus);
  select::Select(GetPhongBreak(torus), 4 * 9 + 1);
  const auto same = Normals(torus);
  for (size_t i = 0; i < smooth.size(); ++i) ExpectNear(smooth[i], same[i]);
  select::Select(GetPhongBreak(torus), 4 * 9 + 2);  // two edges at a point part it
  EXPECT_GT(kelvar::Distance(Normals(torus)[4 * 9 + 2], smooth[4 * 9 + 2]), 0.1);
}

TEST_F(Polygons, MayHaveNormalsOfTheirOwn) {
  PolygonObject* object = Make({{}, {1, 0, 0}, {1, 1, 0}}, {{0, 1, 2, 2}, {0, 0, 0, 0}});
  auto& tag = host::AddBlock(*object, host::kDataNormal, 2);
  tag.Items<int16_t>()[3] = -32000;
  ExpectNear(Normals(object)[1], {-1, 0, 0});
  ExpectNear(Normals(object)[0], {0, 0, 1});  // the polygon's, in place of none
  EXPECT_EQ(Normals(object)[4], Vector{});
}

TEST_F(Polygons, TellWhereTheShadingBreaks) {
  PolygonObject* open = MakeCube();
  ASSERT_TRUE(ResizePolygons(open, 8, 5));
  const auto breaks = [&](bool borders, bool own, double angle) {
    return Numbers(std::unique_ptr<BaseSelect>(GetShadingBreak(open, borders, own, false, angle, 0)));
  };
  EXPECT_EQ(breaks(true, false, kPi), (std::vector<int32_t>{2, 5, 9, 14}));
  EXPECT_EQ(breaks(false, false, 1).size(), 16u);
  select::Select(GetPhongBreak(open), 0);
  EXPECT_EQ(breaks(false, true, kPi), (std::vector<int32_t>{0, 19}));  // in both polygons
}

TEST_F(Polygons, JoinToNgons) {
  // A strip of five: the first three are one n-gon, told in one polygon or in both.
  std::vector<Vector> points(12);
  std::vector<CPolygon> strip;
  for (int32_t i = 0; i < 5; ++i) strip.push_back({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
  PolygonObject* object = Make(points, strip);
  int32_t ngons = 0;
  EXPECT_EQ(Take(GetPolygonTranslationMap(object, &ngons), 5), (std::vector<int32_t>{0, 1, 2, 3, 4}));
  EXPECT_EQ(GetNgonCount(object), 0);

  const uint8_t edges[] = {2, 8 | 2, 0, 1, 0};
  EXPECT_FALSE(SetNgonEdges(object, edges, 4));
  ASSERT_TRUE(SetNgonEdges(object, edges, 5));
  uint8_t* compact = GetNgonEdgesCompact(object);
  EXPECT_TRUE(std::equal(edges, edges + 5, compact));
  host::general::Free(compact);
  EXPECT_EQ(GetNgonCount(object), 1);
  const auto map = Take(GetPolygonTranslationMap(object, &ngons), 5);
  EXPECT_EQ(map, (std::vector<int32_t>{0, 0, 0, 1, 2}));
  EXPECT_EQ(ngons, 3);
  int32_t words = 0;
  int32_t* back = GetNGonTranslationMap(object, ngons, map.data(), &words);
  EXPECT_EQ(Take(back, words), (std::vector<int32_t>{3, 0, 1, 2, 1, 3, 1, 4}));
  EXPECT_EQ(GetNGonTranslationMap(object, 6, map.data(), &words), nullptr);
  const int32_t wild[] = {-1, 5, INT32_MAX, 0, INT32_MIN};
  back = GetNGonTranslationMap(object, 1, wild, &words);
  EXPECT_EQ(Take(back, words), (std::vector<int32_t>{1, 3}));

  BaseSelect selected;
  select::SelectAll(GetPolygonS(object), 1, 3);
  EXPECT_TRUE(GetSelectedNgons(object, &selected));
  EXPECT_EQ(Numbers(selected), std::vector<int32_t>{1});
  select::SelectAll(GetPolygonH(object), 0, 2);
  EXPECT_TRUE(GetHiddenNgons(object, &selected));
  EXPECT_EQ(Numbers(selected), std::vector<int32_t>{0});

  // Inner edges are in no selection.
  select::SelectAll(GetEdgeS(object), 0, INT32_MAX);
  EXPECT_TRUE(ValidateEdgeSelection(object, nullptr));
  const auto valid = Numbers(*GetEdgeS(object));
  EXPECT_EQ(valid.size(), 16u);
  for (int32_t inner : {1, 4 + 3, 4 + 1, 8 + 3}) EXPECT_FALSE(select::IsSelected(GetEdgeS(object), inner));

  EXPECT_TRUE(ResizeNgons(object, 12, 2, 1, 0));
  EXPECT_EQ(GetNgonCount(object), 1);
  EXPECT_TRUE(ResizePolygons(object, 12, 2));
  EXPECT_EQ(GetNgonCount(object), 0);
}

TEST_F(Polygons, HaveEdgesInTwoNumberings) {
  PolygonObject* cube = MakeCube();
  Neighbor neighbor = NeighborOf(cube);
  select::Select(GetEdgeS(cube), 4 * 2 + 1);  // from 1 to 5, also the last edge of polygon 5
  const auto edges = Numbers(std::unique_ptr<BaseSelect>(GetSelectedEdges(cube, &neighbor, 0)));
  EXPECT_EQ(edges, std::vector<int32_t>{neighbor.FindEdge(5, 1)});
  BaseSelect sides;
  EXPECT_TRUE(GetEdgeSelection(cube, &sides, 0));
  EXPECT_EQ(Numbers(sides), (std::vector<int32_t>{9, 23}));
  const BaseSelect wanted({{edges[0], edges[0]}});
  EXPECT_TRUE(SetSelectedEdges(cube, &neighbor, &wanted, HOST_EDGES_PHONG));
  EXPECT_EQ(Numbers(*GetPhongBreak(cube)), (std::vector<int32_t>{9, 23}));
  EXPECT_EQ(GetSelectedEdges(cube, &neighbor, 3), nullptr);
  ASSERT_TRUE(ResizePolygons(cube, 8, 5));
  EXPECT_EQ(GetSelectedEdges(cube, &neighbor, 0), nullptr);  // that was another object
  EXPECT_FALSE(SetSelectedEdges(cube, &neighbor, &wanted, 0));
}

TEST_F(Polygons, ResizeAllThatBelongsToThem) {
  PolygonObject* object = MakeCube();
  auto& map = host::AddBlock(*object, host::kDataVertexMap, 8);
  auto& uvw = host::AddBlock(*object, host::kDataUVW, 6);
  auto& colors = host::AddBlock(*object, host::kDataVertexColor, 6);
  auto* tag = static_cast<SelectionTag*>(host::object::MakeTag(object, 5674, nullptr));
  ASSERT_NE(tag, nullptr);
  for (BaseSelect* one :
       {host::pointobject::GetPointS(object), GetPolygonS(object), GetEdgeS(object), &tag->selection})
    select::SelectAll(one, 3, 100);
  map.Items<float>()[2] = 0.5;
  const auto show = [&] {
    std::string shown;
    for (int32_t number :
         {object->points.Count(), map.Count(), object->polygons.Count(), uvw.Count(), colors.Count(),
          select::GetLastElement(&object->selected), select::GetLastElement(&tag->selection),
          select::GetLastElement(&object->selectedPolygons), select::GetLastElement(&object->selectedEdges)})
      shown += std::to_string(number) + " ";
    return shown;
  };
  EXPECT_TRUE(ResizeObject(object, 5));
  EXPECT_EQ(show(), "5 5 6 6 6 4 4 100 100 ");
  EXPECT_TRUE(ResizePolygons(object, 7, 4));
  EXPECT_EQ(show(), "7 7 4 4 4 4 4 3 15 ");
  EXPECT_EQ(map.Items<float>()[2], 0.5);
  host::Put(colors.data, 1000, host::Value::Int32(1));  // colours of points
  EXPECT_TRUE(ResizePolygons(object, 9, 0));
  EXPECT_EQ(show(), "9 9 0 0 9 4 4 -1 -1 ");
  for (const auto& [points, polygons] : {std::pair{-1, 0}, {0, -1}, {1, INT32_MAX}})
    EXPECT_FALSE(ResizePolygons(object, points, polygons));
  EXPECT_EQ(show(), "9 9 0 0 9 4 4 -1 -1 ");
}

// Corners may be anything, and points no numbers.
TEST_F(Polygons, MayBeMalformed) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    std::vector<CPolygon> polygons(size_t(random() % 12));
    const int32_t wild[] = {-1, 6, INT32_MAX, INT32_MIN};
    const auto corner = [&] { return random() % 9 ? int32_t(random() % 6) : wild[random() % 4]; };
    for (CPolygon& one : polygons) one = {corner(), corner(), corner(), corner()};
    std::vector<Vector> points(6);
    for (Vector& one : points)
      one = {random() % 5 ? double(random() % 3) : NAN, double(random() % 3), HUGE_VAL};
    PolygonObject* object = Make(points, polygons);
    SetPhong(object, random() % 2, 1);
    select::SelectAll(GetPhongBreak(object), 0, 20);
    object->ngonEdges.assign(random() % 14, uint8_t(random()));
    const auto normals = Normals(object);
    EXPECT_EQ(normals.size(), 4 * polygons.size());
    for (const Vector& one : normals) EXPECT_TRUE(std::isfinite(kelvar::Length(one)));
    int32_t ngons = 0;
    for (int32_t ngon : Take(GetPolygonTranslationMap(object, &ngons), int32_t(polygons.size())))
      EXPECT_TRUE(ngon >= 0 && ngon < ngons);
    EXPECT_TRUE(ValidateEdgeSelection(object, GetPhongBreak(object)));
    Neighbor neighbor = NeighborOf(object);
    for (size_t i = 0; i < polygons.size(); ++i)
      if (!host::IsValid(polygons[i], 6)) {
        HostPolyInfo info;
        EXPECT_TRUE(host::neighbor::GetPolyInfo(&neighbor, int32_t(i), &info));
        EXPECT_EQ(std::count(info.edge, info.edge + 4, -1), 4);
      }
  }
}

}  // namespace
