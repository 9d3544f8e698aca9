// The entries of a container by the types that scripts name.

#include "values/containers.h"

#include <cmath>
#include <limits>
#include <string_view>

#include "kelvar/text.h"
#include "kit/i_conversion.h"
#include "kit/i_errors.h"
#include "kit/i_present.h"
#include "values/values.h"

namespace qlx::containers {
namespace {

constexpr int32_t kObject = 5155;
constexpr int32_t kMaterial = 5702;

const HostGeData* Find(BaseContainer* self, int32_t id, int32_t type) {
  const HostGeData* data = self->FindData(id);
  return data && data->type == type ? data : nullptr;
}

bool IsInteger(const HostGeData& data) { return data.type == HOST_DATA_INT32 || data.type == HOST_DATA_INT64; }

// Numbers out of the range of an integer go to its nearest end; what is no number is 0.
template <class Integer>
Integer Rounded(double value) {
  constexpr auto kLowest = double(std::numeric_limits<Integer>::min());
  if (std::isnan(value)) return 0;
  if (value >= -kLowest) return std::numeric_limits<Integer>::max();
  return value <= kLowest ? std::numeric_limits<Integer>::min() : Integer(value);
}

// An integer that is too large is cut.
template <class Integer>
Integer GetInteger(BaseContainer* self, int32_t id, Integer preset) {
  const HostGeData* data = self->FindData(id);
  if (data && IsInteger(*data)) return Integer(data->value.integer);
  return data && data->type == HOST_DATA_FLOAT ? Rounded<Integer>(data->value.real) : preset;
}

String TextOf(BaseContainer* self, int32_t id, const String& preset) {
  const HostGeData* data = self->FindData(id);
  if (data && data->type == HOST_DATA_STRING) return GeData::Copy(*data).GetString();
  if (data && data->type == HOST_DATA_FILENAME) return GeData::Copy(*data).GetFilename().GetString();
  return preset;
}

PyObject* Store(BaseContainer* self, int32_t id, const GeData& data) {
  return self->SetData(id, data.Data()) ? NewNone() : PyErr_NoMemory();
}

// Custom data has ids of plug-ins as types.
constexpr int32_t kFirstCustom = 1000000;

}  // namespace

bool GetBool(BaseContainer* self, int32_t id, bool preset) {
  const HostGeData* data = self->FindData(id);
  if (data && IsInteger(*data)) return data->value.integer != 0;
  return data && data->type == HOST_DATA_FLOAT ? data->value.real != 0 : preset;
}

int32_t GetInt32(BaseContainer* self, int32_t id, int32_t preset) { return GetInteger(self, id, preset); }

int64_t GetInt64(BaseContainer* self, int32_t id, int64_t preset) { return GetInteger(self, id, preset); }

double GetFloat(BaseContainer* self, int32_t id, double preset) {
  const HostGeData* data = self->FindData(id);
  if (data && IsInteger(*data)) return double(data->value.integer);
  return data && data->type == HOST_DATA_FLOAT ? data->value.real : preset;
}

Vector GetVector(BaseContainer* self, int32_t id, const Vector& preset) {
  const HostGeData* data = Find(self, id, HOST_DATA_VECTOR);
  return data ? data->value.vector : preset;
}

Matrix GetMatrix(BaseContainer* self, int32_t id, const Matrix& preset) {
  const HostGeData* data = Find(self, id, HOST_DATA_MATRIX);
  const Matrix* matrix = data ? kelvar::gedata::GetMatrix(data) : nullptr;
  return matrix ? *matrix : preset;
}

String GetString(BaseContainer* self, int32_t id, const String& preset) { return TextOf(self, id, preset); }
String GetFilename(BaseContainer* self, int32_t id, const String& preset) { return TextOf(self, id, preset); }

PyObject* GetUuid(BaseContainer* self, int32_t id, const Uuid& preset) {
  const HostGeData* data = Find(self, id, HOST_DATA_UUID);
  const Uuid uuid = data ? data->value.uuid : preset;
  return UuidToPython(uuid);
}

BaseTime GetTime(BaseContainer* self, int32_t id, const BaseTime& preset) {
  const HostGeData* data = Find(self, id, HOST_DATA_TIME);
  return data ? data->value.time : preset;
}

PyObject* GetContainer(BaseContainer* self, int32_t id) {
  const HostGeData* data = Find(self, id, HOST_DATA_CONTAINER);
  const BaseContainer* container = data ? kelvar::gedata::GetContainer(data) : nullptr;
  return container ? NewContainerCopy(*container) : NewNone();
}

BaseList2D* GetLink(BaseContainer* self, int32_t id, BaseDocument* document, int32_t isInstanceOf) {
  const HostGeData* data = Find(self, id, HOST_DATA_LINK);
  if (!data) return nullptr;
  const HostLink link = data->value.link;  // the element's own code may change the container
  const QLXAtom* linked = LookUpIn(link, document);
  if (!linked || (isInstanceOf != 0 && !linked->IsInstanceOf(isInstanceOf))) return nullptr;
  return static_cast<BaseList2D*>(LookUp(link));
}

BaseList2D* GetObjectLink(BaseContainer* self, int32_t id, BaseDocument* document) {
  return GetLink(self, id, document, kObject);
}
BaseList2D* GetMaterialLink(BaseContainer* self, int32_t id, BaseDocument* document) {
  return GetLink(self, id, document, kMaterial);
}

PyObject* GetVoid(BaseContainer* self, int32_t id, CapsuleRecord* preset) {
  if (const HostGeData* data = Find(self, id, HOST_DATA_POINTER)) return GeDataToPython(*data, nullptr);
  if (!preset) return NewNone();
  Py_INCREF(&preset->ob_base);
  return &preset->ob_base;
}

PyObject* GetCustomDataType(BaseContainer* self, int32_t id) {
  const HostGeData* data = self->FindData(id);
  return data && data->type >= kFirstCustom ? GeDataToPython(*data, nullptr) : NewNone();
}

PyObject* SetBool(BaseContainer* self, int32_t id, bool value) { return Store(self, id, GeData::Int32(value)); }
PyObject* SetInt32(BaseContainer* self, int32_t id, int32_t value) {
  return Store(self, id, GeData::Int32(value));
}
PyObject* SetInt64(BaseContainer* self, int32_t id, int64_t value) {
  return Store(self, id, GeData::Int64(value));
}
PyObject* SetFloat(BaseContainer* self, int32_t id, double value) {
  return Store(self, id, GeData::Float(value));
}
PyObject* SetVector(BaseContainer* self, int32_t id, const Vector& value) {
  return Store(self, id, GeData::Vector(value));
}
PyObject* SetMatrix(BaseContainer* self, int32_t id, const Matrix& value) {
  return Store(self, id, GeData::Matrix(value));
}
PyObject* SetString(BaseContainer* self, int32_t id, const String& value) {
  return Store(self, id, GeData::String(value));
}
PyObject* SetFilename(BaseContainer* self, int32_t id, const String& value) {
  Filename name;
  return FilenameFromText(value, name) ? Store(self, id, GeData::Filename(name)) : nullptr;
}
PyObject* SetUuid(BaseContainer* self, int32_t id, const Uuid& value) {
  return Store(self, id, GeData::Uuid(value));
}
PyObject* SetTime(BaseContainer* self, int32_t id, const BaseTime& value) {
  return Store(self, id, GeData::Time(value));
}
PyObject* SetContainer(BaseContainer* self, int32_t id, BaseContainer* value) {
  return Store(self, id, GeData::Container(value));
}

PyObject* SetLink(BaseContainer* self, int32_t id, BaseList2D* link) {
  HostLink words{};
  if (!qlx::SetLink(link, words)) return PyErr_NoMemory();
  return Store(self, id, GeData::Link(words));
}

PyObject* SetVoid(BaseContainer* self, int32_t id, CapsuleRecord* value) {
  PyObject* capsule = &value->ob_base;
  const char* name = PyCapsule_GetName(capsule);
  void* pointer = name || !PyErr_Occurred() ? PyCapsule_GetPointer(capsule, name) : nullptr;
  return pointer ? Store(self, id, GeData::Pointer(pointer)) : nullptr;
}

PyObject* GetData(BaseContainer* self, int32_t id) {
  const HostGeData* data = self->FindData(id);
  return data ? GeDataToPython(*data, nullptr) : NewNone();
}

// The value's own code may destroy what holds the container: it is converted first.
PyObject* SetData(PyObject* self, int32_t id, PyObject* value) {
  GeData data;
  if (!GeDataFromPython(value, data)) return nullptr;
  BaseContainer* container = BaseContainerOf(self);
  return container ? Store(container, id, data) : nullptr;
}

PyObject* GetIndexData(BaseContainer* self, int32_t index) {
  const HostGeData* data = self->GetIndexData(index);
  return data ? GeDataToPython(*data, nullptr) : NewNone();
}

bool SetIndexData(BaseContainer* self, int32_t index, const GeData& data) {
  return self->SetIndexData(index, data.Data());
}

bool InsData(BaseContainer* self, int32_t id, const GeData& data) { return self->InsData(id, data.Data()); }

PyObject* InsDataAfter(BaseContainer* self, int32_t id, const GeData& data, IntRecord* last) {
  int32_t index;
  if (!ReadInt32(&last->ob_base, index)) return nullptr;
  return ToPython(bool(self->InsDataAfter(id, data.Data(), index)));
}

int32_t GetType(BaseContainer* self, int32_t id) {
  const HostGeData* data = self->FindData(id);
  return data ? data->type : 0;
}

namespace {

PyObject* Adopt(BaseContainer* made) {
  return made ? NewBaseContainer(made, true, false, nullptr) : PyErr_NoMemory();
}

// The natural type of a value is the one that it had, but for these three.
bool Restore(PyObject* value, int32_t type, GeData& data) {
  if (type == HOST_DATA_INT64) {
    const long long number = PyLong_AsLongLong(value);
    data = GeData::Int64(number);
    return number != -1 || !PyErr_Occurred();
  }
  if (type == HOST_CUSTOM_COLORA) data = GeData::Custom(ColorA{});
  if (type != HOST_DATA_FILENAME) return GeDataFromPython(value, data);
  PyObject* bytes = nullptr;
  if (!PyUnicode_FSConverter(value, &bytes)) return false;
  const std::string_view path(PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes)));
  data = GeData::Filename(Filename::FromString(kelvar::Text(path)));
  Py_DECREF(bytes);
  return true;
}

