// The values of the package.
#ifndef VALUES_VALUES_H
#define VALUES_VALUES_H

#include <Python.h>

#include "kelvar.framework/source/tables/t_values.h"
#include "kelvar/container.h"
#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_VectorType;
extern PyTypeObject g_BaseContainerType;

// Values that the record holds itself: no host object, no gate that fails.
struct VectorRecord {
  PyObject ob_base;
  Vector value;
};

bool IsVector(PyObject* object);
PyObject* NewVector(const Vector& value);
// The value of a qlx.Vector; SystemError and null for another object.
Vector* VectorOf(PyObject* object);

template <>
struct Present<Vector> {
  static PyTypeObject& Type() { return g_VectorType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, Vector*& value) { return (value = VectorOf(object)) != nullptr; }
  static PyObject* Wrap(const Vector& value) { return NewVector(value); }
};

// A container: its own (owned), or part of a host object, with which it dies.
struct ContainerRecord {
  PyObject ob_base;
  bool dead;  // was marked: what it showed has gone
  BaseContainer* data;
  bool owned;         // frees the data
  HostLink hostLink;  // to the object that owns the data; empty for a free-standing one
};

bool IsBaseContainer(PyObject* object);
// With `host`, a view of the container of that object. An owned container is freed on failure.
PyObject* NewBaseContainer(BaseContainer* data, bool owned, QLXAtom* host);
// ReferenceError for a dead one and one whose object has gone, SystemError for another object.
BaseContainer* BaseContainerOf(PyObject* object);
// The record is dead from here: what it showed goes after a call.
void MarkContainerDead(PyObject* object);

template <>
struct TypeOf<BaseContainer> {
  static PyTypeObject& Get() { return g_BaseContainerType; }
};

template <>
struct Present<BaseContainer> {
  static PyTypeObject& Type() { return g_BaseContainerType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, BaseContainer*& host) {
    return (host = BaseContainerOf(object)) != nullptr;
  }
  static PyObject* Wrap(BaseContainer* host, bool owned) { return NewBaseContainer(host, owned, nullptr); }
  // The container of an element: `owner` is the element's wrapper.
  static PyObject* WrapPart(BaseContainer* host, PyObject* owner);
};

}  // namespace qlx

#endif
