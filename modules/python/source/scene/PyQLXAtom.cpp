// qlx.QLXAtom: what all elements of a scene have in common.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"

namespace qlx {
namespace {

AtomWrapper* AsWrapper(PyObject* object) { return reinterpret_cast<AtomWrapper*>(object); }

bool IsAlive(AtomWrapper* self) { return LookUp(self->link) != nullptr; }

// `atom()` is the atom while it lives, and None afterwards.
PyObject* Call(PyObject* self, PyObject* args, PyObject* keywords) {
  Arguments<&Call, TypeList<>, ""> none;
  if (!none.Parse(args, keywords)) return nullptr;
  PyObject* result = IsAlive(AsWrapper(self)) ? self : Py_None;
  Py_INCREF(result);
  return result;
}

PyMethodDef g_methods[] = {
    Method<&IsAlive>(
        "IsAlive",
        "IsAlive() -> bool\n\n"
        "Whether the host still has the object. Raises nothing; all other methods raise ReferenceError "
        "for an object that has gone."),
    Method<&QLXAtom::GetType>("GetType", "GetType() -> int\n\nThe id of the object's type."),
    Method<&QLXAtom::GetRealType>("GetRealType",
                                  "GetRealType() -> int\n\n"
                                  "The id of the type beneath what the object stands for."),
    Method<&QLXAtom::IsInstanceOf, "i", "id">(
        "IsInstanceOf",
        "IsInstanceOf(id) -> bool\n\n"
        "Whether the object is of that type or of one that derives from it."),
    Method<&QLXAtom::IsInstanceOf, "i", "id">("CheckType",
                                              "CheckType(id) -> bool\n\nThe same as IsInstanceOf."),
    {},
};

}  // namespace

PyTypeObject g_QLXAtomType = MakeType<AtomWrapper>({
    .name = "qlx.QLXAtom",
    .doc = "Base class of many other classes.",
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = FreeLinkOnly,
    .compare = CompareHosts<QLXAtom>,
    .call = Call,
});

namespace {
const TypeQueueEntry g_entry(g_QLXAtomType);
}

}  // namespace qlx
