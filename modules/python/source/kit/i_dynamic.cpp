// Modules and classes that other plug-ins add to the package.

#include "kit/i_dynamic.h"

#include <Python.h>

#include <memory>
#include <string>
#include <vector>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/messages.h"
#include "kelvar/general.h"

namespace qlx {
namespace {

struct ModuleRegistry {
  std::vector<std::string> modules;
  std::vector<PyTypeObject*> classes;
};

std::unique_ptr<ModuleRegistry> g_registry;

}  // namespace

void CreateModuleRegistry() {
  if (!g_registry) g_registry = std::make_unique<ModuleRegistry>();
}

void FreeModuleRegistry() { g_registry.reset(); }

void RegisterDynamicModules() {
  if (!g_registry) return;
  kelvar::GePluginMessage(kMessageRegisterDynamic, nullptr);
  for (PyTypeObject* type : g_registry->classes) {
    if (PyType_Ready(type) == 0) continue;
    LogError(tavor::Error(std::string("the type '") + type->tp_name +
                          "' can't be made ready: " + TakePendingErrorText()));
  }
}

}  // namespace qlx
