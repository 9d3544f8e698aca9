// Parameters of elements by keys of scripts.

#include "scene/parameters.h"

#include "kelvar.framework/source/tables/t_messages.h"
#include "kelvar/dynamicdescription.h"
#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

constexpr int32_t kUserData = 700;
constexpr int32_t kGroupType = 5;  // a container in a full id

bool LevelFromPython(PyObject* item, Py_ssize_t position, DescID& id) {
  DescLevel level{};
  if (item && IsDescLevel(item)) {
    level = ValueOf<DescLevel>(item);
  } else if (!item || !PyLong_Check(item)) {
    RaiseKeyPosition(position);
    return false;
  } else if (!ReadInt32(item, level.id)) {
    return false;
  }
  id.PushId(level);
  return true;
}

// By hand, because a look-up may run the code of other keys.
PyObject* ItemAt(PyObject* dictionary, Py_ssize_t position) {
  PyObject *key, *value;
  for (Py_ssize_t at = 0; PyDict_Next(dictionary, &at, &key, &value);)
    if (PyLong_Check(key) && PyLong_AsSsize_t(key) == position) return value;
  PyErr_Clear();  // a key that is no size
  return nullptr;
}

bool LevelsFromPython(PyObject* key, DescID& id) {
  if (PyDict_Check(key)) {
    for (Py_ssize_t i = 0; i < PyDict_Size(key); ++i)
      if (!LevelFromPython(ItemAt(key, i), i, id)) return false;
    return true;
  }
  for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(key); ++i)
    if (!LevelFromPython(PySequence_Fast_GET_ITEM(key, i), i, id)) return false;
  return true;
}

bool Read(const AtomWrapper* self, const DescID& id, GeData& data) {
  const auto* host = static_cast<const QLXAtom*>(LookUp(self->link));
  const HostDescID word = id.Word();
  return host && host->GetParameter(&word, data.Out(), 0);
}

// The full id of the first user data with the number of the key's second level.
bool FindUserData(BaseList2D* host, DescID& id) {
  DynamicDescription* description = id.GetDepth() > 1 ? host->GetDynamicDescription() : nullptr;
  DynamicBrowse* browse = description ? description->BrowseInit() : nullptr;
  bool found = false;
  HostDescID entry;
  const BaseContainer* settings;
  while (browse && !found && description->GetNext(browse, &entry, &settings)) {
    found = entry.depth > 1 && entry.level[1].id == id[1].id;
    if (found) id = DescID::Copy(entry);
  }
  if (browse) description->BrowseFree(browse);
  return found;
}

// The level with the type of what was read there.
DescLevel Typed(int32_t id, const GeData& data) {
  return {id, data.Type() == HOST_DATA_CONTAINER ? kGroupType : data.Type(), 0};
}

bool IsBaseList(PyObject* self) { return PyObject_TypeCheck(self, &g_BaseList2DType); }

// Reads the parameter and puts types into the levels of its id: that of the value into the first one, into each
// further one that of the value around it, as scripts have always handed them to plug-ins. A key of one level
// takes one look-up. Each reading may run the element's own code, which may destroy it.
bool Complete(AtomWrapper* self, DescID& id, GeData& data) {
  if (id.GetDepth() == 0) return false;
  if (id[0].id == kUserData) {
    auto* host = static_cast<BaseList2D*>(LookUp(self->link));
    return host && IsBaseList(&self->ob_base) && FindUserData(host, id) && Read(self, id, data);
  }
  if (id.GetDepth() == 1) {
    if (!Read(self, id, data)) return false;
    id.SetId(Typed(id[0].id, data));
    return true;
  }
  DescID full;
  full.PushId(id[0]);
  if (!Read(self, full, data)) return false;
  full.SetId(Typed(id[0].id, data));
  for (int32_t i = 1; i < id.GetDepth(); ++i) {
    full.PushId(Typed(id[i].id, data));
    if (!Read(self, full, data)) return false;
  }
  id = std::move(full);
  return true;
}

// What a parameter of that type takes, for its complaint.
const char* WordOf(int32_t type) {
  static constexpr struct {
    int32_t type;
    const char* word;
  } kWords[] = {
      {15, "int or bool"},
      {19, "float"},
      {22, "qlx.BaseTime"},
      {23, "qlx.Vector"},
      {25, "qlx.Matrix"},
      {26, "long"},
      {130, "str"},
      {131, "str"},
      {132, "qlx.BaseContainer"},
      {133, "qlx.BaseList2D"},
      {1000481, "qlx.Gradient"},
      {1000486, "qlx.DescID"},
      {1000997, "qlx.LensGlowStruct"},
      {1001053, "qlx.BitmapButtonStruct"},
      {1009060, "qlx.SplineData"},
      {1009290, "qlx.InExcludeData"},
      {1009369, "qlx.PriorityData"},
      {1009372, "qlx.FontData"},
      {1009398, "qlx.DateTimeData"},
      {1009617, "qlx.HyperLinkData"},
      {100004811, "qlx.PLAData"},
      {200000027, "qlx.MatAssignData"},
      {200000044, "qlx.LayerSet"},
      {200000266, "qlx.bitmaps.ColorProfile"},
      {200000275, "qlx.UnitScaleData"},
      {431000178, "qlx.RangeData"},
      {440000246, "qlx.FieldList"},
      {440000257, "qlx.SoundEffectorData"},
  };
  for (const auto& entry : kWords)
    if (entry.type == type) return entry.word;
  return nullptr;
}

