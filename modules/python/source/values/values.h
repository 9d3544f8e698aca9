// The values of the package.
#ifndef VALUES_VALUES_H
#define VALUES_VALUES_H

#include <Python.h>

#include "kelvar.framework/source/tables/t_values.h"
#include "kelvar/container.h"
#include "kelvar/descid.h"
#include "kit/i_arguments.h"
#include "kit/i_pool.h"
#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_VectorType;
extern PyTypeObject g_Vector4dType;
extern PyTypeObject g_MatrixType;
extern PyTypeObject g_QuaternionType;
extern PyTypeObject g_BaseContainerType;

// Values that the record holds itself: no host object, no gate that fails, and no subclass.
template <class Value>
struct ValueRecord {
  PyObject ob_base;
  Value value;
};

template <class Value>
Value& ValueOf(PyObject* self) {
  return reinterpret_cast<ValueRecord<Value>*>(self)->value;
}

template <class Value, PyTypeObject& kType>
struct PresentValue {
  static PyTypeObject& Type() { return kType; }
  static constexpr bool kResolvedFirst = false;

  static bool Is(PyObject* object) { return Py_TYPE(object) == &kType; }

  // SystemError for another object.
  static bool Get(PyObject* object, Value*& value) {
    if (Is(object)) [[likely]] {
      value = &ValueOf<Value>(object);
      return true;
    }
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return false;
  }

  // AllocWrapper in place: scripts make values in their inner loops.
  static PyObject* Wrap(const Value& value) {
    using Record = ValueRecord<Value>;
    PyObject* object = LeakTracker::IsOn() ? AllocWrapper(g_wrapperTracker, &kType)
                                           : RecordPool<sizeof(Record)>::AllocRaw(&kType);
    if (object) [[likely]]
      ValueOf<Value>(object) = value;
    return object;
  }

  static void Free(PyObject* self) {
    if (LeakTracker::IsOn()) g_wrapperTracker.Remove(self);
    RecordPool<sizeof(ValueRecord<Value>)>::Free(self);
  }
};

template <>
struct Present<Vector> : PresentValue<Vector, g_VectorType> {};
template <>
struct Present<Vector4d> : PresentValue<Vector4d, g_Vector4dType> {};
template <>
struct Present<Matrix> : PresentValue<Matrix, g_MatrixType> {};
template <>
struct Present<Quaternion> : PresentValue<Quaternion, g_QuaternionType> {};

inline bool IsVector(PyObject* object) { return Present<Vector>::Is(object); }
inline bool IsVector4d(PyObject* object) { return Present<Vector4d>::Is(object); }
inline bool IsMatrix(PyObject* object) { return Present<Matrix>::Is(object); }
inline bool IsQuaternion(PyObject* object) { return Present<Quaternion>::Is(object); }

inline PyObject* NewVector(const Vector& value) { return Present<Vector>::Wrap(value); }
inline PyObject* NewVector4d(const Vector4d& value) { return Present<Vector4d>::Wrap(value); }
inline PyObject* NewMatrix(const Matrix& value) { return Present<Matrix>::Wrap(value); }
inline PyObject* NewQuaternion(const Quaternion& value) { return Present<Quaternion>::Wrap(value); }

// A container: its own (owned), part of a host object, with which it dies, or what an entry of another
// record's container holds at the moment.
struct ContainerRecord {
  PyObject ob_base;
  bool dead;  // was marked: what it showed has gone
  BaseContainer* data;
  bool owned;         // frees the data
  bool typed;         // an entry keeps its type
  bool instance;      // what IsInstance answers: all but the copies of GetContainer
  int32_t entry;      // the id in the parent's container
  HostLink hostLink;  // to the object that owns the data; empty for a free-standing one
  PyObject* parent;   // the record whose entry this one shows, held; else null
  PyObject* root;     // the parents' first one, which has none itself; held through them
  uint64_t epoch;     // the host's count for which `data` of an entry is valid
};

bool IsBaseContainer(PyObject* object);
// With `host`, a view of the container of that object. In a typed one entries keep their types when a script
// assigns to them. An owned container is freed on failure.
PyObject* NewBaseContainer(BaseContainer* data, bool owned, bool typed, QLXAtom* host);
// A copy that says so: IsInstance answers false.
PyObject* NewContainerCopy(const BaseContainer& data);
// ReferenceError for a dead one and one whose object has gone, SystemError for another object.
BaseContainer* BaseContainerOf(PyObject* object);
// The record is dead from here: what it showed goes after a call.
void MarkContainerDead(PyObject* object);

template <>
struct Present<BaseContainer> {
  static PyTypeObject& Type() { return g_BaseContainerType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, BaseContainer*& host) {
    return (host = BaseContainerOf(object)) != nullptr;
  }
  static PyObject* Wrap(BaseContainer* host, bool owned) {
    return NewBaseContainer(host, owned, false, nullptr);
  }
  // The container of an element: `owner` is the element's wrapper.
  static PyObject* WrapPart(BaseContainer* host, PyObject* owner);
};

// The address of a parameter, its levels, times, and polygons.

extern PyTypeObject g_DescLevelType;
extern PyTypeObject g_DescIDType;
extern PyTypeObject g_BaseTimeType;
extern PyTypeObject g_CPolygonType;

template <>
struct Present<DescLevel> : PresentValue<DescLevel, g_DescLevelType> {};
template <>
struct Present<BaseTime> : PresentValue<BaseTime, g_BaseTimeType> {};
template <>
struct Present<CPolygon> : PresentValue<CPolygon, g_CPolygonType> {};

// An id may own memory: it is made and ended in place.
template <>
struct Present<DescID> : PresentValue<DescID, g_DescIDType> {
  static PyObject* Wrap(const DescID& value);
  static void Free(PyObject* self);
};

inline bool IsDescLevel(PyObject* object) { return Present<DescLevel>::Is(object); }
inline bool IsDescID(PyObject* object) { return Present<DescID>::Is(object); }
inline bool IsBaseTime(PyObject* object) { return Present<BaseTime>::Is(object); }

inline PyObject* NewDescLevel(const DescLevel& value) { return Present<DescLevel>::Wrap(value); }
inline PyObject* NewDescID(const DescID& value) { return Present<DescID>::Wrap(value); }
inline PyObject* NewCPolygon(const CPolygon& value) { return Present<CPolygon>::Wrap(value); }
inline PyObject* NewBaseTime(const BaseTime& value) { return Present<BaseTime>::Wrap(value); }

// Arguments by the letter "O!".
using DescLevelRecord = ValueRecord<DescLevel>;
using DescIDRecord = ValueRecord<DescID>;
using CPolygonRecord = ValueRecord<CPolygon>;

template <>
struct RecordType<DescLevelRecord> {
  static PyTypeObject& Get() { return g_DescLevelType; }
};
template <>
struct RecordType<DescIDRecord> {
  static PyTypeObject& Get() { return g_DescIDType; }
};
template <>
struct RecordType<CPolygonRecord> {
  static PyTypeObject& Get() { return g_CPolygonType; }
};

// What `__format__` answers: `made` by the spec, and the text of an object by it. The first takes `made` over,
// and null with its exception.
PyObject* FormatMade(PyObject* made, PyObject* spec);
PyObject* FormatText(PyObject* self, PyObject* spec);

// The value of an int; OverflowError and false out of range.
bool ReadInt32(PyObject* integer, int32_t& value);

}  // namespace qlx

#endif
