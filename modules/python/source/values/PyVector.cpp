// qlx.Vector: three numbers.

#include <cstring>

#include "kelvar/matrix.h"
#include "values/numbers.h"

namespace qlx {
namespace {

// The usual calls: nothing, one number for all three, a vector to copy, three numbers.
bool ReadPlainVector(PyObject* const* args, Py_ssize_t count, Vector& value) {
  if (count == 3)
    return ReadPlain(args[0], value.x) && ReadPlain(args[1], value.y) && ReadPlain(args[2], value.z);
  if (count == 0) return true;
  if (count != 1) return false;
  if (IsVector(args[0])) {
    value = ValueOf<Vector>(args[0]);
    return true;
  }
  if (!ReadPlain(args[0], value.x)) return false;
  value.y = value.z = value.x;
  return true;
}

bool ReadVector(PyObject* first, double y, double z, Py_ssize_t given, Vector& value) {
  if (given == 0) return true;
  if (given == 2 || !first) {
    RaiseVectorCount();
    return false;
  }
  if (given == 1 && IsVector(first)) {
    value = ValueOf<Vector>(first);
    return true;
  }
  if (given == 1 ? !IsNumber(first) : !HasFloat(first)) {
    RaiseExpectedTypeFor("Vector.__init__", "float or qlx.Vector", first);
    return false;
  }
  const double x = PyFloat_AsDouble(first);
  if (x == -1 && PyErr_Occurred()) return false;
  value = given == 1 ? Vector{x, x, x} : Vector{x, y, z};
  return true;
}

PyObject* CreateVector(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&CreateVector, TypeList<PyObject*, double, double>, "|Off", "x", "y", "z"> arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  const Py_ssize_t given = arguments.CountGiven(args);
  Vector value{};
  const bool read =
      arguments.Apply([&](PyObject* x, double y, double z) { return ReadVector(x, y, z, given, value); });
  return read ? NewVector(value) : nullptr;
}

using VectorConstructor = Constructor<Vector, ReadPlainVector, CreateVector>;

// An operand of + and -: a number stands for all three components.
Conversion ReadComponents(PyObject* object, Vector& value) {
  if (IsVector(object)) {
    value = ValueOf<Vector>(object);
    return Conversion::kStored;
  }
  const Conversion conversion = ReadOperand(object, value.x);
  value.y = value.z = value.x;
  return conversion;
}

// An operator between a vector and a vector or a number, in the order written.
template <class Operation>
[[gnu::always_inline]] inline PyObject* Componentwise(PyObject* left, PyObject* right, Operation operation) {
  if (IsVector(left) && IsVector(right)) [[likely]]
    return NewVector(operation(ValueOf<Vector>(left), ValueOf<Vector>(right)));
  Vector a, b;
  Conversion conversion = ReadComponents(left, a);
  if (conversion == Conversion::kStored) conversion = ReadComponents(right, b);
  if (conversion == Conversion::kStored) return NewVector(operation(a, b));
  return conversion == Conversion::kFailed ? nullptr : NewNotImplemented();
}

PyObject* Add(PyObject* left, PyObject* right) {
  return Componentwise(left, right, [](const Vector& a, const Vector& b) { return a + b; });
}

PyObject* Subtract(PyObject* left, PyObject* right) {
  return Componentwise(left, right, [](const Vector& a, const Vector& b) { return a - b; });
}

// Two vectors give the dot product, a number scales, a matrix transforms in either order.
PyObject* Multiply(PyObject* left, PyObject* right) {
  if (!IsVector(left)) std::swap(left, right);
  const Vector& v = ValueOf<Vector>(left);
  if (IsVector(right)) return PyFloat_FromDouble(kelvar::Dot(v, ValueOf<Vector>(right)));
  double factor;
  const Conversion conversion = ReadOperand(right, factor);
  if (conversion == Conversion::kStored) return NewVector(v * factor);
  if (conversion == Conversion::kFailed) return nullptr;
  if (IsMatrix(right)) return NewVector(kelvar::Transformed(ValueOf<Matrix>(right), v));
  return NewNotImplemented();
}

PyObject* Divide(PyObject* left, PyObject* right) {
  double divisor;
  if (!IsVector(left)) return NewNotImplemented();
  const Conversion conversion = ReadOperand(right, divisor);
  if (conversion == Conversion::kStored)
    return NewVector(divisor == 0 ? Vector{} : ValueOf<Vector>(left) * Reciprocal(divisor));
  return conversion == Conversion::kFailed ? nullptr : NewNotImplemented();
}

PyObject* CrossOperator(PyObject* left, PyObject* right) {
  if (!IsVector(left) || !IsVector(right)) return NewNotImplemented();
  return NewVector(kelvar::Cross(ValueOf<Vector>(left), ValueOf<Vector>(right)));
}

// The componentwise product; with a matrix on the right the transform without its offset.
PyObject* Xor(PyObject* left, PyObject* right) {
  if (!IsVector(left)) return NewNotImplemented();
  const Vector& v = ValueOf<Vector>(left);
  if (IsVector(right)) return NewVector(kelvar::ComponentProduct(v, ValueOf<Vector>(right)));
  if (IsMatrix(right)) return NewVector(kelvar::Rotated(ValueOf<Matrix>(right), v));
  return NewNotImplemented();
}

template <auto kFunction>
PyObject* Unary(PyObject* self) {
  return NewVector(kFunction(ValueOf<Vector>(self)));
}

Vector Negative(const Vector& v) { return -v; }
Vector Unit(const Vector& v) { return kelvar::Normalized(v); }
void Normalize(Vector& self) { self = kelvar::Normalized(self); }

PyObject* Describe(const Vector& v, PyObject* spec) {
  return NumberText(spec).Add("Vector(").Add(v).Add(")").Finish();
}

PyObject* Reduce(const Vector& v) {
  return Py_BuildValue("O(ddd)", reinterpret_cast<PyObject*>(&g_VectorType), v.x, v.y, v.z);
}

PyGetSetDef g_attributes[] = {
    Attribute<&Vector::x>("x", "The first component, a float."),
    Attribute<&Vector::y>("y", "The second component, a float."),
    Attribute<&Vector::z>("z", "The third component, a float."),
    {},
};

PyMethodDef g_methods[] = {
    VectorMethod<&kelvar::Dot, "v2">("Dot", "Dot(v2) -> float\n\nThe dot product."),
    VectorMethod<&kelvar::Cross, "v2">("Cross", "Cross(v2) -> qlx.Vector\n\nThe cross product."),
    Method<&kelvar::Length>("GetLength", "GetLength() -> float\n\nThe length."),
    Method<&kelvar::LengthSquared>("GetLengthSquared", "GetLengthSquared() -> float\n\nThe length, squared."),
    Method<&Unit>("GetNormalized",
                  "GetNormalized() -> qlx.Vector\n\n"
                  "A vector of the same direction and the length 1; zero for the zero vector."),
    Method<&Normalize>("Normalize", "Normalize() -> None\n\nGives this vector the length 1; zero stays zero."),
    StaticMethod<&kelvar::Distance, "VV", "v1", "v2">("GetDistance", "Returns the length of two vectors."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor pickle and copy."),
    FormatMethod<Vector, Describe>(),
    {},
};

PyNumberMethods g_number = {
    .nb_add = Add,
    .nb_subtract = Subtract,
    .nb_multiply = Multiply,
    .nb_remainder = CrossOperator,
    .nb_negative = Unary<Negative>,
    .nb_absolute = Unary<kelvar::Absolute>,
    .nb_invert = Unary<Unit>,
    .nb_xor = Xor,
    .nb_true_divide = Divide,
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsVector(object)) return Conversion::kWrongType;
  std::memcpy(target, &ValueOf<Vector>(object), sizeof(Vector));
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kVector, Convert);
const LetterEntry g_colorLetter(ValueLetter::kColor, Convert);

}  // namespace

PyTypeObject g_VectorType = MakeType<ValueRecord<Vector>>({
    .name = "qlx.Vector",
    .doc = "Vector() -> zero\n"
           "Vector(n) -> n, n, n\n"
           "Vector(v) -> a copy\n"
           "Vector(x, y, z)\n\n"
           "A vector of three floats. v * w is the dot product, v % w the cross product, v ^ w the product of "
           "the components, ~v of length 1; v * m is transformed by a matrix, v ^ m without its offset. "
           "Division by zero gives the zero vector.",
    .methods = g_methods,
    .create = VectorConstructor::Create,
    .destroy = Present<Vector>::Free,
    .compare = CompareValues<Vector>,
    .text = Text<Vector, Describe>,
    .attributes = g_attributes,
    .number = &g_number,
    .mapping = &Items<Vector>::mapping,
    .sequence = &Items<Vector>::sequence,
    .quickCreate = VectorConstructor::CreateQuick,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_VectorType);
}

}  // namespace qlx
