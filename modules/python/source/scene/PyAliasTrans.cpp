// qlx.AliasTrans: the translation of links while elements are copied.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"

namespace qlx {

template <>
struct Present<AliasTrans> {
  static PyObject* Wrap(AliasTrans* host, bool owned);  // the wrapper frees it
};

namespace {

AliasTransRecord* AsRecord(PyObject* object) { return reinterpret_cast<AliasTransRecord*>(object); }

void Free(PyObject* self) {
  if (AsRecord(self)->data) AsRecord(self)->data->Free();
  FreeWrapper(g_wrapperTracker, self);
}

bool Init(AliasTransRecord* self, BaseDocument* doc) { return self->data->Init(doc); }
void Translate(AliasTransRecord* self, bool connect) { self->data->Translate(connect); }

PyMethodDef g_methods[] = {
    Method<&Init, "|A!", "doc">(
        "Init",
        "Init(doc=None) -> bool\n\nMakes it ready for copies of elements of that document: call it first."),
    Method<&Translate, "b", "connect_oldgoals">(
        "Translate",
        "Translate(connect_oldgoals) -> None\n\n"
        "Points the links of the copies at the copies of what the originals link: call it when all is copied. "
        "Links to what was not copied stay with True, and are cleared with False."),
    {},
};

}  // namespace

PyObject* Present<AliasTrans>::Wrap(AliasTrans* host, bool) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_AliasTransType);
  if (object)
    AsRecord(object)->data = host;
  else
    host->Free();
  return object;
}

PyTypeObject g_AliasTransType = MakeType<AliasTransRecord>({
    .name = "qlx.AliasTrans",
    .doc = "The translation of links while elements are copied.",
    .methods = g_methods,
    .create = Create<&AliasTrans::Alloc, "">,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_AliasTransType);
}

}  // namespace qlx