bool RestoreEntry(PyObject* entry, BaseContainer& into) {
  int32_t id, type;
  PyObject* value;
  if (!PyTuple_Check(entry)) {
    RaiseExpectedTypeFor("__setstate__", "tuple", entry);
    return false;
  }
  GeData data;
  if (!PyArg_ParseTuple(entry, "iiO:__setstate__", &id, &type, &value) || !Restore(value, type, data))
    return false;
  return into.InsData(id, data.Data()) || PyErr_NoMemory();
}

PyObject* StateOf(const BaseContainer& container, int32_t index) {
  const HostGeData* data = container.GetIndexData(index);
  const int32_t id = container.GetIndexId(index), type = data->type;
  if (type == HOST_DATA_LINK || type == HOST_DATA_POINTER) return RaiseNotPickled(id);
  PyObject* value = GeDataToPython(*data, nullptr);
  return value ? Py_BuildValue("(iiN)", id, type, value) : nullptr;
}

}  // namespace

PyObject* GetClone(BaseContainer* self, int32_t flags, AliasTransRecord*) {
  BaseContainer* made = BaseContainer::Alloc(0);
  if (!made || self->CopyTo(made, flags)) return Adopt(made);
  made->Free();
  return PyErr_NoMemory();
}

bool CopyTo(BaseContainer* self, BaseContainer* dst, int32_t flags, AliasTransRecord*) {
  return self->CopyTo(dst, flags);
}

