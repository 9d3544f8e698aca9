// What the types of numbers side by side have in common.

#include "values/numbers.h"

#include <memory>

namespace qlx {

Conversion ReadOtherOperand(PyObject* object, double& number) {
  if (PyFloat_Check(object)) {
    number = PyFloat_AS_DOUBLE(object);
    return Conversion::kStored;
  }
  if (!PyLong_Check(object)) return Conversion::kWrongType;
  int overflow = 0;
  const long value = PyLong_AsLongAndOverflow(object, &overflow);
  if (overflow != 0 || value != int32_t(value)) {
    RaiseIntTooLarge();
    return Conversion::kFailed;
  }
  number = double(value);
  return Conversion::kStored;
}

int SetNumber(double& target, PyObject* value, const char* name) {
  if (!value) return RaiseAttributeNotRemovable(name);
  if (!IsNumber(value)) return RaiseNumberAttribute(name);
  const double number = PyFloat_AsDouble(value);
  if (number == -1 && PyErr_Occurred()) return -1;
  target = number;
  return 0;
}

int SetVector(Vector& target, PyObject* value, const char* name) {
  if (!value) return RaiseAttributeNotRemovable(name);
  if (IsVector(value)) {
    target = ValueOf<Vector>(value);
    return 0;
  }
  RaiseExpectedType("qlx.Vector", value);
  return -1;
}

bool ReadIndex(PyObject* key, Py_ssize_t count, Py_ssize_t& index) {
  if (PyLong_CheckExact(key)) {
    int overflow = 0;
    index = PyLong_AsLongAndOverflow(key, &overflow);
  } else {
    index = PyNumber_AsSsize_t(key, nullptr);
    if (index == -1 && PyErr_Occurred()) return false;
  }
  if (index >= 0 && index < count) return true;
  RaiseIndexDepth();
  return false;
}

int SetItem(double* numbers, Py_ssize_t count, PyObject* self, PyObject* key, PyObject* value) {
  if (!value) return RaiseItemDeletion(self);
  Py_ssize_t index;
  if (!ReadIndex(key, count, index)) return -1;
  if (!IsNumber(value)) {
    RaiseExpectedTypeFor("__getitem__", "float", value);
    return -1;
  }
  const double number = PyFloat_AsDouble(value);
  if (number == -1 && PyErr_Occurred()) return -1;
  numbers[index] = number;
  return 0;
}

NumberText& NumberText::Add(const char* words) {
  text_ += words;
  return *this;
}

NumberText& NumberText::Add(std::initializer_list<double> numbers) {
  bool first = true;
  for (const double number : numbers) {
    if (!first) text_ += ", ";
    first = false;
    failed_ = failed_ || !AddNumber(number);
  }
  return *this;
}

bool NumberText::AddNumber(double number) {
  if (!spec_) {
    char* digits = PyOS_double_to_string(number, 'r', 0, 0, nullptr);
    if (!digits) {
      PyErr_NoMemory();
      return false;
    }
    const std::unique_ptr<char, void (*)(void*)> kept(digits, PyMem_Free);
    text_ += digits;
    return true;
  }
  PyObject* object = PyFloat_FromDouble(number);
  PyObject* formatted = object ? PyObject_Format(object, spec_) : nullptr;
  Py_XDECREF(object);
  const auto drop = [](PyObject* one) { Py_XDECREF(one); };
  const std::unique_ptr<PyObject, decltype(drop)> kept(formatted, drop);
  Py_ssize_t size = 0;
  const char* utf8 = formatted ? PyUnicode_AsUTF8AndSize(formatted, &size) : nullptr;
  if (utf8) text_.append(utf8, size_t(size));
  return utf8 != nullptr;
}

PyObject* NumberText::Finish() {
  return failed_ ? nullptr : PyUnicode_FromStringAndSize(text_.data(), Py_ssize_t(text_.size()));
}

PyObject* FormatMade(PyObject* made, PyObject* spec) {
  PyObject* text = nullptr;
  if (made && PyUnicode_Check(spec))
    text = PyObject_Format(made, spec);
  else if (made)
    RaiseExpectedTypeFor("__format__", "str", spec);
  Py_XDECREF(made);
  return text;
}

PyObject* FormatText(PyObject* self, PyObject* spec) { return FormatMade(PyObject_Str(self), spec); }

PyObject* CallWithTuple(PyCFunctionWithKeywords function, PyObject* self, PyObject* const* args,
                        Py_ssize_t count, PyObject* names) {
  PyObject* tuple = PyTuple_New(count);
  if (!tuple) return nullptr;
  for (Py_ssize_t i = 0; i < count; ++i) {
    Py_INCREF(args[i]);
    PyTuple_SET_ITEM(tuple, i, args[i]);
  }
  PyObject* dictionary = names ? PyDict_New() : nullptr;
  bool ready = dictionary || !names;
  for (Py_ssize_t i = 0; ready && names && i < PyTuple_GET_SIZE(names); ++i)
    ready = PyDict_SetItem(dictionary, PyTuple_GET_ITEM(names, i), args[count + i]) == 0;
  PyObject* result = ready ? function(self, tuple, dictionary) : nullptr;
  Py_XDECREF(dictionary);
  Py_DECREF(tuple);
  return result;
}

}  // namespace qlx
