// Typed views of Python's dicts, lists and tuples, as messages and results of the host use them: the C++ type
// of a value tells what stands in Python. Lock held in all of these.
#ifndef KIT_I_COLLECTIONS_H
#define KIT_I_COLLECTIONS_H

#include <Python.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bitmaps/bitmaps.h"
#include "kit/i_conversion.h"
#include "kit/i_errors.h"
#include "kit/i_present.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {

// What a getter answers.
enum Lookup { kMissing = 0, kRefused = 1, kFound = 2 };  // an exception is pending when refused

// An object that a view borrows: a list or a tuple in a dict is read as one.
class CollectionRef {
 public:
  explicit CollectionRef(PyObject* object = nullptr) : object_(object) {}
  PyObject* Object() const { return object_; }

 protected:
  PyObject* object_;
};

// How values of a type stand in Python: the word of messages, the test, the reading of what has passed
// it (false with an exception), and the object that is made of a value. A type that is only set has no test.
template <class T>
struct KindOf;

class PyDictRef : public CollectionRef {
 public:
  using CollectionRef::CollectionRef;

  // False with an exception. Null for None; a null node or picture is None, a container is copied, an object
  // gets one more reference.
  template <class T>
  bool Set(const char* key, const T& value) {
    return Put(key, KindOf<T>::Make(value));
  }
  // What is read is the dict's, and borrowed, but for a PyObject*, which is a new reference.
  template <class T>
  Lookup Get(const char* key, T& value) const;

 private:
  bool Put(const char* key,
           PyObject* value);              // takes the reference over; null is a value that could not be made
  PyObject* Find(const char* key) const;  // borrowed; null with or without an exception
};

class PyListRef : public CollectionRef {
 public:
  using CollectionRef::CollectionRef;

  template <class T>
  bool Append(const T& value) {
    return Put(KindOf<T>::Make(value));
  }
  template <class T>
  Lookup Get(Py_ssize_t index, T& value) const;

 private:
  bool Put(PyObject* value);
};

// Of a new tuple, which is filled from its first place on.
class PyTupleRef : public CollectionRef {
 public:
  using CollectionRef::CollectionRef;

  template <class T>
  bool Set(const T& value) {
    return Put(KindOf<T>::Make(value));
  }
  template <class T>
  Lookup Get(Py_ssize_t index, T& value) const;

 private:
  bool Put(PyObject* value);
  Py_ssize_t next_ = 0;
};

// The kinds.

// Numbers and texts, made by the `ToPython` of their type.
template <class T>
struct PlainKind {
  static PyObject* Make(const T& value) { return ToPython(value); }
};

template <>
struct KindOf<bool> : PlainKind<bool> {
  static const char* Word() { return "bool"; }
  static bool Is(PyObject* object) { return PyBool_Check(object); }
  static bool Read(PyObject* object, bool& value) { return value = object == Py_True, true; }
};

template <>
struct KindOf<int32_t> : PlainKind<int32_t> {
  static const char* Word() { return "int"; }
  static bool Is(PyObject* object) { return PyLong_Check(object); }
  static bool Read(PyObject* object, int32_t& value) { return ReadInt32(object, value); }
};

template <>
struct KindOf<int64_t> : PlainKind<int64_t> {
  static const char* Word() { return "int"; }
  static bool Is(PyObject* object) { return PyLong_Check(object); }
  static bool Read(PyObject* object, int64_t& value) {
    value = PyLong_AsLongLong(object);
    return value != -1 || !PyErr_Occurred();
  }
};

template <>
struct KindOf<double> : PlainKind<double> {
  static const char* Word() { return "float"; }
  static bool Is(PyObject* object) { return PyFloat_Check(object); }
  static bool Read(PyObject* object, double& value) { return value = PyFloat_AS_DOUBLE(object), true; }
};

// It tests for a float and then reads a text, so nothing is ever found; scripts rely on the messages.
template <>
struct KindOf<char> {
  static const char* Word() { return "float"; }
  static bool Is(PyObject* object) { return PyFloat_Check(object); }
  static bool Read(PyObject* object, char& value);
  static PyObject* Make(char value) { return PyUnicode_FromOrdinal(uint8_t(value)); }
};

template <>
struct KindOf<String> : PlainKind<String> {
  static const char* Word() { return "str"; }
  static bool Is(PyObject* object) { return PyUnicode_Check(object); }
  static bool Read(PyObject* object, String& value) { return StringFromPython(object, value); }
};

template <>
struct KindOf<Filename> : PlainKind<Filename> {
  static const char* Word() { return "str"; }
  static bool Is(PyObject* object) { return PyUnicode_Check(object); }
  static bool Read(PyObject* object, Filename& value) { return FilenameFromPython(object, value); }
};

// Values that a record holds.
template <class Value>
struct ValueKind {
  static const char* Word() { return Present<Value>::Type().tp_name; }
  static bool Is(PyObject* object) { return Present<Value>::Is(object); }
  static bool Read(PyObject* object, Value& value) { return value = ValueOf<Value>(object), true; }
  static PyObject* Make(const Value& value) { return Present<Value>::Wrap(value); }
};

template <>
struct KindOf<Vector> : ValueKind<Vector> {};
template <>
struct KindOf<Matrix> : ValueKind<Matrix> {};
template <>
struct KindOf<DescLevel> : ValueKind<DescLevel> {};
template <>
struct KindOf<CPolygon> : ValueKind<CPolygon> {};
template <>
struct KindOf<DescID> : ValueKind<DescID> {};
template <>
struct KindOf<BaseTime> : ValueKind<BaseTime> {
  static bool Read(PyObject* object, BaseTime& value) { return value = TimeFromPython(object), true; }
};

