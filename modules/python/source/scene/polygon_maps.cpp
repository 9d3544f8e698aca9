// Edges, n-gons and normals of polygon objects. What the host made for the call is copied before a list may
// start the collector of garbage, which runs the code of scripts.

#include "kit/i_errors.h"
#include "kit/i_present.h"
#include "scene/geometry.h"

namespace qlx::polygons {
namespace {

// Arguments that may be of several types; false with an exception for another one, or a dead one.
bool ReadNeighbor(PyObject* object, const char* function, Neighbor*& e) {
  if (Py_TYPE(object) == &g_NeighborType) return Present<Neighbor>::Get(object, e);
  RaiseExpectedTypeFor(function, g_NeighborType.tp_name, object);
  return false;
}

bool ReadSelection(PyObject* object, const char* function, BaseSelect*& sel) {
  if (IsBaseSelect(object)) return Present<BaseSelect>::Get(object, sel);
  RaiseExpectedTypeFor(function, g_BaseSelectType.tp_name, object);
  return false;
}

PyObject* GiveSelection(BaseSelect* made) {
  return made ? Present<BaseSelect>::Wrap(made, true) : NewNone();  // the script's
}

// One list for each group of words that begins with their number; null alone when the words don't come out
// even.
PyObject* GroupsToList(const int32_t* words, int32_t count) {
  Reference list(PyList_New(0));
  for (int32_t at = 0; list && at < count;) {
    const int32_t size = words[at++];
    if (size < 0 || size > count - at) return nullptr;
    const Reference group(Int32ArrayToList(words + at, size));
    if (!group || PyList_Append(list.get(), group.get()) < 0) return nullptr;
    at += size;
  }
  return list.release();
}

}  // namespace

PyObject* GetSelectedEdges(AtomWrapper* self, PyObject* e, PyObject* sel) {
  Neighbor* neighbor;
  PolygonObject* host;
  if (!ReadNeighbor(e, "PolygonObject.GetSelectedEdges", neighbor)) return nullptr;
  if (!Present<PolygonObject>::Get(&self->ob_base, host)) return nullptr;
  if (PyLong_Check(sel)) {
    int32_t type;
    return ReadInt32(sel, type) ? GiveSelection(host->GetSelectedEdges(neighbor, type)) : nullptr;
  }
  if (!IsBaseSelect(sel)) return NewNone();  // scripts rely on None for another type
  BaseSelect* selection;
  if (!Present<BaseSelect>::Get(sel, selection)) return nullptr;
  return GiveSelection(host->ConvertEdges(neighbor, selection));
}

PyObject* SetSelectedEdges(PolygonObject* self, PyObject* e, PyObject* pSel, int32_t ltype) {
  constexpr const char* kFunction = "PolygonObject.SetSelectedEdges";
  Neighbor* neighbor;
  BaseSelect* selection;
  if (!ReadNeighbor(e, kFunction, neighbor) || !ReadSelection(pSel, kFunction, selection)) return nullptr;
  return ToPython(self->SetSelectedEdges(neighbor, selection, ltype));
}

PyObject* CreatePhongNormals(PolygonObject* self) {
  const Py_ssize_t count = self->GetPolygonCount();
  const HostArray<Vector32> normals(self->CreatePhongNormals());
  return normals ? Vector32ArrayToList(normals.get(), 4 * count) : NewNone();
}

PyObject* GetPolygonTranslationMap(PolygonObject* self) {
  const int32_t count = self->GetPolygonCount();
  int32_t ngons = 0;
  const HostArray<int32_t> map(self->GetPolygonTranslationMap(&ngons));
  if (!map && count > 0) return NewNone();
  PyObject* list = Int32ArrayToList(map.get(), count);
  return list ? Py_BuildValue("(iN)", ngons, list) : nullptr;
}

PyObject* GetNGonTranslationMap(AtomWrapper* self, int32_t ngoncnt, PyObject* polymap) {
  PolygonObject* host;
  // That of no polygons is empty, which arrays of the host can't be.
  Py_ssize_t count = PyObject_Size(polymap);
  if (count < 0) PyErr_Clear();
  if (count == 0) {
    if (!Present<PolygonObject>::Get(&self->ob_base, host)) return nullptr;
    return host->GetPolygonCount() == 0 ? PyList_New(0) : RaiseOutOfRange("Array size");
  }
  const HostArray<int32_t> map = GetInt32Array(polymap, count, "PolygonObject.GetNGonTranslationMap");
  // The sequence's own code may have destroyed the object.
  if (!map || PyErr_Occurred() || !Present<PolygonObject>::Get(&self->ob_base, host)) return nullptr;
  if (count != host->GetPolygonCount()) return RaiseOutOfRange("Array size");
  int32_t words = 0;
  const HostArray<int32_t> groups(host->GetNGonTranslationMap(ngoncnt, map.get(), &words));
  return groups ? GroupsToList(groups.get(), words) : NewNone();
}

PyObject* GetSelectedNgons(PolygonObject* self, SelectRecord* sel) {
  BaseSelect* selection;
  return SelectionOf(sel, selection) ? ToPython(self->GetSelectedNgons(selection)) : nullptr;
}

PyObject* GetHiddenNgons(PolygonObject* self, SelectRecord* sel) {
  BaseSelect* selection;
  return SelectionOf(sel, selection) ? ToPython(self->GetHiddenNgons(selection)) : nullptr;
}

PyObject* ValidateEdgeSelection(PolygonObject* self, PyObject* sel) {
  BaseSelect* selection = nullptr;
  const bool isGiven = sel && sel != Py_None;
  if (isGiven && !ReadSelection(sel, "PolygonObject.ValidateEdgeSelection", selection)) return nullptr;
  return ToPython(self->ValidateEdgeSelection(selection));
}

PyObject* GetEdgeSelection(PolygonObject* self, PyObject* sel, int32_t type) {
  BaseSelect* selection;
  if (!ReadSelection(sel, "PolygonObject.GetEdgeSelection", selection)) return nullptr;
  return ToPython(self->GetEdgeSelection(selection, type));
}

PyObject* GetNgonEdgesCompact(PolygonObject* self) {
  const int32_t count = self->GetPolygonCount();
  const HostArray<uint8_t> edges(self->GetNgonEdgesCompact());
  if (!edges && count > 0) return NewNone();
  const std::vector<int32_t> words(edges.get(), edges.get() + count);
  return Int32ArrayToList(words.data(), count);
}

}  // namespace qlx::polygons
