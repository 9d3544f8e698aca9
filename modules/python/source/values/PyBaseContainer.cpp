// qlx.BaseContainer: the host's container of settings: a free-standing one, that of an element, or the one
// in an entry of another.

#include <new>
#include <utility>
#include <vector>

#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "kit/i_valueletters.h"
#include "scene/scene.h"
#include "values/containers.h"
#include "values/values.h"

namespace qlx {
namespace {

ContainerRecord* AsRecord(PyObject* object) { return reinterpret_cast<ContainerRecord*>(object); }

// The container that the constructor's argument asks for; null with an exception.
BaseContainer* MakeContainer(PyObject* from) {
  BaseContainer* made = nullptr;
  if (!from || from == Py_None) {
    made = BaseContainer::Alloc(0);
  } else if (PyLong_Check(from)) {
    int32_t id;
    if (!ReadInt32(from, id)) return nullptr;
    made = BaseContainer::Alloc(id);
  } else if (IsBaseContainer(from)) {
    const BaseContainer* source = BaseContainerOf(from);
    if (!source) return nullptr;
    made = source->GetClone();
  } else {
    RaiseExpectedTypeFor("qlx.BaseContainer.__init__", "None, int or qlx.BaseContainer", from);
    return nullptr;
  }
  if (!made) ReportAllocFailed(&g_BaseContainerType, 0);
  return made;
}

PyObject* Construct(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&Construct, TypeList<PyObject*>, "|O", "n"> arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  BaseContainer* made = arguments.Apply([](PyObject* n) { return MakeContainer(n); });
  return made ? NewBaseContainer(made, true, false, nullptr) : nullptr;  // the record frees it
}

void Free(PyObject* self) {
  ContainerRecord* record = AsRecord(self);
  PyObject* parent = record->parent;
  if (record->owned && record->data) record->data->Free();
  record->data = nullptr;
  FreeLink(record->hostLink);
  FreeWrapper(g_wrapperTracker, self);
  // One after the other: the instances of instances may be more than the stack takes.
  while (parent) {
    PyObject* next = Py_REFCNT(parent) == 1 ? std::exchange(AsRecord(parent)->parent, nullptr) : nullptr;
    Py_DECREF(parent);
    parent = next;
  }
}

// What the record's entry holds now; ReferenceError when that is no container any more. Looked up from the
// nearest parent that is known, as long as the host doesn't tell that something has changed.
BaseContainer* EntryOf(ContainerRecord* record) {
  const uint64_t epoch = BaseContainer::GetInstanceEpoch();
  const auto isKnown = [epoch](const ContainerRecord* one) {
    return !one->parent || (epoch && one->epoch == epoch);
  };
  if (isKnown(record)) return record->data;
  try {
    std::vector<ContainerRecord*> unknown;
    ContainerRecord* known = record;
    for (; !isKnown(known); known = AsRecord(known->parent)) unknown.push_back(known);
    BaseContainer* data = known->data;
    for (; data && !unknown.empty(); unknown.pop_back()) {
      ContainerRecord* one = unknown.back();
      data = one->data = data->GetContainerInstance(one->entry);
      one->epoch = data ? epoch : 0;
    }
    if (!data) ReportNotAlive(Py_TYPE(record));
    return data;
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
    return nullptr;
  }
}

PyObject* GetContainerInstance(PyObject* self, int32_t id) {
  BaseContainer* container = BaseContainerOf(self);
  if (!container) return nullptr;
  const uint64_t epoch = BaseContainer::GetInstanceEpoch();
  BaseContainer* data = container->GetContainerInstance(id);
  if (!data) return NewNone();
  PyObject* object = NewBaseContainer(data, false, false, nullptr);
  if (!object) return nullptr;
  ContainerRecord* record = AsRecord(object);
  record->entry = id;
  record->epoch = epoch;
  record->root = AsRecord(self)->parent ? AsRecord(self)->root : self;
  Py_INCREF(self);
  record->parent = self;
  return object;
}

// A container in an entry is the live one.
PyObject* GetDataPointer(PyObject* self, int32_t id) {
  BaseContainer* container = BaseContainerOf(self);
  if (!container) return nullptr;
  const HostGeData* data = container->FindData(id);
  return data && data->type == HOST_DATA_CONTAINER ? GetContainerInstance(self, id)
                                                   : containers::GetData(container, id);
}

PyObject* FindIndex(PyObject* self, int32_t id) {
  const BaseContainer* container = BaseContainerOf(self);
  if (!container) return nullptr;
  const int32_t index = container->FindIndex(id);
  PyObject* value = GetDataPointer(self, id);
  return value ? Py_BuildValue("{s:i,s:N}", "index", index, "ppData", value) : nullptr;
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsBaseContainer(left) || !IsBaseContainer(right) || (op != Py_EQ && op != Py_NE))
    Py_RETURN_NOTIMPLEMENTED;
  const BaseContainer* a = BaseContainerOf(left);
  const BaseContainer* b = a ? BaseContainerOf(right) : nullptr;
  return b ? ToPython(a->IsEqual(b) == (op == Py_EQ)) : nullptr;
}

PyObject* ValueOrNone(const HostGeData* data) { return data ? GeDataToPython(*data, nullptr) : NewNone(); }

// The key of an item: an int of 32 bits.
bool ReadKey(PyObject* key, const char* function, int32_t& id) {
  if (PyLong_Check(key)) return ReadInt32(key, id);
  RaiseExpectedTypeFor(function, "int", key);
  return false;
}

Py_ssize_t Length(PyObject* self) {
  const BaseContainer* container = BaseContainerOf(self);
  return container ? container->GetCount() : -1;
}

PyObject* GetItem(PyObject* self, PyObject* key) {
  int32_t id;
  const BaseContainer* container = BaseContainerOf(self);
  if (!container || !ReadKey(key, "__getitem__", id)) return nullptr;
  return ValueOrNone(container->FindData(id));
}

// What an entry that keeps its type says when a value doesn't fit it.
const char* WordOf(int32_t type) {
  switch (type) {
    case HOST_DATA_VECTOR:
      return "qlx.Vector";
    case HOST_DATA_INT32:
      return "int or bool";
    case HOST_DATA_INT64:
      return "long";
    case HOST_DATA_FLOAT:
      return "float";
    case HOST_DATA_STRING:
      return "str";
    case HOST_DATA_MATRIX:
      return "qlx.Matrix";
    case HOST_DATA_CONTAINER:
      return "qlx.BaseContainer";
    case HOST_DATA_TIME:
      return "qlx.BaseTime";
    default:
      return nullptr;
  }
}

// An int for an entry of either size, which doesn't become the other.
bool ConvertTypedInt(PyObject* value, int32_t type, GeData& data) {
  const long long number = PyLong_AsLongLong(value);
  const bool isTooLarge = number == -1 && PyErr_Occurred();
  if (type == HOST_DATA_INT64) {
    data = GeData::Int64(number);
    return !isTooLarge;
  }
  data = GeData::Int32(int32_t(number));
  if (!isTooLarge && number == int32_t(number)) return true;
  PyErr_Clear();
  RaiseExpectedTypeFor("__setitem__", WordOf(type), value);
  return false;
}

// Converts for an entry that keeps its type.
bool ConvertTyped(PyObject* value, const HostGeData& old, GeData& data) {
  if (PyLong_Check(value) && (old.type == HOST_DATA_INT32 || old.type == HOST_DATA_INT64))
    return ConvertTypedInt(value, old.type, data);
  data = GeData::Copy(old);
  if (GeDataFromPython(value, data)) return true;
  const char* word = WordOf(data.Type());  // the old one may have gone
  if (!word || !PyErr_ExceptionMatches(PyExc_TypeError)) return false;
  PyErr_Clear();
  RaiseExpectedTypeFor("__setitem__", word, value);
  return false;
}

int SetItem(PyObject* self, PyObject* key, PyObject* value) {
  int32_t id;
  BaseContainer* container = BaseContainerOf(self);
  if (!container || !ReadKey(key, "__setitem__", id)) return -1;
  if (!value) {
    container->RemoveData(id);
    return 0;
  }
  GeData data;
  const HostGeData* old = AsRecord(self)->typed ? container->FindData(id) : nullptr;
  if (!(old ? ConvertTyped(value, *old, data) : GeDataFromPython(value, data))) return -1;
  // The value's own code may have changed or destroyed what holds the container.
  container = BaseContainerOf(self);
  if (!container) return -1;
  if (container->SetData(id, data.Data())) return 0;
  PyErr_NoMemory();
  return -1;
}

PyMappingMethods g_mapping = {Length, GetItem, SetItem};

// A value that has no Python form is None, so that the walk goes on.
PyObject* ItemAt(const BaseContainer* container, int32_t index) {
  const int32_t id = container->GetIndexId(index);  // ahead of the conversion, which may run a script's code
  PyObject* value = ValueOrNone(container->GetIndexData(index));
  if (!value) {
    PyErr_Clear();
    value = NewNone();
  }
  return Py_BuildValue("(iN)", id, value);
}

// The pairs of the moment: changes while a script walks along them don't matter. A collection of garbage
// may run a script's code in between, so the container is looked up for each.
PyObject* Iterate(PyObject* self) {
  PyObject* pairs = PyList_New(0);
  for (int32_t i = 0; pairs; ++i) {
    const BaseContainer* container = BaseContainerOf(self);
    if (container && i >= container->GetCount()) break;
    PyObject* pair = container ? ItemAt(container, i) : nullptr;
    if (!pair || PyList_Append(pairs, pair) < 0) Py_CLEAR(pairs);
    Py_XDECREF(pair);
  }
  PyObject* iterator = pairs ? PyObject_GetIter(pairs) : nullptr;
  Py_XDECREF(pairs);
  return iterator;
}

PyObject* IsInstance(PyObject* self) {
  return BaseContainerOf(self) ? ToPython(AsRecord(self)->instance) : nullptr;
}

Conversion Convert(PyObject* object, void* target) {
  if (!IsBaseContainer(object)) return Conversion::kWrongType;
  BaseContainer* container = BaseContainerOf(object);
  if (!container) return Conversion::kFailed;
  *static_cast<BaseContainer**>(target) = container;
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kContainer, Convert);

PyMethodDef g_methods[] = {
    Method<&containers::GetClone, "i|O!", "flags", "trans">(
        "GetClone", "GetClone(flags, trans=None) -> qlx.BaseContainer\n\nA copy with all entries."),
    Method<&containers::CopyTo, "Ci|O!", "dst", "flags", "trans">(
        "CopyTo", "CopyTo(dst, flags, trans=None) -> bool\n\nMakes dst a copy of this one."),
    Method<&BaseContainer::FlushAll>("FlushAll", "FlushAll() -> None\n\nRemoves all entries."),
    Method<&BaseContainer::GetId>("GetId", "GetId() -> int\n\nThe container's own id."),
    Method<&BaseContainer::SetId, "i", "id">("SetId", "SetId(id) -> None\n\nSets the container's own id."),
    Method<&BaseContainer::GetDirty>("GetDirty", "GetDirty() -> int\n\nA count that grows with each change."),
    Method<&BaseContainer::RemoveData, "i", "id">("RemoveData",
                                                  "RemoveData(id) -> bool\n\nRemoves the entry of that id."),
    Method<&BaseContainer::RemoveIndex, "i", "index">(
        "RemoveIndex", "RemoveIndex(index) -> bool\n\nRemoves the entry at a position."),
    Method<&FindIndex, "i", "id">(
        "FindIndex",
        "FindIndex(id) -> dict\n\nThe position of the entry as \"index\", "
        "and its value as \"ppData\", as GetDataPointer gives it; -1 and None for an unknown id."),
    Method<&BaseContainer::GetIndexId, "i", "index">(
        "GetIndexId", "GetIndexId(index) -> int\n\nThe id of the entry at a position, or -1."),
    Method<&containers::GetType, "i", "id">("GetType",
                                            "GetType(id) -> int\n\nThe type of the entry's value, or 0."),
    Method<&containers::InsData, "iG", "id", "data">("InsData",
                                                     "InsData(id, data) -> bool\n\nAppends an entry."),
    Method<&containers::InsDataAfter, "iGO!", "id", "data", "last">(
        "InsDataAfter",
        "InsDataAfter(id, data, last) -> bool\n\nInserts an entry behind the one at the position last, an int "
        "as "
        "FindIndex(id)[\"index\"] gives it; -1 stands for the front. False where there is no such position."),
    Method<&containers::SetData, "iO", "id", "value">("SetData", "Removes the data item."),
    Method<&containers::GetData, "i", "id">("GetData", "Removes the data item."),
    Method<&GetDataPointer, "i", "id">(
        "GetDataPointer",
        "GetDataPointer(id) -> object or None\n\nThe value of the entry; a container is the one in the entry "
        "itself, as of GetContainerInstance."),
    Method<&containers::GetBool, "i|b", "id", "preset=false">("GetBool", "GetBool(id, preset=False) -> bool"),
    Method<&containers::GetInt64, "i|l", "id", "preset=0">("GetLLong", "GetLLong(id, preset=0) -> int"),
    Method<&containers::GetInt64, "i|l", "id", "preset=0">("GetInt64", "GetInt64(id, preset=0) -> int"),
    Method<&containers::GetVoid, "i|O!", "id", "preset">(
        "GetVoid", "GetVoid(id, preset=None) -> PyCapsule or None\n\nThe pointer in the entry."),
    Method<&containers::GetVector, "i|V", "id", "preset">("GetVector",
                                                          "GetVector(id, preset=Vector()) -> qlx.Vector"),
    Method<&containers::GetMatrix, "i|M", "id", "preset">("GetMatrix",
                                                          "GetMatrix(id, preset=Matrix()) -> qlx.Matrix"),
    Method<&containers::GetString, "i|$", "id", "preset">("GetString", "GetString(id, preset='') -> str"),
    Method<&containers::GetFilename, "i|$", "id", "preset">("GetFilename", "GetFilename(id, preset='') -> str"),
    Method<&containers::GetUuid, "i|U", "id", "preset">("GetUuid",
                                                        "GetUuid(id, preset=UUID(int=0)) -> uuid.UUID"),
    Method<&containers::GetTime, "i|T", "id", "preset">("GetTime",
                                                        "GetTime(id, preset=BaseTime()) -> qlx.BaseTime"),
    Method<&containers::GetContainer, "i", "id">(
        "GetContainer",
        "GetContainer(id) -> qlx.BaseContainer or None\n\nA copy of the container in the entry."),
    Method<&GetContainerInstance, "i", "id">(
        "GetContainerInstance",
        "GetContainerInstance(id) -> qlx.BaseContainer or None\n\nThe container in the entry itself: a change "
        "of it "
        "is one of the entry. ReferenceError is raised once the entry holds no container any more."),
    Method<&containers::GetLink, "i|A!i", "id", "doc", "isinstanceof=0">(
        "GetLink", "GetLink(id, doc=None, isinstanceof=0) -> qlx.BaseList2D or None\n\nThe linked element."),
    Method<&containers::GetObjectLink, "i|A!", "id", "doc">(
        "GetObjectLink", "GetObjectLink(id, doc=None) -> qlx.BaseList2D or None\n\nThe linked object."),
    Method<&containers::GetMaterialLink, "i|A!", "id", "doc">(
        "GetMaterialLink", "GetMaterialLink(id, doc=None) -> qlx.BaseList2D or None\n\nThe linked material."),
    Method<&containers::GetCustomDataType, "i", "id">(
        "GetCustomDataType",
        "GetCustomDataType(id) -> object or None\n\nA copy of the entry's custom data; None for other values."),
    Method<&containers::GetInt32, "i|i", "id", "preset=0">("GetLong", "GetLong(id, preset=0) -> int"),
    Method<&containers::GetFloat, "i|f", "id", "preset=0">("GetReal", "GetReal(id, preset=0) -> float"),
    Method<&containers::GetFloat, "i|f", "id", "preset=0">("GetFloat", "GetFloat(id, preset=0) -> float"),
    Method<&containers::GetInt32, "i|i", "id", "preset=0">("GetInt32", "GetInt32(id, preset=0) -> int"),
    Method<&containers::SetInt32, "ii", "id", "value">("SetLong", "SetLong(id, value) -> None"),
    Method<&containers::SetFloat, "if", "id", "value">("SetReal", "SetReal(id, value) -> None"),
    Method<&containers::SetInt32, "ii", "id", "value">("SetInt32", "SetInt32(id, value) -> None"),
    Method<&containers::SetFloat, "if", "id", "value">("SetFloat", "SetFloat(id, value) -> None"),
    Method<&containers::SetBool, "ib", "id", "value">("SetBool", "SetBool(id, value) -> None"),
    Method<&containers::SetInt64, "il", "id", "value">("SetLLong", "SetLLong(id, value) -> None"),
    Method<&containers::SetInt64, "il", "id", "value">("SetInt64", "SetInt64(id, value) -> None"),
    Method<&containers::SetVoid, "iO!", "id", "value">(
        "SetVoid",
        "SetVoid(id, value) -> None\n\nStores the pointer of a PyCapsule, and only that: what it points at "
        "must outlive the entry."),
    Method<&containers::SetVector, "iV", "id", "value">("SetVector", "SetVector(id, value) -> None"),
    Method<&containers::SetMatrix, "iM", "id", "value">("SetMatrix", "SetMatrix(id, value) -> None"),
    Method<&containers::SetString, "i$", "id", "value">("SetString", "SetString(id, value) -> None"),
    Method<&containers::SetFilename, "i$", "id", "value">("SetFilename", "SetFilename(id, value) -> None"),
    Method<&containers::SetUuid, "iU", "id", "value">("SetUuid", "SetUuid(id, value) -> None"),
    Method<&containers::SetTime, "iT", "id", "value">("SetTime", "SetTime(id, value) -> None"),
    Method<&containers::SetContainer, "iC", "id", "value">("SetContainer",
                                                           "SetContainer(id, value) -> None\n\nStores a copy."),
    Method<&containers::SetLink, "iA!", "id", "link">("SetLink", "SetLink(id, link) -> None"),
    Method<&containers::GetIndexData, "i", "index">(
        "GetIndexData", "GetIndexData(index) -> object or None\n\nThe value of the entry at a position."),
    Method<&containers::SetIndexData, "iG", "index", "data">(
        "SetIndexData", "SetIndexData(index, data) -> bool\n\nReplaces the value of the entry at a position."),
    Method<&IsInstance>("IsInstance", "IsInstance() -> bool\n\nFalse for the copies of GetContainer."),
    Method<&BaseContainer::MergeContainer, "C", "src">(
        "MergeContainer", "MergeContainer(src) -> bool\n\nTakes over every entry of another container."),
    Method<&BaseContainer::Sort>("Sort", "Sort() -> None\n\nPuts the entries into the order of their ids."),
    Method<&containers::Copy>("__copy__", "__copy__() -> qlx.BaseContainer\n\nFor copies."),
    Method<&containers::DeepCopy, "O", "memo">("__deepcopy__",
                                               "__deepcopy__(memo) -> qlx.BaseContainer\n\nFor copies."),
    Method<&FormatText, "O", "format_spec">("__format__",
                                            "__format__(format_spec) -> str\n\nThe text in that format."),
    Method<&containers::Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor pickles."),
    Method<&containers::SetState, "O", "entries">("__setstate__",
                                                  "__setstate__(entries) -> None\n\nFor pickles."),
    {},
};

}  // namespace

