// qlx.DescID: the address of a parameter, a stack of levels.

#include <cstdio>
#include <new>
#include <string>
#include <utility>

#include "kelvar/descid.h"
#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "values/values.h"

namespace qlx {
namespace {

bool ReadFirst(PyObject* object, DescLevel& level) {
  if (object && PyLong_Check(object)) return ReadInt32(object, level.id);
  if (object && IsDescLevel(object)) {
    level = ValueOf<DescLevel>(object);
    return true;
  }
  RaiseExpectedTypeFor("__init__", "int or qlx.DescLevel", object ? object : Py_None);
  return false;
}

// The levels stand in a row: none is left out ahead of one that is given.
PyObject* MakeDescID(PyObject* first, const DescLevelRecord* second, const DescLevelRecord* third) {
  DescID id;
  DescLevel level{};
  if (!first && !second && !third) return NewDescID(id);
  if (!ReadFirst(first, level)) return nullptr;
  id.PushId(level);
  if (third && !second) {
    RaiseExpectedTypeFor("__init__", g_DescLevelType.tp_name, Py_None);
    return nullptr;
  }
  if (second) id.PushId(second->value);
  if (third) id.PushId(third->value);
  return NewDescID(id);
}

PyObject* ConstructDescID(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&ConstructDescID, TypeList<PyObject*, DescLevelRecord*, DescLevelRecord*>, "|OO!O!", "id1", "id2",
            "id3">
      arguments;
  return arguments.Parse(args, keywords) ? arguments.Apply(MakeDescID) : nullptr;
}

Py_ssize_t Length(PyObject* self) { return ValueOf<DescID>(self).GetDepth(); }

// An int that is a position in the id; IndexError and false for any other.
bool ReadPosition(const DescID& id, PyObject* integer, int32_t& position) {
  int overflow = 0;
  const long number = PyLong_AsLongAndOverflow(integer, &overflow);
  if (overflow || number < 0 || number >= id.GetDepth()) {
    RaiseOutOfDepth();
    return false;
  }
  position = int32_t(number);
  return true;
}

PyObject* GetItem(PyObject* self, PyObject* key) {
  if (!PyLong_Check(key)) {
    RaiseExpectedTypeFor("__getitem__", "int", key);
    return nullptr;
  }
  int32_t position = 0;
  return ReadPosition(ValueOf<DescID>(self), key, position) ? NewDescLevel(ValueOf<DescID>(self)[position])
                                                            : nullptr;
}

// What a walk asks for, from 0 on until IndexError.
PyObject* LevelAt(PyObject* self, Py_ssize_t position) {
  const DescID& id = ValueOf<DescID>(self);
  if (position < 0 || position >= id.GetDepth()) return RaiseOutOfDepth();
  return NewDescLevel(id[int32_t(position)]);
}

PyObject* Shift(PyObject* left, PyObject* right) {
  if (!IsDescID(left) || !PyLong_Check(right)) Py_RETURN_NOTIMPLEMENTED;
  return Guarded([&]() -> PyObject* {
    int32_t count = 0;
    return ReadPosition(ValueOf<DescID>(left), right, count) ? NewDescID(ValueOf<DescID>(left) << count)
                                                             : nullptr;
  });
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsDescID(left) || !IsDescID(right)) Py_RETURN_NOTIMPLEMENTED;
  if (op == Py_EQ || op == Py_NE)
    return ToPython((ValueOf<DescID>(left) == ValueOf<DescID>(right)) == (op == Py_EQ));
  ReportBadComparison(left, right, op);
  return nullptr;
}

PyObject* Text(PyObject* self) {
  const DescID& id = ValueOf<DescID>(self);
  if (id.GetDepth() == 0) return PyUnicode_FromString("( )");
  return Guarded([&]() -> PyObject* {
    std::string text;
    for (int32_t i = 0; i < id.GetDepth(); ++i) {
      char level[256];
      std::snprintf(level, sizeof level, "(%i, %i, %i)", id[i].id, id[i].dtype, id[i].creator);
      text += (i == 0 ? "(" : ", ") + std::string(level);
    }
    text += ')';
    return PyUnicode_FromStringAndSize(text.data(), Py_ssize_t(text.size()));
  });
}

void SetId(DescID& self, DescLevelRecord* subid) { self.SetId(subid->value); }
void PushId(DescID& self, DescLevelRecord* subid) { self.PushId(subid->value); }

PyObject* IsPartOf(DescID& self, DescIDRecord* cmp) {
  const int32_t position = self.FindIn(cmp->value);
  return Py_BuildValue("(Ni)", PyBool_FromLong(position >= 0), position);
}

PyObject* Reduce(PyObject* self) {
  const DescID& id = ValueOf<DescID>(self);
  PyObject* levels = PyTuple_New(id.GetDepth());
  for (int32_t i = 0; levels && i < id.GetDepth(); ++i) {
    PyObject* level = NewDescLevel(id[i]);
    if (level)
      PyTuple_SET_ITEM(levels, i, level);
    else
      Py_CLEAR(levels);
  }
  return levels ? Py_BuildValue("(O()N)", Py_TYPE(self), levels) : nullptr;
}

PyObject* SetState(DescID& self, PyObject* levels) {
  if (!PyTuple_Check(levels)) {
    RaiseExpectedTypeFor("__setstate__", "tuple", levels);
    return nullptr;
  }
  DescID id;
  for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(levels); ++i) {
    PyObject* level = PyTuple_GET_ITEM(levels, i);
    if (!IsDescLevel(level)) {
      RaiseExpectedTypeFor("__setstate__", g_DescLevelType.tp_name, level);
      return nullptr;
    }
    id.PushId(ValueOf<DescLevel>(level));
  }
  self = std::move(id);
  return NewNone();
}

