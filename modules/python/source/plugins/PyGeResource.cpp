// qlx.plugins.GeResource: the texts and descriptions in a folder, which plug-ins hand on.

#include "kit/i_errors.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "plugins/plugins.h"

namespace qlx {
namespace {

AtomWrapper* AsRecord(PyObject* object) { return reinterpret_cast<AtomWrapper*>(object); }

GeResource* Resolve(PyObject* object) { return static_cast<GeResource*>(LookUp(AsRecord(object)->link)); }

void Free(PyObject* self) {
  GeResource* host = AsRecord(self)->owned ? Resolve(self) : nullptr;
  if (host) host->Close();
  FreeLink(AsRecord(self)->link);
  FreeWrapper(g_wrapperTracker, self);
}

}  // namespace

PyTypeObject g_GeResourceType = MakeType<AtomWrapper>({
    .name = "qlx.plugins.GeResource",
    .doc = "The resource folder of a plugin, which registrations take; that of a plugin's own file is __res__.",
    .create = RefuseInstance,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_GeResourceType);
}

bool Present<GeResource>::Get(PyObject* object, GeResource*& host) {
  host = Resolve(object);
  return host || RefuseDead(AsRecord(object));
}

PyObject* Present<GeResource>::Wrap(GeResource* host, bool owned) {
  HostLink link{};
  PyObject* object = SetLink(host, link) ? AllocWrapper(g_wrapperTracker, &g_GeResourceType) : PyErr_NoMemory();
  if (object) {
    AsRecord(object)->link = link;
    AsRecord(object)->owned = owned;
    return object;
  }
  FreeLink(link);
  if (owned) host->Close();
  return nullptr;
}

}  // namespace qlx