template <>
struct KindOf<Uuid> {
  static PyObject* Make(const Uuid& value) { return UuidToPython(value); }
};
template <>
struct KindOf<GeData> {
  static PyObject* Make(const GeData& value) { return GeDataToPython(*value.Data(), nullptr); }
};
template <>
struct KindOf<std::nullptr_t> {
  static PyObject* Make(std::nullptr_t) { return NewNone(); }
};

template <>
struct KindOf<BaseContainer*> {
  static const char* Word() { return g_BaseContainerType.tp_name; }
  static bool Is(PyObject* object) { return IsBaseContainer(object); }
  static bool Read(PyObject* object, BaseContainer*& value) { return (value = BaseContainerOf(object)); }
  static PyObject* Make(const BaseContainer* value);
};

// Words of the host, which are copied; what is read needs a place of its own.
template <>
struct KindOf<HostDescID> {
  static PyObject* Make(const HostDescID& value) { return NewDescID(DescID::Copy(value)); }
};
template <>
struct KindOf<HostFilename> {
  static PyObject* Make(const HostFilename& value) {
    return ToPython(Filename::Adopt(tables::filename.Copy(&value)));
  }
};

// Host objects, whose wrappers own nothing.
template <class Host>
struct ObjectKind {
  static const char* Word() { return Present<Host>::Type().tp_name; }
  static bool Is(PyObject* object) { return PyObject_TypeCheck(object, &Present<Host>::Type()); }
  static bool Read(PyObject* object, Host*& value) { return Present<Host>::Get(object, value); }
  static PyObject* Make(Host* value) { return value ? Present<Host>::Wrap(value, false) : NewNone(); }
};

template <>
struct KindOf<BaseBitmap*> : ObjectKind<BaseBitmap> {};
// Nodes are one kind to scripts, whatever class of them is wanted.
template <std::derived_from<QLXAtom> Atom>
struct KindOf<Atom*> : ObjectKind<Atom> {
  using Own = ObjectKind<Atom>;
  static const char* Word() { return g_GeListNodeType.tp_name; }
  static bool Is(PyObject* object) { return PyObject_TypeCheck(object, &g_GeListNodeType); }
  static bool Read(PyObject* object, Atom*& value) {
    return Own::Is(object) ? Own::Read(object, value) : (RaiseExpectedType(Own::Word(), object), false);
  }
};

// A capsule without a name.
template <>
struct KindOf<void*> {
  static const char* Word() { return "PyCapsule"; }
  static bool Is(PyObject* object) { return PyCapsule_CheckExact(object); }
  static bool Read(PyObject* object, void*& value) {
    return (value = PyCapsule_GetPointer(object, nullptr)) != nullptr;
  }
};

template <>
struct KindOf<PyListRef> {
  static const char* Word() { return "list"; }
  static bool Is(PyObject* object) { return PyList_Check(object); }
  static bool Read(PyObject* object, PyListRef& value) { return value = PyListRef(object), true; }
};
template <>
struct KindOf<PyTupleRef> {
  static const char* Word() { return "tuple"; }
  static bool Is(PyObject* object) { return PyTuple_Check(object); }
  static bool Read(PyObject* object, PyTupleRef& value) { return value = PyTupleRef(object), true; }
};

template <>
struct KindOf<PyObject*> {
  static const char* Word() { return "object"; }
  static bool Is(PyObject*) { return true; }
  static bool Read(PyObject* object, PyObject*& value) { return (value = Make(object)); }
  static PyObject* Make(PyObject* value) {
    Py_XINCREF(value);
    return value;
  }
};

// The item of a collection; null for none, or with an exception.
template <class T>
Lookup ReadItem(PyObject* item, T& value) {
  if (!item) return PyErr_Occurred() ? kRefused : kMissing;
  if (KindOf<T>::Is(item)) return KindOf<T>::Read(item, value) ? kFound : kRefused;
  RaiseExpectedType(KindOf<T>::Word(), item);
  return kRefused;
}

template <class T>
Lookup PyDictRef::Get(const char* key, T& value) const {
  return ReadItem(Find(key), value);
}
template <class T>
Lookup PyListRef::Get(Py_ssize_t index, T& value) const {
  return ReadItem(index >= 0 && index < PyList_GET_SIZE(object_) ? PyList_GET_ITEM(object_, index) : nullptr,
                  value);
}
template <class T>
Lookup PyTupleRef::Get(Py_ssize_t index, T& value) const {
  return ReadItem(index >= 0 && index < PyTuple_GET_SIZE(object_) ? PyTuple_GET_ITEM(object_, index) : nullptr,
                  value);
}

// A list of one kind; reading adds to the value.
template <class T>
struct KindOf<std::vector<T>> {
  static const char* Word() { return "list"; }
  static bool Is(PyObject* object) { return PyList_Check(object); }
  static bool Read(PyObject* object, std::vector<T>& value) {
    const PyListRef list(object);
    Lookup found;
    Py_ssize_t next = 0;
    for (T item{}; (found = list.Get(next++, item)) == kFound;) value.push_back(item);
    return found == kMissing;
  }
  static PyObject* Make(const std::vector<T>& value) {
    PyListRef list(PyList_New(0));
    bool made = list.Object();
    for (size_t i = 0; made && i < value.size(); ++i) made = list.Append(value[i]);
    if (made) return list.Object();
    Py_XDECREF(list.Object());
    return nullptr;
  }
};

}  // namespace qlx

#endif
