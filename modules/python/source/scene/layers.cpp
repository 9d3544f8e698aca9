// What the layer of an element says, as a dictionary.

#include "scene/layers.h"

#include "kit/i_errors.h"
#include "values/values.h"

namespace qlx::layers {
namespace {

constexpr struct {
  const char* key;
  HostBool HostLayerData::*field;
} kFlags[] = {
    {"solo", &HostLayerData::solo},           {"view", &HostLayerData::view},
    {"render", &HostLayerData::render},       {"manager", &HostLayerData::manager},
    {"locked", &HostLayerData::locked},       {"generators", &HostLayerData::generators},
    {"deformers", &HostLayerData::deformers}, {"expressions", &HostLayerData::expressions},
    {"animation", &HostLayerData::animation}, {"xref", &HostLayerData::xref},
};

bool Store(PyObject* dictionary, const char* key, PyObject* value) {
  const bool stored = value && PyDict_SetItemString(dictionary, key, value) == 0;
  Py_XDECREF(value);
  return stored;
}

bool ReadColor(PyObject* value, HostLayerData& data) {
  if (IsVector(value)) {
    data.color = ValueOf<Vector>(value);
    return true;
  }
  RaiseExpectedTypeFor("BaseList2D.SetLayerData", g_VectorType.tp_name, value);
  return false;
}

bool ReadFlag(PyObject* value, HostBool& flag) {
  if (!PyLong_Check(value)) {
    RaiseExpectedTypeFor("BaseList2D.SetLayerData", "bool", value);
    return false;
  }
  int overflow;
  flag = PyLong_AsLongAndOverflow(value, &overflow) != 0;  // what is too large isn't zero
  return true;
}

bool ReadItem(PyObject* key, PyObject* value, HostLayerData& data) {
  if (!PyUnicode_Check(key)) return true;
  if (PyUnicode_CompareWithASCIIString(key, "color") == 0) return ReadColor(value, data);
  for (const auto& flag : kFlags)
    if (PyUnicode_CompareWithASCIIString(key, flag.key) == 0) return ReadFlag(value, data.*flag.field);
  return true;
}

}  // namespace

PyObject* GetData(BaseList2D* self, BaseDocument* doc, bool raw) {
  HostLayerData data{};
  if (!self->GetLayerData(doc, &data, raw)) return NewNone();
  PyObject* dictionary = PyDict_New();
  bool stored = dictionary && Store(dictionary, "color", NewVector(data.color));
  for (const auto& flag : kFlags)
    stored = stored && Store(dictionary, flag.key, PyBool_FromLong(data.*flag.field));
  if (!stored) Py_CLEAR(dictionary);
  return dictionary;
}

// Keys that are no field's are left alone. Walked by hand: a look-up may run the code of other keys.
PyObject* SetData(BaseList2D* self, BaseDocument* doc, PyObject* dictionary) {
  if (!PyDict_Check(dictionary)) {
    RaiseExpectedTypeFor("BaseList2D.SetLayerData", "dict", dictionary);
    return nullptr;
  }
  HostLayerData data{};
  if (!self->GetLayerData(doc, &data, true)) data = {};
  PyObject *key, *value;
  for (Py_ssize_t at = 0; PyDict_Next(dictionary, &at, &key, &value);)
    if (!ReadItem(key, value, data)) return nullptr;
  return ToPython(self->SetLayerData(doc, &data));
}

}  // namespace qlx::layers
