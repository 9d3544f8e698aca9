// The one interpreter of the process: bring-up, references, shutdown.

#include "interpreter/lib_python.h"

#include <atomic>
#include <string>

#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_link.h"
#include "interpreter/lib_python_machine.h"
#include "interpreter/lib_python_spinlock.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_converters.h"
#include "kit/i_package.h"
#include "kit/i_typequeue.h"
#include "tavor/application.h"
#include "tavor/datadictionary.h"
#include "tavor/logger.h"
#include "tavor/registry.h"

namespace qlx {
namespace {

enum BringUpState : uint32_t { kNotDone = 0, kRunning = 1, kDone = 2 };

std::atomic<uint32_t> g_bringUpGuard{kNotDone};
CPythonLibrary* g_libraryRef = nullptr;
VirtualMachineRef g_machineRef;
Logger* g_logger = nullptr;

// The version that other modules see; settled, and not the running interpreter's.
constexpr unsigned kModuleVersion[] = {3, 7, 7};

// The package becomes importable: known to the interpreter before it starts.
void ExtendInittab() {
  static bool done = false;
  if (done || BindInterpreterLibrary() || Py_IsInitialized()) return;
  static _inittab table[] = {{"qlx", InitPackage}, {nullptr, nullptr}};
  done = PyImport_ExtendInittab(table) == 0;
}

tavor::Result<VirtualMachineRef> CreateDefaultMachine() {
  ProvideMachineClass();
  const auto* machineClass =
      static_cast<const VirtualMachineClass*>(tavor::registry::Find(kMachineClassRegistry, kMachineClassId));
  if (!machineClass || !machineClass->Create)
    return tavor::Error(std::string("no virtual machine is registered under '") + kMachineClassId + "'");
  VirtualMachineRef machine = VirtualMachineRef::Adopt(machineClass->Create());
  if (!machine) return tavor::Error(std::string("'") + kMachineClassId + "' gave no virtual machine");
  return machine;
}

tavor::Result<uint32_t> StartFlags() {
  uint32_t flags = kInterpreterFlags;
  if (!IsCommandLineApplication()) return flags | kFlagEmbedded;
  CommandLine commandLine;
  if (tavor::Error error = ParseCommandLine(commandLine, flags)) return error;
  if (commandLine.operation != PYSTARTOPERATION_NONE) flags |= kFlagHasOperation;
  return flags;
}

tavor::Error InitMachine(VirtualMachine& machine, uint32_t flags) {
  DataDictionary* settings = DataDictionary::Create();
  if (!settings) return tavor::Error("no settings for the virtual machine", HOST_RESULT_OUT_OF_MEMORY);
  settings->SetInt(CPYTHON_INTERPRETERFLAGS, flags);
  tavor::Error error = machine.Init(settings, DEFAULTRUNTIME_DEFAULT_37);
  settings->Free();
  return error;
}

// Steps 3 to 7: from the registry's class to a running, published machine.
tavor::Error BringUpMachine() {
  tavor::Result<VirtualMachineRef> machine = CreateDefaultMachine();
  if (!machine) return machine.Failure();
  tavor::Result<uint32_t> flags = StartFlags();
  if (!flags) return flags.Failure();
  if (tavor::Error error = InitMachine(*machine->Get(), *flags)) return error;
  RegisterDataTypeConverters();
  if (tavor::Error error = tavor::registry::Insert(kMachineRegistry, kMachineId, machine->Get())) {
    (*machine)->Free();
    return error;
  }
  TavorObject* library = (*machine)->GetLibraryRef();
  if (Implements(library, CPythonLibrary::kIdentity)) g_libraryRef = reinterpret_cast<CPythonLibrary*>(library);
  g_machineRef = std::move(*machine);
  return {};
}

tavor::Error PublishModuleInfo() {
  std::string version;
  for (unsigned part : kModuleVersion) version += (version.empty() ? "" : ".") + std::to_string(part);
  // "python2" is the settled identity and says nothing of the interpreter.
  return tavor::application::RegisterModuleInfo("net.tavor.moduleinfo.python2", kelvar::Text("python37"),
                                                kelvar::Text("Python C-Interpreter"), kelvar::Text(version));
}

bool HasNoGuiArgument() {
  for (int32_t i = 0; i < tavor::application::GetArgumentCount(); ++i)
    if (kelvar::View(tavor::application::GetArgument(i)) == "-nogui") return true;
  return false;
}

tavor::Error CreateLogger() {
  const int32_t output =
      IsCommandLineApplication() || HasNoGuiArgument() ? LOGGER_OUTPUT_APPLICATION : LOGGER_OUTPUT_DEFAULT;
  Logger* logger = tavor::logger::Create("net.tavor.logger.python", kelvar::Text("Python"));
  tavor::Error error = logger ? tavor::logger::AddOutput(logger, output, LOGGER_LEVEL_ALL)
                              : tavor::Error("the logger 'net.tavor.logger.python' can't be created");
  if (error && logger) tavor::logger::Remove(logger);
  g_logger = error ? tavor::logger::GetDefault() : logger;
  return error;
}

}  // namespace

tavor::Error VmBringUp() {
  ExtendInittab();
  BackOff wait(&g_bringUpGuard);
  for (uint32_t state; (state = g_bringUpGuard.load(std::memory_order_acquire)) != kDone;) {
    if (state != kNotDone || !g_bringUpGuard.compare_exchange_strong(state, kRunning)) {
      wait.Turn();
      continue;
    }
    const tavor::Error error = BringUpMachine();
    g_bringUpGuard.store(error ? kNotDone : kDone, std::memory_order_release);
    BackOff::Wake(&g_bringUpGuard);
    if (!error) break;
    LogError(error);
    break;
  }
  if (tavor::Error error = PublishModuleInfo()) return error;
  return CreateLogger();
}

void VmShutdown() {
  FreeTypeQueue();
  if (g_machineRef) {
    tavor::registry::Erase(kMachineRegistry, kMachineId);
    g_machineRef->Free();
    g_machineRef = {};
    g_libraryRef = nullptr;
  }
  if (g_logger) {
    if (g_logger != tavor::logger::GetDefault()) tavor::logger::Remove(g_logger);
    g_logger = nullptr;
  }
}

CPythonLibrary* LibraryRef() { return g_libraryRef; }
VirtualMachine* MachineRef() { return g_machineRef.Get(); }
bool IsPythonPresent() { return g_libraryRef && g_libraryRef->CPy_IsInitialized(); }

bool IsCommandLineApplication() {
  return kelvar::View(tavor::application::GetIdentity()) == "net.tavor.application.python";
}

void Log(std::string_view text, int32_t level) {
  Logger* logger = g_logger ? g_logger : tavor::logger::GetDefault();
  tavor::logger::Write(logger, LOGGER_TARGET_USER, level, kelvar::Text(std::string(text) + "\n"), nullptr, 0);
}

void LogError(const tavor::Error& error) { Log(error.Text(), LOGGER_LEVEL_ALL); }

}  // namespace qlx
