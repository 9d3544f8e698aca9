// Objects with points and what goes with them: selections, neighbourhoods, and their elements in bulk.
#ifndef SCENE_GEOMETRY_H
#define SCENE_GEOMETRY_H

#include <Python.h>

#include <vector>

#include "kelvar/lineobject.h"
#include "kelvar/neighbor.h"
#include "kelvar/polygonobject.h"
#include "kelvar/select.h"
#include "kelvar/splineobject.h"
#include "kit/i_arrays.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {

template <>
struct TypeOf<PointObject> : TypeIs<g_PointObjectType> {};
template <>
struct TypeOf<PolygonObject> : TypeIs<g_PolygonObjectType> {};
template <>
struct TypeOf<SplineObject> : TypeIs<g_SplineObjectType> {};
template <>
struct TypeOf<LineObject> : TypeIs<g_LineObjectType> {};

// The data types of an object's blocks.
inline constexpr int32_t kDataPoint = 5600;
inline constexpr int32_t kDataPolygon = 5604;

// A selection: its own (owned), or part of an object, with which it dies.
struct SelectRecord {
  PyObject ob_base;
  BaseSelect* data;
  bool owned;         // frees the data
  HostLink hostLink;  // to the object that the selection is part of; empty for one of its own
};

extern PyTypeObject g_BaseSelectType;

inline bool IsBaseSelect(PyObject* object) { return Py_TYPE(object) == &g_BaseSelectType; }

template <>
struct Present<BaseSelect> {
  static PyTypeObject& Type() { return g_BaseSelectType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, BaseSelect*& host);
  static PyObject* Wrap(BaseSelect* host, bool owned);  // one of its own
  static PyObject* WrapPart(BaseSelect* host, PyObject* owner);
};

template <>
struct RecordType<SelectRecord> : TypeIs<g_BaseSelectType> {};

// The selection of an argument, null for none; false with an exception.
inline bool SelectionOf(SelectRecord* argument, BaseSelect*& host) {
  host = nullptr;
  return !argument || Present<BaseSelect>::Get(&argument->ob_base, host);
}

// A neighbourhood, dead with the object that it was initialised with.
struct NeighborRecord {
  PyObject ob_base;
  Neighbor* data;
  HostLink linked;
};

extern PyTypeObject g_NeighborType;

template <>
struct Present<Neighbor> {
  static PyTypeObject& Type() { return g_NeighborType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, Neighbor*& host);
  static PyObject* Wrap(Neighbor* host, bool owned);  // the wrapper frees it
};

// A list of copies of an object's elements of that data type; null with an exception, or alone where the host
// shows none of them.
template <class Element>
PyObject* ElementsToList(AtomWrapper* self, int32_t dataType) {
  for (;;) {
    BaseObject* host;
    if (!Present<BaseObject>::Get(&self->ob_base, host)) return nullptr;
    const int32_t count = host->GetTagDataCount(dataType);
    // The list may start the collector of garbage, which runs the code of scripts.
    Reference list(PyList_New(count));
    if (!list || !Present<BaseObject>::Get(&self->ob_base, host)) return nullptr;
    if (host->GetTagDataCount(dataType) != count) continue;
    const auto* elements = static_cast<const Element*>(host->GetTagDataR(dataType));
    if (!elements && count > 0) return nullptr;
    // So may an instance that is recorded with the line of its script.
    std::vector<Element> copies;
    if (LeakTracker::IsOn()) {
      copies.assign(elements, elements + count);
      elements = copies.data();
    }
    for (Py_ssize_t i = 0; i < count; ++i) {
      PyObject* item = Present<Element>::Wrap(elements[i]);
      if (!item) return nullptr;
      PyList_SET_ITEM(list.get(), i, item);
    }
    return list.release();
  }
}

// The rows of polygon objects about edges, n-gons and normals; a new reference in each, null with an exception.
namespace polygons {

PyObject* GetSelectedEdges(AtomWrapper* self, PyObject* e, PyObject* sel);
PyObject* SetSelectedEdges(PolygonObject* self, PyObject* e, PyObject* pSel, int32_t ltype);
PyObject* CreatePhongNormals(PolygonObject* self);
PyObject* GetPolygonTranslationMap(PolygonObject* self);
PyObject* GetNGonTranslationMap(AtomWrapper* self, int32_t ngoncnt, PyObject* polymap);
PyObject* GetSelectedNgons(PolygonObject* self, SelectRecord* sel);
PyObject* GetHiddenNgons(PolygonObject* self, SelectRecord* sel);
PyObject* ValidateEdgeSelection(PolygonObject* self, PyObject* sel);
PyObject* GetEdgeSelection(PolygonObject* self, PyObject* sel, int32_t type);
PyObject* GetNgonEdgesCompact(PolygonObject* self);

}  // namespace polygons

}  // namespace qlx

#endif
