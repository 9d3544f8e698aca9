// How each host class and value is presented to Python: the gate on the way in, the wrapper on
// the way out. A class brings its own specialisation of `Present` beside its type record.
#ifndef KIT_I_PRESENT_H
#define KIT_I_PRESENT_H

#include <Python.h>

#include <concepts>
#include <cstdint>

#include "kelvar/filename.h"
#include "kelvar/string.h"
#include "kit/i_wrapper.h"

namespace qlx {

// The Python type of a host class; specialised by the class' wrapper header as
//   template <> struct TypeOf<BaseObject> { static PyTypeObject& Get(); };
template <class Host>
struct TypeOf;

// What a specialisation offers:
//   static PyTypeObject& Type();
//   static constexpr bool kResolvedFirst;               ahead of the arguments, or behind them
//   static bool Get(PyObject* object, Host*& host);     the gate; raises
//   static PyObject* Wrap(Host* host, bool owned);      a new wrapper of what isn't null
// and a value, which has no gate that fails and no owner, has `static PyObject* Wrap(const Host&)`.
template <class Host>
struct Present;

// A dead object wins over bad arguments.
template <std::derived_from<QLXAtom> Atom>
struct Present<Atom> {
  static PyTypeObject& Type() { return TypeOf<Atom>::Get(); }
  static constexpr bool kResolvedFirst = true;
  static bool Get(PyObject* object, Atom*& host) {
    QLXAtom* atom;
    if (!ResolveAtom(reinterpret_cast<AtomWrapper*>(object), atom)) return false;
    host = static_cast<Atom*>(atom);
    return true;
  }
  static PyObject* Wrap(Atom* host, bool owned) { return WrapHostObject(host, owned); }
};

// Host texts to `str`. Bytes of a text that are not UTF-8 become U+FFFD; those of a file name
// survive the way to Python and back.
PyObject* StringToPython(const String& text);
PyObject* FilenameToPython(const Filename& name);

inline PyObject* ToPython(bool value) { return PyBool_FromLong(value); }
inline PyObject* ToPython(int32_t value) { return PyLong_FromLong(value); }
inline PyObject* ToPython(uint32_t value) { return PyLong_FromUnsignedLong(value); }
inline PyObject* ToPython(int64_t value) { return PyLong_FromLongLong(value); }
inline PyObject* ToPython(uint64_t value) { return PyLong_FromUnsignedLongLong(value); }
inline PyObject* ToPython(double value) { return PyFloat_FromDouble(value); }
inline PyObject* ToPython(float value) { return PyFloat_FromDouble(double(value)); }
inline PyObject* ToPython(const String& value) { return StringToPython(value); }
inline PyObject* ToPython(const Filename& value) { return FilenameToPython(value); }
inline PyObject* ToPython(PyObject* value) { return value; }  // a body's own result

// The tp_richcompare of classes whose wrappers are equal when their host objects are the same: each
// call that answers with an object makes a new wrapper. A dead side raises.
template <class Host>
PyObject* CompareHosts(PyObject* left, PyObject* right, int op) {
  PyTypeObject* type = &Present<Host>::Type();
  if (!PyObject_TypeCheck(left, type) || !PyObject_TypeCheck(right, type)) Py_RETURN_NOTIMPLEMENTED;
  Host *a, *b;
  if (!Present<Host>::Get(left, a) || !Present<Host>::Get(right, b)) return nullptr;
  if (op != Py_EQ && op != Py_NE) Py_RETURN_NOTIMPLEMENTED;
  return ToPython((a == b) == (op == Py_EQ));
}

inline PyObject* NewNone() {
  Py_INCREF(Py_None);
  return Py_None;
}

}  // namespace qlx

#endif