PyTypeObject g_BaseContainerType = MakeType<ContainerRecord>({
    .name = "qlx.BaseContainer",
    .doc = "A container of settings.",
    .methods = g_methods,
    .create = Construct,
    .destroy = Free,
    .compare = Compare,
    .iterate = Iterate,
    .mapping = &g_mapping,
});

namespace {
const TypeQueueEntry g_entry(g_BaseContainerType);
}

bool IsBaseContainer(PyObject* object) { return PyObject_TypeCheck(object, &g_BaseContainerType); }

PyObject* NewBaseContainer(BaseContainer* data, bool owned, bool typed, QLXAtom* host) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_BaseContainerType);
  if (object && (!host || SetLink(host, AsRecord(object)->hostLink))) {
    AsRecord(object)->data = data;
    AsRecord(object)->owned = owned;
    AsRecord(object)->typed = typed;
    AsRecord(object)->instance = true;
    return object;
  }
  if (owned) data->Free();
  if (!object) return nullptr;
  Py_DECREF(object);
  return PyErr_NoMemory();
}

BaseContainer* BaseContainerOf(PyObject* object) {
  if (!IsBaseContainer(object)) {
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return nullptr;
  }
  ContainerRecord* record = AsRecord(object);
  const ContainerRecord* root = record->parent ? AsRecord(record->root) : record;
  if (record->dead || root->dead) {
    ReportNotAlive(Py_TYPE(object));
    return nullptr;
  }
  if (root->hostLink.slot && !LookUp(root->hostLink)) {
    ReportHostNotAlive(Py_TYPE(object));
    return nullptr;
  }
  return record->parent ? EntryOf(record) : record->data;
}

void MarkContainerDead(PyObject* object) { AsRecord(object)->dead = true; }

PyObject* NewContainerCopy(const BaseContainer& data) {
  BaseContainer* copy = data.GetClone();
  PyObject* object =
      copy ? NewBaseContainer(copy, true, false, nullptr) : PyErr_NoMemory();  // the record frees the copy
  if (object) AsRecord(object)->instance = false;
  return object;
}

PyObject* Present<BaseContainer>::WrapPart(BaseContainer* host, PyObject* owner) {
  QLXAtom* atom;
  if (!Present<QLXAtom>::Get(owner, atom)) return nullptr;
  return NewBaseContainer(host, false, false, atom);
}

}  // namespace qlx
