// qlx.Vector: three numbers, held in the record.

#include <cstring>

#include "kelvar/vector.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "values/values.h"

namespace qlx {
namespace {

Vector& ValueOf(PyObject* self) { return reinterpret_cast<VectorRecord*>(self)->value; }

bool IsNumber(PyObject* object) { return PyFloat_Check(object) || PyLong_Check(object); }

// The constructor's call forms: nothing, one number for all three, a vector to copy, three numbers.
bool ReadVector(PyObject* first, double y, double z, Py_ssize_t given, Vector& value) {
  if (given == 0) return true;
  if (given == 2 || !first) {
    RaiseFormatted(PyExc_TypeError, "Vector.__init__ takes 3 arguments.");
    return false;
  }
  if (given == 1 && IsVector(first)) {
    value = ValueOf(first);
    return true;
  }
  if (given == 1 && !IsNumber(first)) {
    RaiseExpectedTypeFor("Vector.__init__", "float or qlx.Vector", first);
    return false;
  }
  const double x = PyFloat_AsDouble(first);
  if (x == -1 && PyErr_Occurred()) return false;
  value = given == 1 ? Vector{x, x, x} : Vector{x, y, z};
  return true;
}

PyObject* ConstructVector(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&ConstructVector, TypeList<PyObject*, double, double>, "|Off", "x", "y", "z"> arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  const Py_ssize_t given = PyTuple_GET_SIZE(args) + (keywords ? PyDict_Size(keywords) : 0);
  Vector value{};
  const bool read =
      arguments.Apply([&](PyObject* x, double y, double z) { return ReadVector(x, y, z, given, value); });
  return read ? NewVector(value) : nullptr;
}

double& Component(PyObject* self, void* name) {
  return (&ValueOf(self).x)[*static_cast<const char*>(name) - 'x'];
}

PyObject* GetComponent(PyObject* self, void* name) { return PyFloat_FromDouble(Component(self, name)); }

int SetComponent(PyObject* self, PyObject* value, void* name) {
  if (!value) return RaiseAttributeNotRemovable(static_cast<const char*>(name));
  if (!IsNumber(value)) return RaiseNumberAttribute(static_cast<const char*>(name));
  const double number = PyFloat_AsDouble(value);
  if (number == -1 && PyErr_Occurred()) return -1;
  Component(self, name) = number;
  return 0;
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsVector(left) || !IsVector(right)) Py_RETURN_NOTIMPLEMENTED;
  if (op == Py_EQ || op == Py_NE) return ToPython((ValueOf(left) == ValueOf(right)) == (op == Py_EQ));
  ReportBadComparison(left, right, op);
  return nullptr;
}

PyObject* Text(PyObject* self) {
  const Vector& value = ValueOf(self);
  char* texts[3] = {};
  for (int i = 0; i < 3; ++i) texts[i] = PyOS_double_to_string((&value.x)[i], 'r', 0, 0, nullptr);
  PyObject* text = texts[0] && texts[1] && texts[2]
                       ? PyUnicode_FromFormat("Vector(%s, %s, %s)", texts[0], texts[1], texts[2])
                       : PyErr_NoMemory();
  for (char* one : texts) PyMem_Free(one);
  return text;
}

void Normalize(Vector& self) { self = kelvar::Normalized(self); }

void Free(PyObject* self) { FreeWrapper(g_wrapperTracker, self); }

char g_x[] = "x", g_y[] = "y", g_z[] = "z";

PyGetSetDef g_attributes[] = {
    {g_x, GetComponent, SetComponent, const_cast<char*>("The first component, a float."), g_x},
    {g_y, GetComponent, SetComponent, const_cast<char*>("The second component, a float."), g_y},
    {g_z, GetComponent, SetComponent, const_cast<char*>("The third component, a float."), g_z},
    {},
};

PyMethodDef g_methods[] = {
    Method<&kelvar::Dot, "V", "v2">("Dot", "Dot(v2) -> float\n\nThe dot product."),
    Method<&kelvar::Cross, "V", "v2">("Cross", "Cross(v2) -> qlx.Vector\n\nThe cross product."),
    Method<&kelvar::Length>("GetLength", "GetLength() -> float\n\nThe length."),
    Method<&kelvar::LengthSquared>("GetLengthSquared", "GetLengthSquared() -> float\n\nThe length, squared."),
    Method<&kelvar::Normalized>("GetNormalized",
                                "GetNormalized() -> qlx.Vector\n\n"
                                "A vector of the same direction and the length 1; zero for the zero vector."),
    Method<&Normalize>("Normalize", "Normalize() -> None\n\nGives this vector the length 1; zero stays zero."),
    StaticMethod<&kelvar::Distance, "VV", "v1", "v2">("GetDistance", "Returns the length of two vectors."),
    {},
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsVector(object)) return Conversion::kWrongType;
  std::memcpy(target, &ValueOf(object), sizeof(Vector));
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kVector, Convert);
const LetterEntry g_colorLetter(ValueLetter::kColor, Convert);

}  // namespace

PyTypeObject g_VectorType = MakeType<VectorRecord>({
    .name = "qlx.Vector",
    .doc = "A vector of three floats.",
    .methods = g_methods,
    .create = ConstructVector,
    .destroy = Free,
    .compare = Compare,
    .text = Text,
    .attributes = g_attributes,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_VectorType);
}

bool IsVector(PyObject* object) { return PyObject_TypeCheck(object, &g_VectorType); }

PyObject* NewVector(const Vector& value) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_VectorType);
  if (object) ValueOf(object) = value;
  return object;
}

Vector* VectorOf(PyObject* object) {
  if (IsVector(object)) return &ValueOf(object);
  _PyErr_BadInternalCall(__FILE__, __LINE__);
  return nullptr;
}

}  // namespace qlx
