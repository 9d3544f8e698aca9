#include "scene/placement.h"

#include <algorithm>
#include <cmath>

namespace host {
namespace {

// The axes that an order turns about, the last one first, by their numbers.
struct Axes {
  int first, second, third;
  double Sign() const { return (second - first + 3) % 3 == 1 ? 1 : -1; }
};

Axes AxesOf(int32_t order) {
  constexpr Axes kAxes[] = {{1, 0, 2}, {1, 2, 0}, {2, 1, 0}, {2, 0, 1}, {0, 2, 1}, {0, 1, 2}, {1, 0, 2}};
  return kAxes[order < 0 || order > kOrderHPB ? kOrderHPB : order];
}

// Where the angle about an axis stands.
double& AngleAt(Vector& angles, int axis, int32_t order) {
  if (order == kOrderHPB && axis < 2) axis = 1 - axis;
  return axis == 0 ? angles.x : axis == 1 ? angles.y : angles.z;
}

Matrix TurnAbout(int axis, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  if (axis == 0) return {{}, {1, 0, 0}, {0, c, s}, {0, -s, c}};
  if (axis == 1) return {{}, {c, 0, -s}, {0, 1, 0}, {s, 0, c}};
  return {{}, {c, s, 0}, {-s, c, 0}, {0, 0, 1}};
}

double Element(const Matrix& matrix, int row, int column) {
  const Vector& axis = column == 0 ? matrix.v1 : column == 1 ? matrix.v2 : matrix.v3;
  return row == 0 ? axis.x : row == 1 ? axis.y : axis.z;
}

bool IsZero(const Vector& v) { return v.x == 0 && v.y == 0 && v.z == 0; }

// Axes of length 1 at right angles: the first stays, and the second as far as it can. Where one is zero the
// others make it.
Matrix Orthonormal(const Matrix& m) {
  using namespace kelvar;
  Vector x = Normalized(m.v1), y = Normalized(m.v2), z = Normalized(m.v3);
  if (IsZero(x)) x = Normalized(Cross(y, z));
  if (IsZero(x)) {  // two are zero
    if (!IsZero(y))
      x = Normalized(Cross(y, std::abs(y.z) < 0.9 ? Vector{0, 0, 1} : Vector{1, 0, 0}));
    else if (!IsZero(z))
      x = Normalized(Cross(std::abs(z.y) < 0.9 ? Vector{0, 1, 0} : Vector{1, 0, 0}, z));
    else
      x = {1, 0, 0};
  }
  if (IsZero(y)) y = Cross(z, x);
  y = Normalized(y - x * Dot(x, y));
  if (IsZero(y)) y = Normalized(Cross(IsZero(z) ? Vector{0, 0, 1} : z, x));
  if (IsZero(y)) y = Normalized(Cross(Vector{0, 1, 0}, x));
  if (IsZero(y)) y = Normalized(Cross(Vector{1, 0, 0}, x));
  return {{}, x, y, Cross(x, y)};
}

}  // namespace

Matrix RotationMatrix(const Vector& angles, int32_t order) {
  const Axes axes = AxesOf(order);
  Vector at = angles;
  const auto turn = [&](int axis) { return TurnAbout(axis, AngleAt(at, axis, order)); };
  return kelvar::Product(turn(axes.first), kelvar::Product(turn(axes.second), turn(axes.third)));
}

// K. Shoemake, "Euler angle conversion", in Graphics Gems IV (1994).
Vector RotationAngles(const Matrix& matrix, int32_t order) {
  const Matrix m = Orthonormal(matrix);
  const auto [i, j, k] = AxesOf(order);
  const double sign = AxesOf(order).Sign();
  Vector angles{};
  const double across = std::hypot(Element(m, i, i), Element(m, i, j));
  AngleAt(angles, j, order) = std::atan2(sign * Element(m, i, k), across);
  if (across > 1e-9) {
    AngleAt(angles, i, order) = std::atan2(-sign * Element(m, j, k), Element(m, k, k));
    AngleAt(angles, k, order) = std::atan2(-sign * Element(m, i, j), Element(m, i, i));
  } else {  // the outer angles turn about one axis: the last one gets all of it
    AngleAt(angles, i, order) = std::atan2(sign * Element(m, k, j), Element(m, j, j));
  }
  return angles + Vector{};  // no -0
}

Matrix MatrixOf(const Placement& placement, int32_t order) {
  Matrix m = RotationMatrix(placement.rotation, order);
  m.v1 = m.v1 * placement.scale.x;
  m.v2 = m.v2 * placement.scale.y;
  m.v3 = m.v3 * placement.scale.z;
  m.off = placement.position;
  return m;
}

Placement PlacementOf(const Matrix& matrix, int32_t order) {
  using namespace kelvar;
  const bool isMirrored = Dot(matrix.v1, Cross(matrix.v2, matrix.v3)) < 0;
  const double z = Length(matrix.v3);
  Matrix upright = matrix;
  if (isMirrored) upright.v3 = -upright.v3;
  return {
      matrix.off, RotationAngles(upright, order), {Length(matrix.v1), Length(matrix.v2), isMirrored ? -z : z}};
}

ObjectPlace& ObjectPlace::operator=(const ObjectPlace& other) {
  if (this == &other) return *this;
  data_.reset();
  if (!other.data_) return *this;
  const Data& from = *other.data_;
  Data& to = Change();
  to.relative = from.relative;
  to.local = from.local;
  to.frozen = from.frozen ? std::make_unique<Placement>(*from.frozen) : nullptr;
  to.order = from.order;
  return *this;
}

bool ObjectPlace::IsFrozenUpright() const {
  return Frozen().rotation == kNowhere.rotation && Frozen().scale == kNowhere.scale;
}

Placement ObjectPlace::Absolute() const {
  if (!IsFrozenUpright()) return PlacementOf(Local(), Order());
  return {Local().off, Relative().rotation, Relative().scale};
}

Matrix ObjectPlace::RelativeMatrix() const {
  return IsFrozen() ? kelvar::Product(kelvar::Inverse(FrozenMatrix()), Local()) : Local();
}

void ObjectPlace::SetRelativeMatrix(const Matrix& matrix) {
  Data& data = Change();
  data.relative = PlacementOf(matrix, data.order);
  data.local = data.frozen ? kelvar::Product(FrozenMatrix(), matrix) : matrix;
}

void ObjectPlace::SetLocal(const Matrix& local) {
  Data& data = Change();
  data.local = local;
  data.relative = PlacementOf(RelativeMatrix(), data.order);
}

void ObjectPlace::SetPosition(const Vector& position) {
  Data& data = Change();
  data.local.off = position;
  data.relative.position =
      data.frozen ? kelvar::Transformed(kelvar::Inverse(FrozenMatrix()), position) : position;
}

// What stays is kept with its shear, and an angle beyond a whole turn as it is.
void ObjectPlace::SetRelative(const Placement& relative) {
  Data& data = Change();
  const bool isMoved = relative.rotation == data.relative.rotation && relative.scale == data.relative.scale;
  data.relative = relative;
  if (!isMoved) return Compose();
  data.local.off = data.frozen ? kelvar::Transformed(FrozenMatrix(), relative.position) : relative.position;
}

// The relative matrix stays. Without shear it is that of the relative placement, which comes through frozen
// matrices that have no inverse.
void ObjectPlace::SetFrozen(const Placement& frozen) {
  Data& data = Change();
  const Matrix before = data.local;
  Matrix relative = RelativeMatrix();
  relative.off = data.relative.position;
  Compose();
  const bool isFinite =
      std::isfinite(kelvar::Length(before.v1) + kelvar::Length(before.v2) + kelvar::Length(before.v3));
  const bool isSheared =
      isFinite && !(data.local.v1 == before.v1 && data.local.v2 == before.v2 && data.local.v3 == before.v3);
  data.frozen = std::make_unique<Placement>(frozen);
  if (IsFrozenUpright() && frozen.position == Vector{}) data.frozen.reset();
  Compose();
  if (isSheared) data.local = kelvar::Product(FrozenMatrix(), relative);
}

void ObjectPlace::SetAbsolute(const Placement& absolute) {
  if (!IsFrozen()) return SetRelative(absolute);
  SetLocal(MatrixOf(absolute, Order()));
}

void ObjectPlace::SetOrder(int32_t order) {
  order = std::clamp<int32_t>(order, kOrderYXZ, kOrderHPB);
  if (order == Order()) return;
  Data& data = Change();
  const auto turn = [&](Vector& angles) { angles = RotationAngles(RotationMatrix(angles, data.order), order); };
  if (data.frozen) turn(data.frozen->rotation);
  turn(data.relative.rotation);
  data.order = order;
}

std::vector<double> ObjectPlace::Numbers() const {
  std::vector<double> numbers{double(Order())};
  const auto add = [&](std::initializer_list<Vector> vectors) {
    for (const Vector& v : vectors) numbers.insert(numbers.end(), {v.x, v.y, v.z});
  };
  const Matrix& local = Local();
  add({local.off, local.v1, local.v2, local.v3});
  add({Relative().position, Relative().rotation, Relative().scale});
  if (IsFrozen()) add({Frozen().position, Frozen().rotation, Frozen().scale});
  return numbers;
}

bool ObjectPlace::SetNumbers(const std::vector<double>& numbers) {
  constexpr size_t kWithout = 1 + 4 * 3 + 3 * 3, kWithFrozen = kWithout + 3 * 3;
  if (numbers.size() != kWithout && numbers.size() != kWithFrozen) return false;
  const double order = numbers[0];
  if (!(order >= int32_t(kOrderYXZ) && order <= int32_t(kOrderHPB))) return false;
  size_t at = 1;
  const auto take = [&](std::initializer_list<Vector*> vectors) {
    for (Vector* v : vectors) {
      *v = {numbers[at], numbers[at + 1], numbers[at + 2]};
      at += 3;
    }
  };
  Data& data = Change();
  data.order = int32_t(order);
  take({&data.local.off, &data.local.v1, &data.local.v2, &data.local.v3});
  take({&data.relative.position, &data.relative.rotation, &data.relative.scale});
  data.frozen = at < numbers.size() ? std::make_unique<Placement>() : nullptr;
  if (data.frozen) take({&data.frozen->position, &data.frozen->rotation, &data.frozen->scale});
  return true;
}

void ObjectPlace::Compose() {
  Data& data = Change();
  data.local = MatrixOf(data.relative, data.order);
  if (data.frozen) data.local = kelvar::Product(FrozenMatrix(), data.local);
}

}  // namespace host
