// The entries of a container by the types that scripts name.
#ifndef VALUES_CONTAINERS_H
#define VALUES_CONTAINERS_H

#include <Python.h>

#include "kelvar/baselist.h"
#include "kelvar/container.h"
#include "kelvar/value.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {

// Arguments by the letter "O!" of the interpreter's own types.

struct IntRecord {
  PyObject ob_base;
};
struct CapsuleRecord {
  PyObject ob_base;
};

template <>
struct RecordType<IntRecord> {
  static PyTypeObject& Get() { return PyLong_Type; }
};
template <>
struct RecordType<CapsuleRecord> {
  static PyTypeObject& Get() { return PyCapsule_Type; }
};

}  // namespace qlx

namespace qlx::containers {

// Numbers of any type are converted, as the host's parameters are; an entry that is missing or of
// another kind gives the preset.
bool GetBool(BaseContainer* self, int32_t id, bool preset);
int32_t GetInt32(BaseContainer* self, int32_t id, int32_t preset);
int64_t GetInt64(BaseContainer* self, int32_t id, int64_t preset);
double GetFloat(BaseContainer* self, int32_t id, double preset);
Vector GetVector(BaseContainer* self, int32_t id, const Vector& preset);
Matrix GetMatrix(BaseContainer* self, int32_t id, const Matrix& preset);
// A file name has its path as text, and a text is taken for one.
String GetString(BaseContainer* self, int32_t id, const String& preset);
String GetFilename(BaseContainer* self, int32_t id, const String& preset);
PyObject* GetUuid(BaseContainer* self, int32_t id, const Uuid& preset);
BaseTime GetTime(BaseContainer* self, int32_t id, const BaseTime& preset);
PyObject* GetContainer(BaseContainer* self, int32_t id);
// A pointer is a PyCapsule, without a name on the way out.
PyObject* GetVoid(BaseContainer* self, int32_t id, CapsuleRecord* preset);
// Null when the entry links nothing that lives, or nothing of the type `isInstanceOf`, where that isn't 0.
BaseList2D* GetLink(BaseContainer* self, int32_t id, BaseDocument* document, int32_t isInstanceOf);
BaseList2D* GetObjectLink(BaseContainer* self, int32_t id, BaseDocument* document);
BaseList2D* GetMaterialLink(BaseContainer* self, int32_t id, BaseDocument* document);
PyObject* GetCustomDataType(BaseContainer* self, int32_t id);

// A new reference in each; null with an exception.
PyObject* SetBool(BaseContainer* self, int32_t id, bool value);
PyObject* SetInt32(BaseContainer* self, int32_t id, int32_t value);
PyObject* SetInt64(BaseContainer* self, int32_t id, int64_t value);
PyObject* SetFloat(BaseContainer* self, int32_t id, double value);
PyObject* SetVector(BaseContainer* self, int32_t id, const Vector& value);
PyObject* SetMatrix(BaseContainer* self, int32_t id, const Matrix& value);
PyObject* SetString(BaseContainer* self, int32_t id, const String& value);
PyObject* SetFilename(BaseContainer* self, int32_t id, const String& value);
PyObject* SetUuid(BaseContainer* self, int32_t id, const Uuid& value);
PyObject* SetTime(BaseContainer* self, int32_t id, const BaseTime& value);
PyObject* SetContainer(BaseContainer* self, int32_t id, BaseContainer* value);
PyObject* SetLink(BaseContainer* self, int32_t id, BaseList2D* link);
PyObject* SetVoid(BaseContainer* self, int32_t id, CapsuleRecord* value);

// Values of any type.
PyObject* GetData(BaseContainer* self, int32_t id);
PyObject* SetData(PyObject* self, int32_t id, PyObject* data);
PyObject* GetIndexData(BaseContainer* self, int32_t index);
bool SetIndexData(BaseContainer* self, int32_t index, const GeData& data);
bool InsData(BaseContainer* self, int32_t id, const GeData& data);
PyObject* InsDataAfter(BaseContainer* self, int32_t id, const GeData& data, IntRecord* last);
int32_t GetType(BaseContainer* self, int32_t id);

// Copies of the whole.
PyObject* GetClone(BaseContainer* self, int32_t flags, AliasTransRecord* trans);
bool CopyTo(BaseContainer* self, BaseContainer* dst, int32_t flags, AliasTransRecord* trans);
PyObject* Copy(BaseContainer* self);
PyObject* DeepCopy(BaseContainer* self, PyObject* memo);

// The pickled form: the own id, and for each entry its id, its type and its value. Links and pointers have
// none.
PyObject* Reduce(PyObject* self);
PyObject* SetState(PyObject* self, PyObject* entries);

}  // namespace qlx::containers

#endif
