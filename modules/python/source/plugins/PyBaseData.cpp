// qlx.plugins.BaseData: what the classes of plug-ins derive from.

#include "interpreter/lib_python_leaks.h"
#include "kit/i_errors.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "plugins/plugins.h"

namespace qlx {
namespace {

// Only what derives from it has instances.
PyObject* Construct(PyTypeObject* type, PyObject*, PyObject*) {
  return type == &g_BaseDataType ? RaiseNotInstantiable() : AllocWrapper(g_wrapperTracker, type);
}

void Free(PyObject* self) { FreeWrapper(g_wrapperTracker, self); }

}  // namespace

PyTypeObject g_BaseDataType = MakeType<PyObject>({
    .name = "qlx.plugins.BaseData",
    .doc = "Base class for all plugin classes.",
    .create = Construct,
    .destroy = Free,
    .flags = kSubclassable,
});

namespace {
const TypeQueueEntry g_entry(g_BaseDataType);
}

}  // namespace qlx
