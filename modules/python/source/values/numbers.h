// What the types of numbers side by side have in common: operands, attributes, items, texts, and
// calls without a tuple of arguments.
#ifndef VALUES_NUMBERS_H
#define VALUES_NUMBERS_H

#include <initializer_list>
#include <string>

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "kit/i_valueletters.h"
#include "values/values.h"

namespace qlx {

// A number is a float or an int, and what derives from them.
inline bool IsNumber(PyObject* object) { return PyFloat_Check(object) || PyLong_Check(object); }

// The number operand of an operator: an int has 32 bits. A larger one raises OverflowError at once; an
// operator that computed on with -1 would give its script a wrong value before the exception.
Conversion ReadOtherOperand(PyObject* object, double& number);
inline Conversion ReadOperand(PyObject* object, double& number) {
  if (!PyFloat_CheckExact(object)) return ReadOtherOperand(object, number);
  number = PyFloat_AS_DOUBLE(object);
  return Conversion::kStored;
}

// What a constructor takes for its first number when the others are given too, as it takes those.
inline bool HasFloat(PyObject* object) {
  const PyNumberMethods* number = Py_TYPE(object)->tp_as_number;
  return IsNumber(object) || (number && number->nb_float);
}

// The arguments of a constructor that are plain floats and ints; false, without an exception, for others.
inline bool ReadPlain(PyObject* object, double& number) {
  if (PyFloat_CheckExact(object)) {
    number = PyFloat_AS_DOUBLE(object);
    return true;
  }
  if (!PyLong_CheckExact(object)) return false;
  int overflow = 0;
  const long value = PyLong_AsLongAndOverflow(object, &overflow);
  number = double(value);
  return overflow == 0;
}

// What a division multiplies by. A divisor of zero raises nothing: it makes the factor zero.
inline double Reciprocal(double divisor) { return divisor == 0 ? 0.0 : 1 / divisor; }

// The attribute of a component: a number, or a vector by value. -1 with an exception.
int SetNumber(double& target, PyObject* value, const char* name);
int SetVector(Vector& target, PyObject* value, const char* name);

template <auto kMember>
struct ComponentAttribute;
template <class Value, class Component, Component Value::*kMember>
struct ComponentAttribute<kMember> {
  static PyObject* Get(PyObject* self, void*) {
    if constexpr (std::same_as<Component, double>)
      return PyFloat_FromDouble(ValueOf<Value>(self).*kMember);
    else
      return NewVector(ValueOf<Value>(self).*kMember);
  }
  static int Set(PyObject* self, PyObject* value, void* name) {
    Component& target = ValueOf<Value>(self).*kMember;
    if constexpr (std::same_as<Component, double>) {
      if (!value || !PyFloat_CheckExact(value)) return SetNumber(target, value, static_cast<const char*>(name));
      target = PyFloat_AS_DOUBLE(value);
      return 0;
    } else {
      return SetVector(target, value, static_cast<const char*>(name));
    }
  }
};

template <auto kMember>
PyGetSetDef Attribute(const char* name, const char* doc) {
  using Access = ComponentAttribute<kMember>;
  return {name, Access::Get, Access::Set, doc, const_cast<char*>(name)};
}

// The items of a value: its numbers. IndexError outside, also for negative ones.
bool ReadIndex(PyObject* key, Py_ssize_t count, Py_ssize_t& index);
int SetItem(double* numbers, Py_ssize_t count, PyObject* self, PyObject* key, PyObject* value);

template <class Value>
struct Items {
  static constexpr Py_ssize_t kCount = sizeof(Value) / sizeof(double);

  static double* Numbers(PyObject* self) { return reinterpret_cast<double*>(&ValueOf<Value>(self)); }

  static PyObject* Get(PyObject* self, PyObject* key) {
    Py_ssize_t index;
    return ReadIndex(key, kCount, index) ? PyFloat_FromDouble(Numbers(self)[index]) : nullptr;
  }
  static int Set(PyObject* self, PyObject* key, PyObject* value) {
    return SetItem(Numbers(self), kCount, self, key, value);
  }
  // What unpacking asks for, from 0 on until IndexError.
  static PyObject* At(PyObject* self, Py_ssize_t index) {
    return size_t(index) < size_t(kCount) ? PyFloat_FromDouble(Numbers(self)[index]) : RaiseIndexDepth();
  }

