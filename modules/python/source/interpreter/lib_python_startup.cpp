// The start-up scripts `python_init.py`.

#include <string>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_scriptscope.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "tavor/registry.h"
#include "tavor/virtualmachinescope.h"

namespace qlx {

tavor::Error RunStartupScript(const Filename& file) {
  const String path = file.GetString();
  const std::string name(kelvar::View(path));
  if (kelvar::HostFileExists(file, true)) return tavor::Error("'" + name + "' is a folder, not a script");
  if (!kelvar::HostFileExists(file, false)) {
    tavor::Error error("'" + name + "' does not exist", HOST_RESULT_NOT_FOUND);
    LogError(error);
    return error;
  }
  String source;
  if (tavor::Error error = ReadScript(file, source)) return error;
  auto* machine = static_cast<VirtualMachine*>(tavor::registry::Find(kMachineRegistry, kMachineId));
  if (!machine) return tavor::Error(std::string("no virtual machine is registered under '") + kMachineId + "'");
  auto scope = tavor::Ref<VirtualMachineScope>::Adopt(machine->CreateScope());
  if (!scope || scope->Init(path, source, ERRORHANDLING_PRINT, nullptr))
    return tavor::Error("Error on Init() of " + name);
  if (tavor::Error error = scope->Add(kelvar::Text("__file__"), path)) return error;
  if (tavor::Error error = scope->Add(kelvar::Text("__name__"), kelvar::Text("__main__"))) return error;
  kelvar::StopAllThreads(1, 1, 1);
  const tavor::Error error = scope->Execute();
  // A script that asks the application to end is no fault.
  if (!error || error.Code() == HOST_RESULT_EXIT) return {};
  return tavor::Error("Error on Execute() of " + name);
}

}  // namespace qlx
