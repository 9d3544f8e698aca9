// Where objects stand: angles, matrices, and the two parts of a place.

#include "scene/placement.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

#include "kelvar/quaternion.h"

namespace {

using host::MatrixOf;
using host::ObjectPlace;
using host::Placement;
using host::RotationAngles;
using host::RotationMatrix;

constexpr double kPi = std::numbers::pi;

void ExpectNear(const Matrix& a, const Matrix& b, double tolerance, const char* what = "") {
  for (const auto part : {&Matrix::off, &Matrix::v1, &Matrix::v2, &Matrix::v3}) {
    EXPECT_NEAR((a.*part).x, (b.*part).x, tolerance) << what;
    EXPECT_NEAR((a.*part).y, (b.*part).y, tolerance) << what;
    EXPECT_NEAR((a.*part).z, (b.*part).z, tolerance) << what;
  }
}

Placement Any(std::mt19937& random) {
  std::uniform_real_distribution<double> angle(-kPi, kPi), scale(0.1, 3), place(-100, 100);
  return {{place(random), place(random), place(random)},
          {angle(random), angle(random), angle(random)},
          {scale(random), scale(random), scale(random)}};
}

TEST(Placement, AnglesOfEveryOrderGiveTheirMatrix) {
  std::mt19937 random(1);
  for (int32_t order = host::kOrderYXZ; order <= host::kOrderHPB; ++order)
    for (int i = 0; i < 200; ++i) {
      Vector angles = Any(random).rotation;
      if (i % 4 == 0) angles = {std::round(angles.x) * kPi / 2, std::round(angles.y) * kPi / 2, angles.z};
      const Matrix m = RotationMatrix(angles, order);
      ExpectNear(kelvar::Inverse(m),
                 {{}, {m.v1.x, m.v2.x, m.v3.x}, {m.v1.y, m.v2.y, m.v3.y}, {m.v1.z, m.v2.z, m.v3.z}}, 1e-12);
      ExpectNear(RotationMatrix(RotationAngles(m, order), order), m, 1e-8);
      if (order == host::kOrderHPB) ExpectNear(m, kelvar::RotationOf(kelvar::QuaternionOfHpb(angles)), 1e-12);
    }
}

TEST(Placement, MatricesThatAreNoRotationsHavePlacesToo) {
  std::mt19937 random(2);
  for (int i = 0; i < 100; ++i) {
    Placement placement = Any(random);
    if (i % 2) placement.scale.z = -placement.scale.z;
    const Matrix m = MatrixOf(placement, host::kOrderHPB);
    ExpectNear(MatrixOf(host::PlacementOf(m, host::kOrderHPB), host::kOrderHPB), m, 1e-9);
  }
  // Axes without a length: the others still say how it is turned.
  const Vector x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1}, none{};
  for (const Matrix& m : {Matrix{none, none, y, z}, Matrix{none, x, none, z}, Matrix{none, x, y, none},
                          Matrix{none, none, none, z}, Matrix{none, none, y, none},
                          Matrix{none, none, none, none}, Matrix{none, x, x, x}, Matrix{none, z, z, none}}) {
    const Placement placement = host::PlacementOf(m, host::kOrderXYZ);
    EXPECT_FALSE(std::isnan(placement.rotation.x + placement.rotation.y + placement.rotation.z));
    EXPECT_DOUBLE_EQ(placement.scale.x, kelvar::Length(m.v1));
  }
}

