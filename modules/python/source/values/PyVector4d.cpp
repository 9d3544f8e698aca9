// qlx.Vector4d: four numbers.

#include <cstring>

#include "kelvar/vector.h"
#include "values/numbers.h"

namespace qlx {
namespace {

// The usual calls: nothing, one number for all four, a vector with w 1, four numbers.
bool ReadPlainVector(PyObject* const* args, Py_ssize_t count, Vector4d& value) {
  if (count == 4)
    return ReadPlain(args[0], value.x) && ReadPlain(args[1], value.y) && ReadPlain(args[2], value.z) &&
           ReadPlain(args[3], value.w);
  if (count == 0) return true;
  if (count != 1) return false;
  if (IsVector(args[0])) {
    const Vector& v = ValueOf<Vector>(args[0]);
    value = {v.x, v.y, v.z, 1};
    return true;
  }
  if (!ReadPlain(args[0], value.x)) return false;
  value.y = value.z = value.w = value.x;
  return true;
}

bool ReadVector(PyObject* first, double y, double z, double w, Py_ssize_t given, Vector4d& value) {
  if (given == 0) return true;
  if (given == 2 || given == 3 || !first) {
    RaiseVector4dCount();
    return false;
  }
  if (given == 1 && IsVector(first)) {
    const Vector& v = ValueOf<Vector>(first);
    value = {v.x, v.y, v.z, 1};
    return true;
  }
  if (given == 1 ? !IsNumber(first) : !HasFloat(first)) {
    RaiseExpectedTypeFor("Vector4d.__init__", "qlx.Vector and float optional", first);
    return false;
  }
  const double x = PyFloat_AsDouble(first);
  if (x == -1 && PyErr_Occurred()) return false;
  value = given == 1 ? Vector4d{x, x, x, x} : Vector4d{x, y, z, w};
  return true;
}

PyObject* CreateVector(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&CreateVector, TypeList<PyObject*, double, double, double>, "|Offf", "x", "y", "z", "r"> arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  const Py_ssize_t given = arguments.CountGiven(args);
  Vector4d value{};
  const bool read = arguments.Apply(
      [&](PyObject* x, double y, double z, double w) { return ReadVector(x, y, z, w, given, value); });
  return read ? NewVector4d(value) : nullptr;
}

using VectorConstructor = Constructor<Vector4d, ReadPlainVector, CreateVector>;

PyObject* Add(PyObject* left, PyObject* right) {
  if (!IsVector4d(left) || !IsVector4d(right)) return NewNotImplemented();
  return NewVector4d(ValueOf<Vector4d>(left) + ValueOf<Vector4d>(right));
}

PyObject* Subtract(PyObject* left, PyObject* right) {
  if (!IsVector4d(left) || !IsVector4d(right)) return NewNotImplemented();
  return NewVector4d(ValueOf<Vector4d>(left) - ValueOf<Vector4d>(right));
}

PyObject* Multiply(PyObject* left, PyObject* right) {
  if (!IsVector4d(left)) std::swap(left, right);
  const Vector4d& v = ValueOf<Vector4d>(left);
  if (IsVector4d(right)) return NewVector4d(kelvar::ComponentProduct4d(v, ValueOf<Vector4d>(right)));
  double factor;
  const Conversion conversion = ReadOperand(right, factor);
  if (conversion == Conversion::kStored) return NewVector4d(v * factor);
  return conversion == Conversion::kFailed ? nullptr : NewNotImplemented();
}

void SetZero(Vector4d& self) { self = {}; }
void NormalizeW(Vector4d& self) { self = kelvar::NormalizedW(self); }
Vector GetVector3(const Vector4d& self) { return {self.x, self.y, self.z}; }

PyObject* Describe(const Vector4d& v, PyObject* spec) {
  return NumberText(spec).Add("Vector4d(").Add({v.x, v.y, v.z, v.w}).Add(")").Finish();
}

PyObject* Reduce(const Vector4d& v) {
  return Py_BuildValue("O(dddd)", reinterpret_cast<PyObject*>(&g_Vector4dType), v.x, v.y, v.z, v.w);
}

PyGetSetDef g_attributes[] = {
    Attribute<&Vector4d::x>("x", "The first component, a float."),
    Attribute<&Vector4d::y>("y", "The second component, a float."),
    Attribute<&Vector4d::z>("z", "The third component, a float."),
    Attribute<&Vector4d::w>("w", "The fourth component, a float; the constructor names it r."),
    {},
};

PyMethodDef g_methods[] = {
    Method<&SetZero>("SetZero", "SetZero() -> None\n\nMakes all components 0."),
    Method<&kelvar::Dot4d, "V4", "v">("Dot", "Dot(v) -> float\n\nThe dot product of all four components."),
    Method<&NormalizeW>("MakeVector3",
                        "MakeVector3() -> None\n\n"
                        "Divides x, y and z by w, which becomes 1; a vector with w 0, a direction, stays."),
    Method<&NormalizeW>("NormalizeW", "NormalizeW() -> None\n\nThe same as MakeVector3."),
    Method<&GetVector3>("GetVector3", "GetVector3() -> qlx.Vector\n\nx, y and z as they are."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor pickle and copy."),
    FormatMethod<Vector4d, Describe>(),
    {},
};

PyNumberMethods g_number = {.nb_add = Add, .nb_subtract = Subtract, .nb_multiply = Multiply};

template <class Target>
Conversion Convert(PyObject* object, void* target) {
  if (!IsVector4d(object)) return Conversion::kWrongType;
  std::memcpy(target, &ValueOf<Vector4d>(object), sizeof(Target));
  return Conversion::kStored;
}
template <class Target>
Conversion ConvertNarrow(PyObject* object, void* target) {
  if (!IsVector4d(object)) return Conversion::kWrongType;
  const Vector4d& v = ValueOf<Vector4d>(object);
  *static_cast<Target*>(target) = {float(v.x), float(v.y), float(v.z), float(v.w)};
  return Conversion::kStored;
}

const LetterEntry g_letters[] = {
    {ValueLetter::kVector4d, Convert<Vector4d>},
    {ValueLetter::kVector4d32, ConvertNarrow<Vector4d32>},
    {ValueLetter::kColorA, Convert<ColorA>},
    {ValueLetter::kColorA32, ConvertNarrow<ColorA32>},
};

}  // namespace

PyTypeObject g_Vector4dType = MakeType<ValueRecord<Vector4d>>({
    .name = "qlx.Vector4d",
    .doc = "Vector4d() -> zero\n"
           "Vector4d(n) -> n, n, n, n\n"
           "Vector4d(v) -> the components of a qlx.Vector, with w 1\n"
           "Vector4d(x, y, z, r)\n\n"
           "A vector of four floats. v * w is the product of the components.",
    .methods = g_methods,
    .create = VectorConstructor::Create,
    .destroy = Present<Vector4d>::Free,
    .compare = CompareValues<Vector4d>,
    .text = Text<Vector4d, Describe>,
    .attributes = g_attributes,
    .number = &g_number,
    .mapping = &Items<Vector4d>::mapping,
    .sequence = &Items<Vector4d>::sequence,
    .quickCreate = VectorConstructor::CreateQuick,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_Vector4dType);
}

}  // namespace qlx
