// qlx.DescLevel: one level of the address of a parameter, held in the record.

#include "kelvar/descid.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "values/values.h"

namespace qlx {
namespace {

PyObject* ConstructDescLevel(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&ConstructDescLevel, TypeList<int32_t, int32_t, int32_t>, "i|ii", "id", "dtype", "creator">
      arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  return arguments.Apply([](int32_t id, int32_t dtype, int32_t creator) {
    return NewDescLevel({id, dtype, creator});
  });
}

struct Attribute {
  const char* name;
  int32_t DescLevel::*member;
};

PyObject* GetAttribute(PyObject* self, void* closure) {
  return PyLong_FromLong(ValueOf<DescLevel>(self).*static_cast<const Attribute*>(closure)->member);
}

int SetAttribute(PyObject* self, PyObject* value, void* closure) {
  const Attribute& attribute = *static_cast<const Attribute*>(closure);
  if (!value) return RaiseAttributeNotRemovable(attribute.name);
  if (PyLong_Check(value)) return ReadInt32(value, ValueOf<DescLevel>(self).*attribute.member) ? 0 : -1;
  RaiseExpectedType("int", value);
  return -1;
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsDescLevel(left) || !IsDescLevel(right) || (op != Py_EQ && op != Py_NE)) Py_RETURN_NOTIMPLEMENTED;
  return ToPython((ValueOf<DescLevel>(left) == ValueOf<DescLevel>(right)) == (op == Py_EQ));
}

PyObject* Text(PyObject* self) {
  const DescLevel& level = ValueOf<DescLevel>(self);
  return PyUnicode_FromFormat("DescLevel(%i, %i, %i)", level.id, level.dtype, level.creator);
}

PyObject* Reduce(PyObject* self) {
  const DescLevel& level = ValueOf<DescLevel>(self);
  return Py_BuildValue("(O(iii))", Py_TYPE(self), level.id, level.dtype, level.creator);
}

Attribute g_id{"id", &DescLevel::id}, g_dtype{"dtype", &DescLevel::dtype},
    g_creator{"creator", &DescLevel::creator};

PyGetSetDef g_attributes[] = {
    {g_id.name, GetAttribute, SetAttribute, "The id, an int.", &g_id},
    {g_dtype.name, GetAttribute, SetAttribute, "The data type, an int.", &g_dtype},
    {g_creator.name, GetAttribute, SetAttribute, "The id of the creator, an int.", &g_creator},
    {},
};

PyMethodDef g_methods[] = {
    Method<&FormatText, "O", "format_spec">("__format__",
                                            "__format__(format_spec) -> str\n\nThe text in that format."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nThe way to copy and to store it."),
    {},
};

}  // namespace

PyTypeObject g_DescLevelType = MakeType<DescLevelRecord>({
    .name = "qlx.DescLevel",
    .doc = "One level of the address of a parameter.",
    .methods = g_methods,
    .create = ConstructDescLevel,
    .destroy = Present<DescLevel>::Free,
    .compare = Compare,
    .text = Text,
    .attributes = g_attributes,
});

namespace {
const TypeQueueEntry g_entry(g_DescLevelType);
}

bool ReadInt32(PyObject* integer, int32_t& value) {
  int overflow = 0;
  const long number = PyLong_AsLongAndOverflow(integer, &overflow);
  if (overflow || number != int32_t(number)) {
    RaiseIntTooLarge();
    return false;
  }
  value = int32_t(number);
  return true;
}

}  // namespace qlx