TEST(Placement, TheLocalMatrixIsTheFrozenTimesTheRelativeOne) {
  std::mt19937 random(3);
  for (int i = 0; i < 100; ++i) {
    ObjectPlace place;
    place.SetOrder(i % 7);
    const Placement relative = Any(random), frozen = Any(random), absolute = Any(random);
    const auto expectProduct = [&](const char* what) {
      ExpectNear(place.Local(), kelvar::Product(place.FrozenMatrix(), place.RelativeMatrix()), 1e-6, what);
      ExpectNear(place.RelativeMatrix(), MatrixOf(place.Relative(), place.Order()), 1e-6, what);
    };
    place.SetRelative(relative);
    expectProduct("relative");
    place.SetFrozen({frozen.position, frozen.rotation, {2, 2, 2}});
    EXPECT_EQ(place.Relative().rotation, relative.rotation);
    expectProduct("frozen");
    place.SetAbsolute({absolute.position, absolute.rotation, {3, 3, 3}});
    expectProduct("absolute");
    ExpectNear(place.Local(), MatrixOf({absolute.position, absolute.rotation, {3, 3, 3}}, place.Order()), 1e-9);
    place.SetPosition({1, 2, 3});
    expectProduct("position");
    const Matrix before = place.Local();
    place.SetOrder((i + 3) % 7);
    ExpectNear(place.Local(), before, 0);
    expectProduct("order");
    ObjectPlace copy = place;
    copy.SetPosition({});
    EXPECT_EQ(place.Local(), before);
  }
}

TEST(Placement, ShearAndWholeTurnsStayUntilTheyAreChanged) {
  ObjectPlace place;
  const Matrix sheared = {{1, 2, 3}, {1, 0.5, 0}, {0, 2, 0}, {0.25, 0, 1}};
  place.SetLocal(sheared);
  EXPECT_EQ(place.Local(), sheared);
  place.SetPosition({4, 5, 6});
  Placement moved = place.Relative();
  moved.position = {7, 8, 9};
  place.SetRelative(moved);
  EXPECT_EQ(place.Local(), (Matrix{{7, 8, 9}, sheared.v1, sheared.v2, sheared.v3}));
  moved.rotation = {7, 0, 0};  // more than a turn
  place.SetRelative(moved);
  EXPECT_EQ(place.Absolute().rotation, (Vector{7, 0, 0}));
  EXPECT_NEAR(kelvar::Dot(place.Local().v1, place.Local().v2), 0, 1e-12);
}

TEST(Placement, TheRelativePartStaysWhereTheFrozenOneIsSet) {
  const Matrix sheared = {{1, 2, 3}, {1, 0.5, 0}, {0, 2, 0}, {0.25, 0, 1}};
  ObjectPlace place;
  place.SetLocal(sheared);
  const Placement turned = {{1, 0, 0}, {1, 2, 3}, {2, 2, 2}};
  place.SetFrozen(turned);
  ExpectNear(place.Local(), kelvar::Product(MatrixOf(turned, host::kOrderHPB), sheared), 1e-12);
  place.SetFrozen({{5, 0, 0}});
  ExpectNear(place.Local(), {{6, 2, 3}, sheared.v1, sheared.v2, sheared.v3}, 1e-12);
  // What is frozen in place alone leaves angles beyond a turn, and an identity nothing.
  place.SetFrozen({});
  place.SetRelative({{}, {7, 0, 0}, {-1, -1, 1}});
  place.SetFrozen({{1, 0, 0}});
  EXPECT_EQ(place.Absolute().rotation, (Vector{7, 0, 0}));
  EXPECT_EQ(place.Absolute().scale, (Vector{-1, -1, 1}));
  place.SetFrozen({});
  EXPECT_EQ(place.Local().off, Vector{});
  // Frozen parts that nothing comes back from.
  place.SetRelative({{1, 2, 3}, {0.1, 0.2, 0.3}, {1, 2, 3}});
  const Matrix before = place.RelativeMatrix();
  for (const Placement& lost :
       {Placement{{}, {}, {}}, {{NAN, 0, 0}}, {{}, {NAN, 0, 0}}, {{}, {}, {HUGE_VAL, 1, 1}}}) {
    place.SetFrozen(lost);
    place.SetFrozen({});
    ExpectNear(place.Local(), before, 1e-12);
  }
}

}  // namespace
