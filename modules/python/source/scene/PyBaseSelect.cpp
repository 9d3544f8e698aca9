// qlx.BaseSelect: the selected points, polygons or edges of an object, or a selection of one's own.

#include <algorithm>

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

SelectRecord* AsRecord(PyObject* object) { return reinterpret_cast<SelectRecord*>(object); }

void Free(PyObject* self) {
  if (AsRecord(self)->owned) AsRecord(self)->data->Free();
  FreeLink(AsRecord(self)->hostLink);
  FreeWrapper(g_wrapperTracker, self);
}

PyObject* NewRecord(BaseSelect* data, bool owned, HostLink hostLink) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_BaseSelectType);
  if (object) {
    AsRecord(object)->data = data;
    AsRecord(object)->owned = owned;
    AsRecord(object)->hostLink = hostLink;
    return object;
  }
  if (owned) data->Free();
  FreeLink(hostLink);
  return nullptr;
}

PyObject* GetRange(BaseSelect* self, int32_t segment, int32_t maxElements) {
  int32_t a = 0, b = 0;
  return self->GetRange(segment, maxElements, &a, &b) ? Py_BuildValue("(ii)", a, b) : NewNone();
}

PyObject* CopyTo(BaseSelect* self, SelectRecord* dst) {
  BaseSelect* host;
  return SelectionOf(dst, host) ? ToPython(self->CopyTo(host)) : nullptr;
}

// What another selection selects, put together with this one.
template <bool (BaseSelect::*kOperation)(const BaseSelect*)>
PyObject* Combine(BaseSelect* self, SelectRecord* src) {
  BaseSelect* host;
  return SelectionOf(src, host) ? ToPython((self->*kOperation)(host)) : nullptr;
}

// The list may start the collector of garbage, which runs the code of scripts: it comes last.
PyObject* GetAll(BaseSelect* self, int32_t count) {
  if (count < 0) return RaiseInvalidLength();
  std::vector<uint8_t> selected(static_cast<size_t>(count));
  if (count > 0 && !self->ToArray(selected.data(), count)) return PyErr_NoMemory();
  Reference list(PyList_New(count));
  for (Py_ssize_t i = 0; list && i < count; ++i)
    PyList_SET_ITEM(list.get(), i, PyLong_FromLong(selected[size_t(i)] != 0));  // small ones always exist
  return list.release();
}

// The list's own code may destroy the object that the selection is part of.
PyObject* SetAll(PyObject* self, PyObject* list) {
  Py_ssize_t count = 0;
  const HostArray<int32_t> words = GetInt32Array(list, count, "BaseSelect.SetAll");
  BaseSelect* host;
  if (!words || PyErr_Occurred() || !Present<BaseSelect>::Get(self, host)) return nullptr;
  std::vector<uint8_t> selected(static_cast<size_t>(count));
  std::transform(words.get(), words.get() + count, selected.begin(), [](int32_t word) { return word != 0; });
  return ToPython(host->FromArray(selected.data(), int32_t(count)));
}

PyMethodDef g_methods[] = {
    Method<&BaseSelect::GetCount>("GetCount", "GetCount() -> int\n\nHow many elements are selected."),
    Method<&BaseSelect::GetSegments>(
        "GetSegments", "GetSegments() -> int\n\nHow many runs of elements side by side they make."),
    Method<&BaseSelect::Select, "i", "num">(
        "Select", "Select(num) -> bool\n\nSelects an element, by its number from 0. False below 0."),
    Method<&BaseSelect::SelectAll, "ii", "min", "max">("SelectAll",
                                                       "SelectAll(min, max) -> bool\n\nSelects the elements "
                                                       "from `min` to `max`, both included, and no others."),
    Method<&BaseSelect::Deselect, "i", "num">("Deselect", "Deselect(num) -> bool\n\nDeselects an element."),
    Method<&BaseSelect::DeselectAll>("DeselectAll", "DeselectAll() -> None\n\nDeselects all elements."),
    Method<&BaseSelect::Toggle, "i", "num">(
        "Toggle", "Toggle(num) -> bool\n\nSelects an element that is not selected, deselects one that is."),
    Method<&BaseSelect::ToggleAll, "ii", "min", "max">(
        "ToggleAll", "ToggleAll(min, max) -> bool\n\nThe same for those from `min` to `max`, both included."),
    Method<&GetRange, "ii", "segment", "maxElements">("GetRange",
                                                      "GetRange(segment, maxElements) -> (int, int) or None\n\n"
                                                      "The first and the last element of a run, by its number "
                                                      "from 0, of the first `maxElements` elements; of all "
                                                      "for -1. None when there is no such run."),
    Method<&BaseSelect::IsSelected, "i", "num">("IsSelected",
                                                "IsSelected(num) -> bool\n\nWhether an element is selected."),
    Method<&CopyTo, "O!", "dst">("CopyTo", "CopyTo(dst) -> bool\n\nMakes another selection the same."),
    Method<Row<Gives>, &BaseSelect::GetClone>(
        "GetClone", "GetClone() -> qlx.BaseSelect\n\nA copy, which is no part of an object."),
    Method<&Combine<&BaseSelect::Merge>, "O!", "src">(
        "Merge", "Merge(src) -> bool\n\nSelects what another selection selects, too."),
    Method<&Combine<&BaseSelect::DeselectOf>, "O!", "src">(
        "DeselectOf", "DeselectOf(src) -> bool\n\nDeselects what another selection selects."),
    Method<&Combine<&BaseSelect::Cross>, "O!", "src">(
        "Cross", "Cross(src) -> bool\n\nDeselects what another selection does not select."),
    Method<&GetAll, "i", "count">(
        "GetAll",
        "GetAll(count) -> list of int\n\n1 for each of the first elements that is selected, else 0. Raises "
        "ValueError below 0."),
    Method<&SetAll, "O", "list">(
        "SetAll",
        "SetAll(list) -> bool\n\nSelects the elements whose int is not 0, and no others. Raises ValueError for "
        "an empty list."),
    Method<&BaseSelect::GetDirty>("GetDirty", "GetDirty() -> int\n\nHow often the selection has changed."),
    Method<&BaseSelect::GetLastElement>(
        "GetLastElement", "GetLastElement() -> int\n\nThe last element that is selected; -1 without one."),
    {},
};

}  // namespace

PyTypeObject g_BaseSelectType = MakeType<SelectRecord>({
    .name = "qlx.BaseSelect",
    .doc =
        "BaseSelect() -> an empty selection\n\n"
        "Selected elements by their numbers. That of an object is the object's: a change of it is a change of "
        "the object, and it dies with the object.",
    .methods = g_methods,
    .create = Create<&BaseSelect::Alloc, "">,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_BaseSelectType);
}

bool Present<BaseSelect>::Get(PyObject* object, BaseSelect*& host) {
  if (!IsBaseSelect(object)) {
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return false;
  }
  const SelectRecord* record = AsRecord(object);
  if (!record->owned && !LookUp(record->hostLink)) {
    ReportHostNotAlive(&g_BaseSelectType);
    return false;
  }
  host = record->data;
  return true;
}

PyObject* Present<BaseSelect>::Wrap(BaseSelect* host, bool owned) { return NewRecord(host, owned, {}); }

PyObject* Present<BaseSelect>::WrapPart(BaseSelect* host, PyObject* owner) {
  QLXAtom* atom;
  HostLink link{};
  if (!Present<QLXAtom>::Get(owner, atom)) return nullptr;
  return SetLink(atom, link) ? NewRecord(host, false, link) : PyErr_NoMemory();
}

}  // namespace qlx