PyObject* CustomToPython(const HostGeData& data) {
  return Guarded([&]() -> PyObject* {
    const auto* word = GeData::CustomOf<HostDescID>(data);
    return word ? NewDescID(DescID::Copy(*word)) : nullptr;
  });
}

bool CustomFromPython(PyObject* object, GeData& data) {
  return StoreMade(GeData::Custom(ValueOf<DescID>(object).Word()), object, data);
}

const CustomDataEntry g_custom(HOST_CUSTOM_DESCID, g_DescIDType, CustomToPython, CustomFromPython);

PyNumberMethods g_number = {.nb_lshift = Shift};
PyMappingMethods g_mapping = {.mp_length = Length, .mp_subscript = GetItem};
PySequenceMethods g_sequence = {.sq_item = LevelAt};

PyMethodDef g_methods[] = {
    Method<&SetId, "O!", "subid">("SetId", "SetId(subid) -> None\n\nSet the highest level to subid."),
    Method<&PushId, "O!", "subid">("PushId", "PushId(subid) -> None\n\nPush a new level onto the stack."),
    Method<&DescID::PopId>("PopId", "PopId() -> None\n\nPops the highest level from the stack."),
    Method<&DescID::GetDepth>("GetDepth", "GetDepth() -> int\n\nReturns the depth of the stack."),
    Method<&DescID::GetHashCode>("GetHashCode", "GetHashCode() -> int\n\nA number that equal ids share."),
    Method<&IsPartOf, "O!", "cmp">(
        "IsPartOf",
        "IsPartOf(cmp) -> (bool, int)\n\nChecks if a description ID is part of another.\n\n"
        "It is when its levels stand in cmp in a row; the position is that of the first one, or -1."),
    Method<&FormatText, "O", "format_spec">("__format__",
                                            "__format__(format_spec) -> str\n\nThe text in that format."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor copies and pickles."),
    Method<&SetState, "O", "levels">("__setstate__", "__setstate__(levels) -> None\n\nFor copies and pickles."),
    {},
};

}  // namespace

PyTypeObject g_DescIDType = MakeType<DescIDRecord>({
    .name = "qlx.DescID",
    .doc = "The address of a parameter.",
    .methods = g_methods,
    .create = ConstructDescID,
    .destroy = Present<DescID>::Free,
    .compare = Compare,
    .text = Text,
    .number = &g_number,
    .mapping = &g_mapping,
    .sequence = &g_sequence,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_DescIDType);
}

PyObject* Present<DescID>::Wrap(const DescID& value) {
  return Guarded([&]() -> PyObject* {
    DescID copy = value;  // what may throw comes ahead of the record
    PyObject* object = AllocWrapper(g_wrapperTracker, &g_DescIDType);
    if (object) new (&ValueOf<DescID>(object)) DescID(std::move(copy));
    return object;
  });
}

void Present<DescID>::Free(PyObject* self) {
  ValueOf<DescID>(self).~DescID();
  FreeWrapper(g_wrapperTracker, self);
}

}  // namespace qlx
