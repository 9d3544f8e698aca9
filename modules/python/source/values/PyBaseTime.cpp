// qlx.BaseTime: an exact time in seconds, a fraction of two numbers.

#include <functional>

#include "kelvar/basetime.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "kit/i_valueletters.h"
#include "values/values.h"

namespace qlx {
namespace {

bool ReadNumber(PyObject* object, double& number) {
  if (!PyFloat_Check(object) && !PyLong_Check(object)) {
    RaiseExpectedTypeFor("qlx.BaseTime.__init__", "None(only for 1st argument) or a number", object);
    return false;
  }
  number = PyFloat_AsDouble(object);
  return number != -1 || !PyErr_Occurred();
}

// Seconds alone may stand in either place, the second one behind None.
PyObject* MakeBaseTime(PyObject* z, PyObject* n) {
  double first = 0, second = 1;
  if (!z && !n) return NewBaseTime({0, 1});
  const bool alone = !n || !z || z == Py_None;
  if (!ReadNumber(alone && n ? n : z, first)) return nullptr;
  if (alone) return NewBaseTime(kelvar::TimeFromSeconds(first));
  return ReadNumber(n, second) ? NewBaseTime(kelvar::MakeTime(first, second)) : nullptr;
}

PyObject* ConstructBaseTime(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&ConstructBaseTime, TypeList<PyObject*, PyObject*>, "|OO", "z", "n"> arguments;
  return arguments.Parse(args, keywords) ? arguments.Apply(MakeBaseTime) : nullptr;
}

template <class Operator>
PyObject* Calculate(PyObject* left, PyObject* right) {
  if (!IsBaseTime(left) || !IsBaseTime(right)) Py_RETURN_NOTIMPLEMENTED;
  return NewBaseTime(Operator{}(ValueOf<BaseTime>(left), ValueOf<BaseTime>(right)));
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsBaseTime(left) || !IsBaseTime(right)) Py_RETURN_NOTIMPLEMENTED;
  const std::partial_ordering order = ValueOf<BaseTime>(left) <=> ValueOf<BaseTime>(right);
  switch (op) {
    case Py_EQ:
      return ToPython(order == 0);
    case Py_NE:
      return ToPython(order != 0);
    case Py_LT:
      return ToPython(order < 0);
    case Py_LE:
      return ToPython(order <= 0);
    case Py_GT:
      return ToPython(order > 0);
    default:
      return ToPython(order >= 0);
  }
}

PyObject* Text(PyObject* self) {
  char* numerator = PyOS_double_to_string(ValueOf<BaseTime>(self).numerator, 'r', 0, 0, nullptr);
  char* denominator = PyOS_double_to_string(ValueOf<BaseTime>(self).denominator, 'r', 0, 0, nullptr);
  PyObject* text = numerator && denominator ? PyUnicode_FromFormat("BaseTime(%s, %s)", numerator, denominator)
                                            : PyErr_NoMemory();
  PyMem_Free(numerator);
  PyMem_Free(denominator);
  return text;
}

PyObject* Format(PyObject* self, PyObject* spec) {
  if (PyUnicode_Check(spec) && PyUnicode_GetLength(spec) == 0) return Text(self);
  return FormatMade(PyFloat_FromDouble(kelvar::Seconds(ValueOf<BaseTime>(self))), spec);
}

double GetNumerator(const BaseTime& self) { return self.numerator; }
double GetDenominator(const BaseTime& self) { return self.denominator; }

// Not reduced: a script that sets one after the other gets the fraction of both.
void SetNumerator(BaseTime& self, double n) { self.numerator = n; }
void SetDenominator(BaseTime& self, double d) { self.denominator = d; }

BaseTime Difference(const BaseTime& self, const BaseTime& t) { return self - t; }
void Quantize(BaseTime& self, double fps) { self = kelvar::QuantizedTime(self, fps); }

PyObject* Reduce(PyObject* self) {
  return Py_BuildValue("(O()(dd))", Py_TYPE(self), ValueOf<BaseTime>(self).numerator,
                       ValueOf<BaseTime>(self).denominator);
}

void SetState(BaseTime& self, double numerator, double denominator) { self = {numerator, denominator}; }

PyNumberMethods g_number = {
    .nb_add = Calculate<std::plus<>>,
    .nb_subtract = Calculate<std::minus<>>,
    .nb_multiply = Calculate<std::multiplies<>>,
    .nb_true_divide = Calculate<std::divides<>>,
};

PyMethodDef g_methods[] = {
    Method<&kelvar::Seconds>("Get", "Get() -> float\n\nThe time in seconds."),
    Method<&GetNumerator>("GetNumerator", "GetNumerator() -> float\n\nThe numerator."),
    Method<&GetDenominator>("GetDenominator", "GetDenominator() -> float\n\nThe denominator."),
    Method<&kelvar::FrameOf, "i", "fps">("GetFrame", "GetFrame(fps) -> int\n\nThe nearest frame at that rate."),
    Method<&SetNumerator, "f", "n">("SetNumerator", "SetNumerator(n) -> None\n\nSets the numerator."),
    Method<&SetDenominator, "f", "d">("SetDenominator", "SetDenominator(d) -> None\n\nSets the denominator."),
    Method<&Difference, "T", "t">("TimeDif", "TimeDif(t) -> qlx.BaseTime\n\nThis time less t."),
    Method<&Quantize, "f", "fps">(
        "Quantize", "Quantize(fps) -> None\n\nMoves this time to the nearest frame at that rate."),
    Method<&Format, "O", "format_spec">(
        "__format__", "__format__(format_spec) -> str\n\nThe text, or the seconds in the format of a float."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor copies and pickles."),
    Method<&SetState, "(dd)", "fraction">("__setstate__",
                                          "__setstate__(fraction) -> None\n\nFor copies and pickles."),
    {},
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsBaseTime(object)) return Conversion::kWrongType;
  // What a script has set piece by piece goes out reduced.
  *static_cast<BaseTime*>(target) =
      kelvar::MakeTime(ValueOf<BaseTime>(object).numerator, ValueOf<BaseTime>(object).denominator);
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kBaseTime, Convert);

}  // namespace

PyTypeObject g_BaseTimeType = MakeType<ValueRecord<BaseTime>>({
    .name = "qlx.BaseTime",
    .doc = "A time in seconds, a fraction.",
    .methods = g_methods,
    .create = ConstructBaseTime,
    .destroy = Present<BaseTime>::Free,
    .compare = Compare,
    .text = Text,
    .number = &g_number,
});

namespace {
const TypeQueueEntry g_entry(g_BaseTimeType);
}

}  // namespace qlx
