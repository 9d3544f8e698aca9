// Typed views of Python's dicts, lists and tuples.

#include "kit/i_collections.h"

namespace qlx {

bool PyDictRef::Put(const char* key, PyObject* value) {
  const bool stored = value && PyDict_SetItemString(object_, key, value) == 0;
  Py_XDECREF(value);
  return stored;
}

PyObject* PyDictRef::Find(const char* key) const {
  PyObject* name = PyUnicode_FromString(key);
  PyObject* item = name ? PyDict_GetItemWithError(object_, name) : nullptr;
  Py_XDECREF(name);
  return item;
}

bool PyListRef::Put(PyObject* value) {
  const bool stored = value && PyList_Append(object_, value) == 0;
  Py_XDECREF(value);
  return stored;
}

bool PyTupleRef::Put(PyObject* value) { return value && PyTuple_SetItem(object_, next_++, value) == 0; }

bool KindOf<char>::Read(PyObject* object, char& value) {
  Py_ssize_t size;
  const char* utf8 = PyUnicode_AsUTF8AndSize(object, &size);
  if (!utf8) return false;
  if (PyUnicode_GetLength(object) > 1) return RaiseTextTooLong(), false;
  value = *utf8;  // the zero behind an empty text
  return true;
}

PyObject* KindOf<BaseContainer*>::Make(const BaseContainer* value) {
  if (!value) return NewNone();
  BaseContainer* copy = value->GetClone();
  return copy ? NewBaseContainer(copy, true, false, nullptr) : PyErr_NoMemory();  // the record frees the copy
}

}  // namespace qlx