int Complain(int32_t type, PyObject* value) {
  PyErr_Clear();
  if (const char* word = WordOf(type))
    RaiseExpectedTypeFor("__setitem__", word, value);
  else
    RaiseUnexpectedType(value);
  return -1;
}

// The value for a parameter of the type that `data` has; -1 with an exception.
int ConvertFor(PyObject* value, GeData& data) {
  const int32_t type = data.Type();
  if (!GeDataFromPython(value, data)) {
    // What the value's own code raised says more than a complaint.
    const bool isUnfit = !PyErr_Occurred() || PyErr_ExceptionMatches(PyExc_TypeError) ||
                         (PyLong_Check(value) && PyErr_ExceptionMatches(PyExc_OverflowError)) ||
                         (PyUnicode_Check(value) && !PyErr_ExceptionMatches(PyExc_MemoryError));
    return isUnfit ? Complain(type, value) : -1;
  }
  return type != HOST_DATA_NONE && data.Type() != type ? Complain(type, value) : 0;
}

// As the host's dialogs do: a node that changed is told so, unless it went meanwhile.
bool StoreItem(AtomWrapper* wrapper, QLXAtom* host, const DescID& id, const GeData& data) {
  const uint32_t before = host->GetDirty(DIRTYFLAGS_DATA);
  if (!SetParameterData(host, id, data, DESCFLAGS_SET_USERINTERACTION)) return false;
  host = static_cast<QLXAtom*>(LookUp(wrapper->link));
  if (host && host->GetDirty(DIRTYFLAGS_DATA) != before) host->Message(HOST_MSG_CHANGE, nullptr);
  return true;
}

}  // namespace

bool DescIDFromPython(PyObject* key, const char* function, const char* what, DescID& id) {
  if (PyLong_Check(key)) {
    int32_t number = 0;
    if (!ReadInt32(key, number)) return false;
    id.PushId({number, 0, 0});
    return true;
  }
  if (IsDescID(key)) {
    id = ValueOf<DescID>(key);
    return true;
  }
  if (PyTuple_Check(key) || PyList_Check(key) || PyDict_Check(key)) return LevelsFromPython(key, id);
  RaiseExpectedTypeFor(function, what, key);
  return false;
}

bool ReadDescID(PyObject* key, const char* function, DescID& id) {
  return DescIDFromPython(key, function, "Description identifier", id);
}

bool SetParameterData(QLXAtom* host, const DescID& id, const GeData& data, int32_t flags) {
  const HostDescID word = id.Word();
  if (data.Type() != HOST_DATA_STRING) return host->SetParameter(&word, data.Data(), flags);
  HostLink link;
  if (!SetLink(host, link)) return false;
  Description* description = host->GetDescription(0);
  // The element's own code may have destroyed it.
  host = static_cast<QLXAtom*>(LookUp(link));
  FreeLink(link);
  if (!description) return false;
  HostDescID found{}, group{};
  // Of a path the last level has the type of the value.
  const int32_t index = description->Find(&word);
  const bool isFile = index >= 0 && description->GetIndex(index, &found, &group) && found.depth > 0 &&
                      found.level[found.depth - 1].dtype == HOST_DATA_FILENAME;
  description->Free();
  if (!host) return false;
  Filename name;
  if (isFile && !FilenameFromText(data.GetString(), name)) return false;
  const GeData file = isFile ? GeData::Filename(name) : GeData();
  return host->SetParameter(&word, isFile ? file.Data() : data.Data(), flags);
}

PyObject* GetParameterItem(PyObject* self, PyObject* key) {
  return Guarded([&]() -> PyObject* {
    auto* wrapper = reinterpret_cast<AtomWrapper*>(self);
    QLXAtom* host;
    DescID id;
    GeData data;
    if (!ResolveAtom(wrapper, host) || !ReadDescID(key, "GeListNode_mp_subscript", id)) return nullptr;
    if (!Complete(wrapper, id, data)) return ResolveAtom(wrapper, host) ? RaiseParameterAccess() : nullptr;
    return ParameterToPython(wrapper, data);
  });
}

int SetParameterItem(PyObject* self, PyObject* key, PyObject* value) {
  PyObject* done = Guarded([&]() -> PyObject* {
    auto* wrapper = reinterpret_cast<AtomWrapper*>(self);
    QLXAtom* host;
    DescID id;
    GeData data;
    if (!ResolveAtom(wrapper, host) || !ReadDescID(key, "GeListNode_ass_subscript", id)) return nullptr;
    const bool complete = Complete(wrapper, id, data);
    if (!ResolveAtom(wrapper, host)) return nullptr;
    if (!value) {
      SetParameterData(host, id, GeData(), DESCFLAGS_SET_USERINTERACTION);  // what can't be reset stays
      return Py_None;
    }
    if (!complete) return Complain(HOST_DATA_NONE, value), nullptr;
    if (ConvertFor(value, data) < 0) return nullptr;
    // The value's own code may have destroyed the node.
    if (!ResolveAtom(wrapper, host)) return nullptr;
    if (StoreItem(wrapper, host, id, data)) return Py_None;
    return PyErr_Occurred() ? nullptr : RaiseParameterSet();
  });
  return done ? 0 : -1;
}

PyObject* ParameterToPython(AtomWrapper* wrapper, const GeData& data) {
  // Only links want the document, which costs a walk.
  auto* host = data.Type() == HOST_DATA_LINK ? static_cast<GeListNode*>(LookUp(wrapper->link)) : nullptr;
  return GeDataToPython(*data.Data(), host ? host->GetDocument() : nullptr);
}

}  // namespace qlx
