#include "evaluate/mesh.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "boundary/host.h"
#include "evaluate/primitives.h"
#include "scene/gedata.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/parameters.h"
#include "scene/tree.h"

namespace host {
namespace {

// How a spline is interpolated; spline primitives have the same parameters.
constexpr int32_t kSplineFirstShared = 1002, kSplineLastShared = 1005;

BaseSelect SelectionOf(std::vector<int32_t> numbers) {
  std::sort(numbers.begin(), numbers.end());
  BaseSelect selection;
  for (const int32_t number : numbers) {
    if (!selection.runs.empty() && number <= selection.runs.back().last + 1) {
      selection.runs.back().last = number;
    } else {
      selection.runs.push_back({number, number});
    }
  }
  return selection;
}

struct Destroy {
  void operator()(BaseList2D* element) const { DestroyNow(element); }
};
template <class Element>
using Made = std::unique_ptr<Element, Destroy>;

int32_t CountOf(size_t number) {
  if (number > size_t(std::numeric_limits<int32_t>::max())) throw std::bad_alloc();
  return int32_t(number);
}

}  // namespace

PolygonObject* NewObject(const Mesh& mesh) {
  const int32_t count = CountOf(mesh.polygons.size());
  Made<PolygonObject> made(NewPolygonObject(CountOf(mesh.points.size()), count));
  std::copy(mesh.points.begin(), mesh.points.end(), made->Points().begin());
  std::copy(mesh.polygons.begin(), mesh.polygons.end(), made->Polygons().begin());
  made->ngonEdges = mesh.ngonEdges;
  made->phongBreak = SelectionOf(mesh.breaks);
  if (mesh.phong) object::SetPhong(made.get(), 1, 1, *mesh.phong);
  if (!mesh.uvw.empty())
    std::copy_n(mesh.uvw.begin(), std::min(mesh.uvw.size(), mesh.polygons.size()),
                AddBlock(*made, kDataUVW, count).Items<UVWStruct>().begin());
  return made.release();
}

SplineObject* NewObject(const SplineShape& shape, const BaseContainer& settings) {
  Made<SplineObject> object(NewSplineObject(CountOf(shape.points.size()), shape.type));
  std::copy(shape.points.begin(), shape.points.end(), object->Points().begin());
  if (VariableTag* tangents = FindBlock(*object, kDataTangent))
    std::copy_n(shape.tangents.begin(), std::min(shape.tangents.size(), shape.points.size()),
                tangents->Items<Tangent>().begin());
  // One segment of all points needs no list of them.
  if (shape.segments.size() > 1) {
    object->segments.Resize(CountOf(shape.segments.size()));
    std::copy(shape.segments.begin(), shape.segments.end(), object->Segments().begin());
  }
  Put(object->data, kSplineClosed, Value::Int32(!shape.segments.empty() && shape.segments[0].closed));
  for (int32_t id = kSplineFirstShared; id <= kSplineLastShared; ++id)
    if (const HostGeData* value = container::FindData(&settings, id))
      if (const Parameter* parameter = object->type.Find(id))
        if (const Value fitting = parameter->Fit(*value); fitting.Data().type != HOST_DATA_NONE)
          Put(object->data, id, fitting);
  return object.release();
}

}  // namespace host
