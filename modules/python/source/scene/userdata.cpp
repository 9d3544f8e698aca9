// The parameters that a user added to an element.

#include "scene/userdata.h"

#include <utility>
#include <vector>

#include "kelvar/dynamicdescription.h"
#include "kit/i_row.h"
#include "scene/parameters.h"
#include "values/values.h"

namespace qlx::userdata {
namespace {

constexpr DescLevel kRoot = {700, 5, 0};

// (id, settings); the copy is taken over.
PyObject* Pair(const DescID& id, BaseContainer* copy) {
  PyObject* container = copy ? NewBaseContainer(copy, true, false, nullptr) : PyErr_NoMemory();  // the record's
  PyObject* object = container ? NewDescID(id) : nullptr;
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

// Tuples may start the collector of garbage, which may destroy the element: all is copied first.
PyObject* GetAll(AtomWrapper* self) {
  PyObject* list = PyList_New(0);
  QLXAtom* host;
  if (!list || !ResolveAtom(self, host)) {
    Py_XDECREF(list);
    return nullptr;
  }
  std::vector<std::pair<DescID, BaseContainer*>> entries;
  DynamicDescription* description = static_cast<BaseList2D*>(host)->GetDynamicDescription();
  DynamicBrowse* browse = description ? description->BrowseInit() : nullptr;
  HostDescID id;
  const BaseContainer* settings;
  while (browse && description->GetNext(browse, &id, &settings))
    entries.emplace_back(DescID::Copy(id), settings->GetClone());
  if (browse) description->BrowseFree(browse);
  for (const auto& [own, copy] : entries) {
    PyObject* pair = Pair(own, copy);  // also behind a failure: it ends the copy
    if (list && (!pair || PyList_Append(list, pair) < 0)) Py_CLEAR(list);
    Py_XDECREF(pair);
  }
  return list;
}

}  // namespace qlx::userdata
