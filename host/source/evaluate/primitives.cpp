#include "evaluate/primitives.h"

#include <algorithm>
#include <cmath>

#include "boundary/host.h"
#include "evaluate/primitives_shapes.h"
#include "kelvar/matrix.h"

namespace host {
namespace {

constexpr struct {
  int32_t type;
  Mesh (*make)(const Settings&);
} kPrimitives[] = {
    {5159, MakeCube},  {5160, MakeSphere},   {5161, MakePlatonic}, {5162, MakeCone},
    {5163, MakeTorus}, {5164, MakeDisc},     {5165, MakeTube},     {5167, MakePyramid},
    {5168, MakePlane}, {5170, MakeCylinder}, {5171, MakeCapsule},  {5172, MakeOilTank},
};

constexpr int32_t kAxis = 1000;  // PRIM_AXIS

// From a shape that looks up to one that looks along that axis; a picture on it stands upright for who looks at
// it.
Matrix OrientationOf(int32_t axis) {
  switch (axis) {
    case 0:
      return {{}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
    case 1:
      return {{}, {0, 0, -1}, {-1, 0, 0}, {0, 1, 0}};
    case 3:
      return {{}, {1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    case 4:
      return {{}, {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}};
    case 5:
      return {{}, {1, 0, 0}, {0, 0, -1}, {0, 1, 0}};
    default:
      return kIdentityMatrix;
  }
}

// Beyond it areas and lengths are no numbers any more.
double Finite(double number) {
  constexpr double kMost = 1e50;
  return std::isnan(number) ? 0 : std::clamp(number, -kMost, kMost);
}

}  // namespace

HostGeData Settings::Value(int32_t id) const {
  const Parameter* parameter = object_.type.Find(id);
  if (!parameter) return {};
  // Those of primitives are numbers and vectors: they lie in the value.
  if (const HostGeData* data = container::FindData(&object_.data, id))
    if (const host::Value fitting = parameter->Fit(*data); fitting.Data().type != HOST_DATA_NONE)
      return fitting.Data();
  return parameter->standard->Data();
}

int64_t Settings::Integer(int32_t id) const {
  const HostGeData value = Value(id);
  return value.type == HOST_DATA_INT32 ? value.value.integer : 0;
}

int32_t Settings::Count(int32_t id, int32_t least) const { return std::max(int32_t(Integer(id)), least); }

double Settings::Number(int32_t id) const {
  const HostGeData value = Value(id);
  return value.type == HOST_DATA_FLOAT ? Finite(value.value.real) : 0;
}

double Settings::Length(int32_t id) const { return std::max(Number(id), 0.0); }

Vector Settings::Size(int32_t id) const {
  const HostGeData value = Value(id);
  if (value.type != HOST_DATA_VECTOR) return {};
  const auto size = [](double number) { return std::max(Finite(number), 0.0); };
  const Vector& vector = value.value.vector;
  return {size(vector.x), size(vector.y), size(vector.z)};
}

bool IsPrimitive(int32_t type) {
  return std::any_of(std::begin(kPrimitives), std::end(kPrimitives),
                     [type](const auto& known) { return known.type == type; });
}

std::optional<Mesh> MakePrimitive(const BaseObject& object) {
  for (const auto& known : kPrimitives) {
    if (known.type != object.type.id) continue;
    const Settings settings(object);
    Mesh mesh = known.make(settings);
    const int32_t axis = settings.Has(kAxis) ? settings.Choice(kAxis) : 2;
    if (axis != 2) {
      const Matrix matrix = OrientationOf(axis);
      for (Vector& point : mesh.points) point = kelvar::Rotated(matrix, point);
    }
    return mesh;
  }
  return std::nullopt;
}

}  // namespace host
