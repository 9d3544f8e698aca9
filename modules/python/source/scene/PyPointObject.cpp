// qlx.PointObject: an object with points.

#include <algorithm>

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

PyObject* GetPoint(PointObject* self, int32_t id) {
  const auto* points = static_cast<const Vector*>(self->GetTagDataR(kDataPoint));
  return points ? NewVector(points[id]) : nullptr;  // alone: a host that shows none of its points
}

PyObject* SetPoint(PointObject* self, int32_t id, const Vector& pos) {
  auto* points = static_cast<Vector*>(self->GetTagDataW(kDataPoint));
  if (!points) return nullptr;
  points[id] = pos;
  return NewNone();
}

PyObject* GetAllPoints(AtomWrapper* self) { return ElementsToList<Vector>(self, kDataPoint); }

bool CheckVector(PyObject* object) {
  if (IsVector(object)) return true;
  RaiseExpectedTypeFor("PointObject.SetAllPoints", "qlx.Vector", object);
  return false;
}

// Where the points of an object go that has `count` of them; null with an exception, or alone.
Vector* PointsToWrite(PointObject* host, Py_ssize_t count) {
  if (count == host->GetPointCount()) return static_cast<Vector*>(host->GetTagDataW(kDataPoint));
  RaiseOutOfRange("Point count");
  return nullptr;
}

// Lists and tuples themselves run no code of scripts while they are read: the vectors go straight to the host.
PyObject* SetFromItems(PointObject* host, PyObject* const* items, Py_ssize_t count) {
  if (count < 1) return RaiseInvalidLength();
  for (Py_ssize_t i = 0; i < count; ++i)
    if (!CheckVector(items[i])) return nullptr;
  Vector* points = PointsToWrite(host, count);
  if (!points) return nullptr;
  for (Py_ssize_t i = 0; i < count; ++i) points[i] = ValueOf<Vector>(items[i]);
  return NewNone();
}

// Other sequences are read into memory of the call's own, no further than to one item more than they promised.
PyObject* SetFromSequence(AtomWrapper* self, PyObject* sequence) {
  const Py_ssize_t size = PyObject_Size(sequence);
  if (size < 1) return RaiseInvalidLength();
  const Reference iterator(PyObject_GetIter(sequence));
  if (!iterator) return nullptr;
  std::vector<Vector> values;
  while (Py_ssize_t(values.size()) <= size) {
    const Reference item(PyIter_Next(iterator.get()));
    if (!item) break;
    if (!CheckVector(item.get())) return nullptr;
    values.push_back(ValueOf<Vector>(item.get()));
  }
  PointObject* host;
  if (PyErr_Occurred() || !Present<PointObject>::Get(&self->ob_base, host)) return nullptr;
  Vector* points = PointsToWrite(host, Py_ssize_t(values.size()));
  if (!points) return nullptr;
  std::copy(values.begin(), values.end(), points);
  return NewNone();
}

PyObject* SetAllPoints(AtomWrapper* self, PyObject* list) {
  PointObject* host;
  if (!Present<PointObject>::Get(&self->ob_base, host)) return nullptr;
  if (PyList_CheckExact(list) || PyTuple_CheckExact(list))
    return SetFromItems(host, PySequence_Fast_ITEMS(list), PySequence_Fast_GET_SIZE(list));
  return SetFromSequence(self, list);
}

PyObject* CalcVertexMap(PointObject* self, BaseObject* modifier) {
  const int32_t count = self->GetPointCount();
  const HostArray<float> weights(self->CalcVertexMap(modifier));
  return weights ? Float32ArrayToList(weights.get(), count) : NewNone();
}

constexpr const char* kVertexMapDoc =
    "CalcVertexMap(modifier) -> list of float or None\n\n"
    "How much a modifier acts on each point, 0 to 1, by the tags that restrict it. None when nothing does.";

PyMethodDef g_methods[] = {
    Method<Row<PartOfSelf>, &PointObject::GetPointS>(
        "GetPointS", "GetPointS() -> qlx.BaseSelect\n\nThe selected points: the object's own selection."),
    Method<Row<PartOfSelf>, &PointObject::GetPointH>(
        "GetPointH", "GetPointH() -> qlx.BaseSelect\n\nThe hidden points: the object's own selection."),
    Method<Row<InRange<"id", &PointObject::GetPointCount, "Point index">>, &GetPoint, "i", "id">(
        "GetPoint",
        "GetPoint(id) -> qlx.Vector\n\nA point, by its number from 0, in the object's system. Raises "
        "IndexError "
        "out of range."),
    Method<Row<InRange<"id", &PointObject::GetPointCount, "Point index">>, &SetPoint, "iV", "id", "pos">(
        "SetPoint", "SetPoint(id, pos) -> None\n\nMoves a point. Raises IndexError out of range."),
    Method<Row<WhileAlive>, &GetAllPoints>("GetAllPoints",
                                           "GetAllPoints() -> list of qlx.Vector\n\nCopies of all points."),
    Method<Row<WhileAlive>, &SetAllPoints, "O", "p">(
        "SetAllPoints",
        "SetAllPoints(p) -> None\n\n"
        "Moves all points, to a list of as many qlx.Vector; send MSG_UPDATE afterwards. Raises ValueError for "
        "an empty list, TypeError for another element and IndexError for another number, and changes nothing "
        "then."),
    Method<&PointObject::GetPointCount>("GetPointCount",
                                        "GetPointCount() -> int\n\nHow many points there are."),
    Method<&CalcVertexMap, "A!", "modifier">("CalcVertexmap", kVertexMapDoc),
    Method<&CalcVertexMap, "A!", "modifier">("CalcVertexMap", kVertexMapDoc),
    Method<&PointObject::ResizeObject, "i", "pcnt">(
        "ResizeObject",
        "ResizeObject(pcnt) -> bool\n\nGives the object that many points; new ones are zero. False below 0."),
    {},
};

}  // namespace

PyTypeObject g_PointObjectType = MakeType<AtomWrapper>({
    .name = "qlx.PointObject",
    .doc = "An object with points.",
    .base = &g_BaseObjectType,
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_PointObjectType);
}

}  // namespace qlx
