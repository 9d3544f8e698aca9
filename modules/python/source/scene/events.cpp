// Events of the scene, as functions of the package.

#include "interpreter/lib_python_scriptscope.h"
#include "kelvar/general.h"
#include "kit/i_row.h"
#include "scene/scene.h"

namespace qlx {
namespace {

// The script of a scene node runs while the scene is evaluated for a refresh: it asks for no other one.
void EventAdd(PyObject*, int32_t flags) {
  if (!IsScriptExecuting()) kelvar::EventAdd(flags);
}

PyMethodDef g_functions[] = {
    Method<&EventAdd, "|i", "flags=0">(
        "EventAdd",
        "EventAdd(flags=0) -> None\n\nAsks for a refresh of everything that shows the scene; flags are\n"
        "qlx.EVENT_FORCEREDRAW and qlx.EVENT_ANIMATE. Does nothing in the script of a scene node."),
    {},
};

}  // namespace

bool AddEventFunctions(PyObject* package) { return PyModule_AddFunctions(package, g_functions) == 0; }

}  // namespace qlx
