// qlx.Description: the parameters of an element, as they were when it was asked.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/parameters.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

struct DescriptionRecord {
  PyObject ob_base;
  Description* data;
};

DescriptionRecord* AsRecord(PyObject* object) { return reinterpret_cast<DescriptionRecord*>(object); }

void Free(PyObject* self) {
  if (AsRecord(self)->data) AsRecord(self)->data->Free();
  FreeWrapper(g_wrapperTracker, self);
}

PyObject* SettingsAt(Description* data, int32_t index) {
  const BaseContainer* settings = data->GetSettings(index);
  BaseContainer* copy = settings ? settings->GetClone() : nullptr;
  return copy ? NewBaseContainer(copy, true, false, nullptr) : NewNone();  // the record's
}

PyObject* NewID(const HostDescID& word) {
  return Guarded([&] { return NewDescID(DescID::Copy(word)); });
}

// (settings, id, id of the group)
PyObject* EntryAt(Description* data, int32_t index) {
  HostDescID id{}, group{};
  data->GetIndex(index, &id, &group);
  PyObject* settings = SettingsAt(data, index);
  PyObject* own = settings ? NewID(id) : nullptr;
  PyObject* above = own ? NewID(group) : nullptr;
  PyObject* entry = above ? PyTuple_Pack(3, settings, own, above) : nullptr;
  Py_XDECREF(settings);
  Py_XDECREF(own);
  Py_XDECREF(above);
  return entry;
}

PyObject* Iterate(PyObject* self) {
  Description* data = AsRecord(self)->data;
  PyObject* entries = PyList_New(0);
  for (int32_t i = 0; entries && i < data->GetCount(); ++i) {
    PyObject* entry = EntryAt(data, i);
    if (!entry || PyList_Append(entries, entry) < 0) Py_CLEAR(entries);
    Py_XDECREF(entry);
  }
  PyObject* iterator = entries ? PyObject_GetIter(entries) : nullptr;
  Py_XDECREF(entries);
  return iterator;
}

PyObject* GetParameter(DescriptionRecord* self, PyObject* id) {
  DescID read;
  if (!ReadDescID(id, "Description.GetParameter", read)) return nullptr;
  const HostDescID word = read.Word();
  const int32_t index = self->data->Find(&word);
  return index < 0 ? NewNone() : SettingsAt(self->data, index);
}

PyMethodDef g_methods[] = {
    Method<&GetParameter, "O", "id">(
        "GetParameter",
        "GetParameter(id) -> qlx.BaseContainer or None\n\nThe settings of a parameter, by the DESC ids."),
    {},
};

}  // namespace

PyTypeObject g_DescriptionType = MakeType<DescriptionRecord>({
    .name = "qlx.Description",
    .doc = "The parameters of an element. Iterates over (settings, id, id of the group): a qlx.BaseContainer "
           "and two qlx.DescID.",
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = Free,
    .iterate = Iterate,
});

namespace {
const TypeQueueEntry g_entry(g_DescriptionType);
}

PyObject* NewDescription(Description* data) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_DescriptionType);
  if (object)
    AsRecord(object)->data = data;
  else
    data->Free();
  return object;
}

}  // namespace qlx