  inline static PyMappingMethods mapping = {.mp_subscript = Get, .mp_ass_subscript = Set};
  inline static PySequenceMethods sequence = {.sq_item = At};
};

inline PyObject* NewNotImplemented() {
  Py_INCREF(Py_NotImplemented);
  return Py_NotImplemented;
}

// Two of a kind: equal when all numbers are, ordered never.
template <class Value>
PyObject* CompareValues(PyObject* left, PyObject* right, int op) {
  if (!Present<Value>::Is(left) || !Present<Value>::Is(right)) return NewNotImplemented();
  if (op == Py_EQ || op == Py_NE)
    return ToPython((ValueOf<Value>(left) == ValueOf<Value>(right)) == (op == Py_EQ));
  ReportBadComparison(left, right, op);
  return nullptr;
}

// A text of words and numbers, these in the shortest form that reads back as the same number, or as
// `spec` says (format()).
class NumberText {
 public:
  explicit NumberText(PyObject* spec) : spec_(spec) {}

  NumberText& Add(const char* words);
  NumberText& Add(std::initializer_list<double> numbers);  // separated by ", "
  NumberText& Add(const Vector& v) { return Add({v.x, v.y, v.z}); }
  PyObject* Finish();

 private:
  bool AddNumber(double number);

  PyObject* spec_;
  std::string text_;
  bool failed_ = false;
};

// The slots of a function `PyObject* Describe(const Value&, PyObject* spec)`.
template <class Value, auto kDescribe>
PyObject* Text(PyObject* self) {
  return Guarded([&] { return kDescribe(ValueOf<Value>(self), nullptr); });
}
template <class Value, auto kDescribe>
PyObject* Format(const Value& self, PyObject* spec) {
  if (!PyUnicode_Check(spec)) {
    RaiseExpectedTypeFor("__format__", "str", spec);
    return nullptr;
  }
  return kDescribe(self, PyUnicode_GetLength(spec) == 0 ? nullptr : spec);
}
template <class Value, auto kDescribe>
PyMethodDef FormatMethod() {
  return Method<&Format<Value, kDescribe>, "O", "format_spec">(
      "__format__", "__format__(format_spec) -> str\n\nThe text, each number in the format of a float.");
}

// Calls `function` with a tuple and a dictionary made of an array of arguments.
PyObject* CallWithTuple(PyCFunctionWithKeywords function, PyObject* self, PyObject* const* args,
                        Py_ssize_t count, PyObject* names);

// The constructor of a value: `kReadPlain` takes the usual calls, `kCreate` all others.
template <class Value, auto kReadPlain, newfunc kCreate>
struct Constructor {
  static PyObject* CreateQuick(PyObject* type, PyObject* const* args, size_t flaggedCount, PyObject* names) {
    const auto count = Py_ssize_t(flaggedCount & size_t(PY_SSIZE_T_MAX));
    Value value{};
    if (!names && kReadPlain(args, count, value)) return Present<Value>::Wrap(value);
    const auto create = [](PyObject* of, PyObject* tuple, PyObject* dictionary) {
      return Guarded([&] { return kCreate(reinterpret_cast<PyTypeObject*>(of), tuple, dictionary); });
    };
    return CallWithTuple(create, type, args, count, names);
  }
  static PyObject* Create(PyTypeObject* type, PyObject* args, PyObject* keywords) {
    Value value{};
    if (!keywords && kReadPlain(&PyTuple_GET_ITEM(args, 0), PyTuple_GET_SIZE(args), value))
      return Present<Value>::Wrap(value);
    return Guarded([&] { return kCreate(type, args, keywords); });
  }
};

// A method of a value with one vector, which most calls give by position.
template <auto kFunction, FixedString Keyword>
struct VectorRow {
  using Self = HostOf<typename Signature<decltype(kFunction)>::Self>;

  static PyObject* Call(PyObject* self, PyObject* const* args, Py_ssize_t count, PyObject* names) {
    if (count != 1 || names || !IsVector(args[0]))
      return CallWithTuple(BoundRow<Row<>, kFunction, "V", Keyword>::Call, self, args, count, names);
    const auto result = kFunction(ValueOf<Self>(self), ValueOf<Vector>(args[0]));
    if constexpr (std::same_as<decltype(result), const double>)
      return PyFloat_FromDouble(result);
    else
      return NewVector(result);
  }
};
template <auto kFunction, FixedString Keyword>
PyMethodDef VectorMethod(const char* name, const char* doc) {
  const auto call = reinterpret_cast<void (*)()>(VectorRow<kFunction, Keyword>::Call);
  return {name, reinterpret_cast<PyCFunction>(call), METH_FASTCALL | METH_KEYWORDS, doc};
}

}  // namespace qlx

#endif
