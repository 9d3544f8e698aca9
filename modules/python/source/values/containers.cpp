// The entries of a container by the types that scripts name.

#include "values/containers.h"

#include <cmath>

#include "kit/i_conversion.h"
#include "kit/i_present.h"
#include "values/values.h"

namespace qlx::containers {
namespace {

const HostGeData* Find(BaseContainer* self, int32_t id, int32_t type) {
  const HostGeData* data = self->FindData(id);
  return data && data->type == type ? data : nullptr;
}

bool IsInteger(const HostGeData& data) { return data.type == HOST_DATA_INT32 || data.type == HOST_DATA_INT64; }

// Numbers out of the range of an integer go to its nearest end; what is no number is 0.
int64_t Rounded(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 9223372036854775808.0) return INT64_MAX;
  return value <= -9223372036854775808.0 ? INT64_MIN : int64_t(value);
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

}  // namespace

bool GetBool(BaseContainer* self, int32_t id, bool preset) {
  const HostGeData* data = self->FindData(id);
  if (data && IsInteger(*data)) return data->value.integer != 0;
  return data && data->type == HOST_DATA_FLOAT ? data->value.real != 0 : preset;
}

int32_t GetInt32(BaseContainer* self, int32_t id, int32_t preset) {
  return int32_t(GetInt64(self, id, preset));
}

int64_t GetInt64(BaseContainer* self, int32_t id, int64_t preset) {
  const HostGeData* data = self->FindData(id);
  if (data && IsInteger(*data)) return data->value.integer;
  return data && data->type == HOST_DATA_FLOAT ? Rounded(data->value.real) : preset;
}

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

BaseList2D* GetLink(BaseContainer* self, int32_t id, BaseList2D*, int32_t isInstanceOf) {
  const HostGeData* data = Find(self, id, HOST_DATA_LINK);
  auto* linked = data ? static_cast<BaseList2D*>(LookUp(data->value.link)) : nullptr;
  return linked && (isInstanceOf == 0 || linked->IsInstanceOf(isInstanceOf)) ? linked : nullptr;
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
  return Store(self, id, GeData::Filename(Filename::FromString(value)));
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

PyObject* FindIndex(BaseContainer* self, int32_t id) {
  const int32_t index = self->FindIndex(id);
  if (index < 0) return NewNone();
  PyObject* value = GetIndexData(self, index);
  return value ? Py_BuildValue("{s:i,s:N}", "index", index, "ppData", value) : nullptr;
}

int32_t GetType(BaseContainer* self, int32_t id) {
  const HostGeData* data = self->FindData(id);
  return data ? data->type : 0;
}

}  // namespace qlx::containers
