// qlx.Matrix: an affine transform of four vectors.

#include "kelvar/matrix.h"
#include "values/numbers.h"

namespace qlx {
namespace {

// The usual calls: nothing, a matrix to copy, vectors from the offset on.
bool ReadPlainMatrix(PyObject* const* args, Py_ssize_t count, Matrix& value) {
  value = kIdentityMatrix;
  if (count == 1 && IsMatrix(args[0])) {
    value = ValueOf<Matrix>(args[0]);
    return true;
  }
  if (count > 4) return false;
  Vector* const parts[] = {&value.off, &value.v1, &value.v2, &value.v3};
  for (Py_ssize_t i = 0; i < count; ++i) {
    if (!IsVector(args[i])) return false;
    *parts[i] = ValueOf<Vector>(args[i]);
  }
  return true;
}

PyObject* CreateMatrix(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&CreateMatrix, TypeList<PyObject*, Vector, Vector, Vector>, "|OVVV", "off", "v1", "v2", "v3">
      arguments;
  arguments.At<"v1">().value = kIdentityMatrix.v1;
  arguments.At<"v2">().value = kIdentityMatrix.v2;
  arguments.At<"v3">().value = kIdentityMatrix.v3;
  if (!arguments.Parse(args, keywords)) return nullptr;
  return arguments.Apply([](PyObject* off, const Vector& v1, const Vector& v2, const Vector& v3) -> PyObject* {
    if (off && IsMatrix(off)) return NewMatrix(ValueOf<Matrix>(off));
    if (!off) return NewMatrix({{}, v1, v2, v3});
    if (IsVector(off)) return NewMatrix({ValueOf<Vector>(off), v1, v2, v3});
    RaiseExpectedTypeFor("Matrix.__init__", "qlx.Vector or qlx.Matrix", off);
    return nullptr;
  });
}

using MatrixConstructor = Constructor<Matrix, ReadPlainMatrix, CreateMatrix>;

// The factor of a scaling: unlike other operands an int may have as many bits as a long.
Conversion ReadFactor(PyObject* object, double& factor) {
  if (PyFloat_Check(object)) {
    factor = PyFloat_AS_DOUBLE(object);
    return Conversion::kStored;
  }
  if (!PyLong_Check(object)) return Conversion::kWrongType;
  const long value = PyLong_AsLong(object);
  if (value == -1 && PyErr_Occurred()) return Conversion::kFailed;
  factor = double(value);
  return Conversion::kStored;
}

PyObject* Add(PyObject* left, PyObject* right) {
  if (!IsMatrix(left) || !IsMatrix(right)) return NewNotImplemented();
  return NewMatrix(ValueOf<Matrix>(left) + ValueOf<Matrix>(right));
}

PyObject* Subtract(PyObject* left, PyObject* right) {
  if (!IsMatrix(left) || !IsMatrix(right)) return NewNotImplemented();
  return NewMatrix(ValueOf<Matrix>(left) - ValueOf<Matrix>(right));
}

// A matrix composes, a vector is transformed, a number scales; the last two in either order.
PyObject* Multiply(PyObject* left, PyObject* right) {
  if (!IsMatrix(left)) std::swap(left, right);
  const Matrix& m = ValueOf<Matrix>(left);
  if (IsVector(right)) return NewVector(kelvar::Transformed(m, ValueOf<Vector>(right)));
  if (IsMatrix(right)) return NewMatrix(kelvar::Product(m, ValueOf<Matrix>(right)));
  double factor;
  const Conversion conversion = ReadFactor(right, factor);
  if (conversion == Conversion::kStored) return NewMatrix(m * factor);
  return conversion == Conversion::kFailed ? nullptr : NewNotImplemented();
}

PyObject* Divide(PyObject* left, PyObject* right) {
  if (!IsMatrix(left)) return NewNotImplemented();
  double divisor;
  const Conversion conversion = ReadOperand(right, divisor);
  if (conversion == Conversion::kStored)
    return NewMatrix(divisor == 0 ? kIdentityMatrix : ValueOf<Matrix>(left) * Reciprocal(divisor));
  return conversion == Conversion::kFailed ? nullptr : NewNotImplemented();
}

// A vector on the left comes to the vector's own operator.
PyObject* Xor(PyObject* left, PyObject* right) {
  if (!IsMatrix(left) || !IsVector(right)) return NewNotImplemented();
  return NewVector(kelvar::Rotated(ValueOf<Matrix>(left), ValueOf<Vector>(right)));
}

PyObject* Invert(PyObject* self) { return NewMatrix(kelvar::Inverse(ValueOf<Matrix>(self))); }

Matrix Unit(const Matrix& m) { return kelvar::Normalized(m); }
void Normalize(Matrix& self) { self = kelvar::Normalized(self); }
Vector GetScale(const Matrix& m) { return {kelvar::Length(m.v1), kelvar::Length(m.v2), kelvar::Length(m.v3)}; }

// The words of the refusal name a matrix, which is not taken.
PyObject* Scale(Matrix& self, PyObject* v) {
  Vector factors;
  if (IsVector(v)) {
    factors = ValueOf<Vector>(v);
  } else if (PyFloat_Check(v)) {
    const double factor = PyFloat_AS_DOUBLE(v);
    factors = {factor, factor, factor};
  } else {
    RaiseExpectedTypeFor("Scale", "Vector or Matrix", v);
    return nullptr;
  }
  self = {self.off, self.v1 * factors.x, self.v2 * factors.y, self.v3 * factors.z};
  return NewNone();
}

PyObject* Describe(const Matrix& m, PyObject* spec) {
  NumberText text(spec);
  text.Add("Matrix(v1: (").Add(m.v1).Add("); v2: (").Add(m.v2).Add("); v3: (").Add(m.v3);
  return text.Add("); off: (").Add(m.off).Add("))").Finish();
}

PyObject* Reduce(const Matrix& m) {
  return Py_BuildValue("O(NNNN)", reinterpret_cast<PyObject*>(&g_MatrixType), NewVector(m.off), NewVector(m.v1),
                       NewVector(m.v2), NewVector(m.v3));
}

PyGetSetDef g_attributes[] = {
    Attribute<&Matrix::off>("off", "The offset, a copy: m.off.x = 1 leaves m as it is."),
    Attribute<&Matrix::v1>("v1", "The x axis, a copy."),
    Attribute<&Matrix::v2>("v2", "The y axis, a copy."),
    Attribute<&Matrix::v3>("v3", "The z axis, a copy."),
    {},
};

PyMethodDef g_methods[] = {
    Method<&Normalize>("Normalize", "Normalize() -> None\n\nGives the axes the length 1."),
    Method<&Unit>("GetNormalized", "GetNormalized() -> qlx.Matrix\n\nThe matrix with axes of length 1."),
    VectorMethod<&kelvar::Transformed, "v">(
        "Mul", "Multiply the vector by the matrix, this includes any translation in the matrix."),
    VectorMethod<&kelvar::Rotated, "v">(
        "MulV", "Multiply the vector by the matrix, this does not include any translation."),
    Method<&kelvar::Tensor>("GetTensorMatrix",
                            "GetTensorMatrix() -> qlx.Matrix\n\n"
                            "The cofactors of the axes, not divided by the determinant, without an offset."),
    Method<&Scale, "O", "v">("Scale",
                             "Scale(v) -> None\n\n"
                             "Scales each axis by a component of a qlx.Vector, or all by a float."),
    Method<&GetScale>("GetScale", "GetScale() -> qlx.Vector\n\nThe lengths of the axes."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor pickle and copy."),
    FormatMethod<Matrix, Describe>(),
    {},
};

PyNumberMethods g_number = {
    .nb_add = Add,
    .nb_subtract = Subtract,
    .nb_multiply = Multiply,
    .nb_invert = Invert,
    .nb_xor = Xor,
    .nb_true_divide = Divide,
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsMatrix(object)) return Conversion::kWrongType;
  *static_cast<Matrix*>(target) = ValueOf<Matrix>(object);
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kMatrix, Convert);

}  // namespace

PyTypeObject g_MatrixType = MakeType<ValueRecord<Matrix>>({
    .name = "qlx.Matrix",
    .doc = "Matrix() -> the identity\n"
           "Matrix(m) -> a copy\n"
           "Matrix(off, v1, v2, v3)\n\n"
           "An affine transform: m * p is off + p.x*v1 + p.y*v2 + p.z*v3, m ^ p the same without off. a * b "
           "applies b first, ~m is the inverse. Division by zero, and the inverse of a matrix with the "
           "determinant 0, give the identity.",
    .methods = g_methods,
    .create = MatrixConstructor::Create,
    .destroy = Present<Matrix>::Free,
    .compare = CompareValues<Matrix>,
    .text = Text<Matrix, Describe>,
    .attributes = g_attributes,
    .number = &g_number,
    .quickCreate = MatrixConstructor::CreateQuick,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_MatrixType);
}

}  // namespace qlx
