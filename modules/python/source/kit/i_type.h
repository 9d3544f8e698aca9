// The type record of a wrapper class, from a short description.
#ifndef KIT_I_TYPE_H
#define KIT_I_TYPE_H

#include <Python.h>

#include "kit/i_pool.h"

namespace qlx {

// A function with keywords as the method tables want it.
inline PyCFunction AsMethod(PyCFunctionWithKeywords function) {
  return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

// A call with its arguments in an array, whose length has a flag in the top bit; `names` are those of
// the last ones, or null.
using QuickCall = PyObject* (*)(PyObject* callable, PyObject* const* args, size_t flaggedCount,
                                PyObject* names);

// What a class presents. Fields that are left out are those of the base, or the interpreter's.
struct TypeSpec {
  const char* name;  // with the module: "qlx.BaseObject"; every message quotes it
  const char* doc;
  PyTypeObject* base = nullptr;
  PyMethodDef* methods = nullptr;
  newfunc create = nullptr;  // does all the constructing; null where only other calls give instances
  destructor destroy = nullptr;
  richcmpfunc compare = nullptr;
  ternaryfunc call = nullptr;
  reprfunc text = nullptr;  // repr and str
  getiterfunc iterate = nullptr;
  PyGetSetDef* attributes = nullptr;
  PyNumberMethods* number = nullptr;
  PyMappingMethods* mapping = nullptr;
  PySequenceMethods* sequence = nullptr;
  QuickCall quickCreate = nullptr;  // does what `create` does, without a tuple; most calls take it
  unsigned long flags = 0;          // kSubclassable, kInlineValue
};

inline constexpr unsigned long kSubclassable = Py_TPFLAGS_BASETYPE;
inline constexpr unsigned long kInlineValue = 1UL << 0;

// An interpreter whose types have no such entry makes a tuple for `create`.
template <class Type>
void SetQuickCreate(Type& type, QuickCall call) {
  if constexpr (requires { type.tp_vectorcall; }) type.tp_vectorcall = call;
}

// Instances of `Record` come from a pool of records of that size; those of a script's subclass
// come from the interpreter, which gives them a dictionary.
template <class Record>
PyTypeObject MakeType(const TypeSpec& spec) {
  PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
  type.tp_name = spec.name;
  type.tp_doc = spec.doc;
  type.tp_basicsize = sizeof(Record);
  type.tp_flags = Py_TPFLAGS_DEFAULT | spec.flags;
  type.tp_base = spec.base;
  type.tp_methods = spec.methods;
  type.tp_getset = spec.attributes;
  type.tp_new = spec.create;
  type.tp_dealloc = spec.destroy;
  type.tp_richcompare = spec.compare;
  type.tp_call = spec.call;
  type.tp_iter = spec.iterate;
  type.tp_repr = spec.text;
  type.tp_as_number = spec.number;
  type.tp_as_mapping = spec.mapping;
  type.tp_as_sequence = spec.sequence;
  SetQuickCreate(type, spec.quickCreate);
  type.tp_alloc = RecordPool<sizeof(Record)>::Alloc;
  type.tp_free = RecordPool<sizeof(Record)>::Free;
  return type;
}

// NotImplementedError: the `create` of a class that a script can't make instances of.
PyObject* RefuseInstance(PyTypeObject* type, PyObject* args, PyObject* keywords);

}  // namespace qlx

#endif