PyObject* Copy(BaseContainer* self) { return Adopt(self->GetClone()); }
PyObject* DeepCopy(BaseContainer* self, PyObject*) { return Copy(self); }

// Of a copy, because conversions may run a script's code.
PyObject* Reduce(PyObject* self) {
  const BaseContainer* original = BaseContainerOf(self);
  PyObject* copy = original ? Adopt(original->GetClone()) : nullptr;
  if (!copy) return nullptr;
  const BaseContainer& container = *BaseContainerOf(copy);
  PyObject* entries = PyList_New(0);
  for (int32_t i = 0; entries && i < container.GetCount(); ++i) {
    PyObject* entry = StateOf(container, i);
    if (!entry || PyList_Append(entries, entry) < 0) Py_CLEAR(entries);
    Py_XDECREF(entry);
  }
  PyObject* result = entries ? Py_BuildValue("(O(i)N)", Py_TYPE(self), container.GetId(), entries) : nullptr;
  Py_DECREF(copy);
  return result;
}

PyObject* SetState(PyObject* self, PyObject* entries) {
  PyObject* fixed = PySequence_Tuple(entries);
  PyObject* made = fixed ? Adopt(BaseContainer::Alloc(0)) : nullptr;
  bool restored = made != nullptr;
  for (Py_ssize_t i = 0; restored && i < PyTuple_GET_SIZE(fixed); ++i)
    restored = RestoreEntry(PyTuple_GET_ITEM(fixed, i), *BaseContainerOf(made));
  Py_XDECREF(fixed);
  BaseContainer* container = restored ? BaseContainerOf(self) : nullptr;
  if (container) {
    const int32_t id = container->GetId();
    restored = BaseContainerOf(made)->CopyTo(container, 0) || PyErr_NoMemory();
    container->SetId(id);
  }
  Py_XDECREF(made);
  return container && restored ? NewNone() : nullptr;
}

}  // namespace qlx::containers
