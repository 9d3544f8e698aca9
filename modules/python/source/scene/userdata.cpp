// The parameters that a user added to an element.

#include "scene/userdata.h"

#include "kelvar/dynamicdescription.h"
#include "kit/i_row.h"
#include "scene/parameters.h"
#include "values/values.h"

namespace qlx::userdata {
namespace {

constexpr DescLevel kRoot = {700, 5, 0};

// (id, settings), both copies.
PyObject* Pair(const HostDescID& id, const BaseContainer* settings) {
  BaseContainer* copy = settings->GetClone();
  PyObject* container = copy ? NewBaseContainer(copy, true, false, nullptr) : PyErr_NoMemory();  // the record's
  PyObject* object = container ? NewDescID(DescID::Copy(id)) : nullptr;
  PyObject* pair = object ? PyTuple_Pack(2, object, container) : nullptr;
  Py_XDECREF(object);
  Py_XDECREF(container);
  return pair;
}

}  // namespace

PyObject* Add(BaseList2D* self, BaseContainer* settings) {
  DynamicDescription* description = self->GetDynamicDescription();
  HostDescID id{};
  return description && description->Alloc(settings, &id) ? NewDescID(DescID::Copy(id)) : NewNone();
}

PyObject* Remove(BaseList2D* self, PyObject* key) {
  DescID id;
  if (PyLong_Check(key)) {
    DescLevel level{};
    if (!ReadInt32(key, level.id)) return nullptr;
    id.PushId(kRoot);
    id.PushId(level);
  } else if (!ReadDescID(key, "BaseList2D.RemoveUserData", id)) {
    return nullptr;
  }
  DynamicDescription* description = self->GetDynamicDescription();
  const HostDescID word = id.Word();
  return ToPython(description && description->Remove(&word));
}

PyObject* Set(BaseList2D* self, PyObject* key, BaseContainer* settings, BaseList2D* node) {
  DescID id;
  if (!ReadDescID(key, "BaseList2D.SetUserDataContainer", id)) return nullptr;
  DynamicDescription* description = self->GetDynamicDescription();
  const HostDescID word = id.Word();
  return ToPython(description && description->Set(&word, settings, node));
}

PyObject* GetAll(BaseList2D* self) {
  PyObject* list = PyList_New(0);
  DynamicDescription* description = list ? self->GetDynamicDescription() : nullptr;
  DynamicBrowse* browse = description ? description->BrowseInit() : nullptr;
  HostDescID id;
  const BaseContainer* settings;
  while (browse && list && description->GetNext(browse, &id, &settings)) {
    PyObject* pair = Guarded([&] { return Pair(id, settings); });
    if (!pair || PyList_Append(list, pair) < 0) Py_CLEAR(list);
    Py_XDECREF(pair);
  }
  if (browse) description->BrowseFree(browse);
  return list;
}

}  // namespace qlx::userdata
