// qlx.BaseContainer: the host's container of settings, a free-standing one or that of an element.

#include <limits>

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "values/values.h"

namespace qlx {
namespace {

ContainerRecord* AsRecord(PyObject* object) { return reinterpret_cast<ContainerRecord*>(object); }

// The container that the constructor's argument asks for; null with an exception.
BaseContainer* MakeContainer(PyObject* from) {
  BaseContainer* made = nullptr;
  if (!from || from == Py_None) {
    made = BaseContainer::Alloc(0);
  } else if (PyLong_Check(from)) {
    int overflow;
    const long id = PyLong_AsLongAndOverflow(from, &overflow);
    if (overflow || int32_t(id) != id) return RaiseIntTooLarge(), nullptr;
    made = BaseContainer::Alloc(int32_t(id));
  } else if (IsBaseContainer(from)) {
    const BaseContainer* source = BaseContainerOf(from);
    if (!source) return nullptr;
    made = source->GetClone();
  } else {
    RaiseExpectedTypeFor("qlx.BaseContainer.__init__", "None, int or qlx.BaseContainer", from);
    return nullptr;
  }
  if (!made) ReportAllocFailed(&g_BaseContainerType, 0);
  return made;
}

PyObject* Construct(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&Construct, TypeList<PyObject*>, "|O", "n"> arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  BaseContainer* made = arguments.Apply([](PyObject* n) { return MakeContainer(n); });
  return made ? NewBaseContainer(made, true, nullptr) : nullptr;  // the record frees it
}

void Free(PyObject* self) {
  ContainerRecord* record = AsRecord(self);
  if (record->owned && record->data) record->data->Free();
  record->data = nullptr;
  FreeLink(record->hostLink);
  FreeWrapper(g_wrapperTracker, self);
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!IsBaseContainer(left) || !IsBaseContainer(right) || (op != Py_EQ && op != Py_NE))
    Py_RETURN_NOTIMPLEMENTED;
  const BaseContainer* a = BaseContainerOf(left);
  const BaseContainer* b = a ? BaseContainerOf(right) : nullptr;
  return b ? ToPython(a->IsEqual(b) == (op == Py_EQ)) : nullptr;
}

PyMethodDef g_methods[] = {
    Method<&BaseContainer::GetId>("GetId", "GetId() -> int\n\nThe container's own id."),
    Method<&BaseContainer::SetId, "i", "id">("SetId", "SetId(id) -> None\n\nSets the container's own id."),
    {},
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsBaseContainer(object)) return Conversion::kWrongType;
  BaseContainer* container = BaseContainerOf(object);
  if (!container) return Conversion::kFailed;
  *static_cast<BaseContainer**>(target) = container;
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kContainer, Convert);

}  // namespace

PyTypeObject g_BaseContainerType = MakeType<ContainerRecord>({
    .name = "qlx.BaseContainer",
    .doc = "A container of settings.",
    .methods = g_methods,
    .create = Construct,
    .destroy = Free,
    .compare = Compare,
});

namespace {
const TypeQueueEntry g_entry(g_BaseContainerType);
}

bool IsBaseContainer(PyObject* object) { return PyObject_TypeCheck(object, &g_BaseContainerType); }

PyObject* NewBaseContainer(BaseContainer* data, bool owned, QLXAtom* host) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_BaseContainerType);
  if (object && (!host || SetLink(host, AsRecord(object)->hostLink))) {
    AsRecord(object)->data = data;
    AsRecord(object)->owned = owned;
    return object;
  }
  if (owned) data->Free();
  if (!object) return nullptr;
  Py_DECREF(object);
  return PyErr_NoMemory();
}

BaseContainer* BaseContainerOf(PyObject* object) {
  if (!IsBaseContainer(object)) {
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return nullptr;
  }
  const ContainerRecord* record = AsRecord(object);
  if (record->dead) {
    ReportNotAlive(Py_TYPE(object));
    return nullptr;
  }
  if (record->hostLink.slot && !LookUp(record->hostLink)) {
    ReportHostNotAlive(Py_TYPE(object));
    return nullptr;
  }
  return record->data;
}

void MarkContainerDead(PyObject* object) { AsRecord(object)->dead = true; }

PyObject* Present<BaseContainer>::WrapPart(BaseContainer* host, PyObject* owner) {
  QLXAtom* atom;
  if (!Present<QLXAtom>::Get(owner, atom)) return nullptr;
  return NewBaseContainer(host, false, atom);
}

}  // namespace qlx
