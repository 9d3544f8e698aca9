// The one interpreter of the process: bring-up, references, shutdown.
#ifndef INTERPRETER_LIB_PYTHON_H
#define INTERPRETER_LIB_PYTHON_H

#include <cstdint>
#include <string_view>

#include "tavor/cpythonlibrary.h"
#include "tavor/error.h"
#include "tavor/logger.h"
#include "tavor/ref.h"
#include "tavor/virtualmachine.h"

namespace qlx {

using VirtualMachineRef = tavor::Ref<VirtualMachine>;

inline constexpr const char* kMachineClassRegistry = "net.tavor.python.registry.virtualmachines";
inline constexpr const char* kMachineClassId = "net.tavor.python.virtualmachine.cpython";
inline constexpr const char* kMachineRegistry = "net.tavor.python.virtualmachines";
inline constexpr const char* kMachineId = "net.tavor.python.virtualmachine.qlxpy37";

// The pair of the initialisation stage. Both may run more than once.
tavor::Error VmBringUp();
void VmShutdown();

// Null until the bring-up succeeded and after the shutdown. Read without a lock.
CPythonLibrary* LibraryRef();
VirtualMachine* MachineRef();

// Python counts as present when the library is there and its interpreter runs.
bool IsPythonPresent();

// Runs one `python_init.py`.
tavor::Error RunStartupScript(const Filename& file);

// The logger "net.tavor.logger.python", or null ahead of its creation.
Logger* PythonLogger();

// Whether the process is the command-line application.
bool IsCommandLineApplication();

// A line on the module's logger, or on the host's default one while there is none. `file` and
// `line` tell where in the source it comes from.
void Log(std::string_view text, int32_t level, const char* file = __builtin_FILE(),
         int32_t line = __builtin_LINE());
void LogError(const tavor::Error& error);

}  // namespace qlx

#endif
