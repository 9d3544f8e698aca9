// The one interpreter of the process: bring-up, references, shutdown.

#include "interpreter/lib_python.h"

#include <atomic>
#include <mutex>
#include <string>

#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_link.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_machine.h"
#include "interpreter/lib_python_spinlock.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_converters.h"
#include "kit/i_lasting.h"
#include "kit/i_package.h"
#include "kit/i_typequeue.h"
#include "tavor/application.h"
#include "tavor/datadictionary.h"
#include "tavor/logger.h"
#include "tavor/registry.h"

namespace qlx {
namespace {

enum BringUpState : uint32_t { kNotDone = 0, kRunning = 1, kDone = 2, kRunningWithWaiter = 3 };

std::atomic<uint32_t> g_bringUpGuard{kNotDone};
CPythonLibrary* g_libraryRef = nullptr;
Lasting<VirtualMachineRef> g_machineRef;
std::atomic<Logger*> g_logger{nullptr};
SpinLock g_loggerLock;

// The version that other modules see; settled, and not the running interpreter's.
constexpr unsigned kModuleVersion[] = {3, 7, 7};

// The package becomes importable: known to the interpreter before it starts.
void ExtendInittab() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (BindInterpreterLibrary() || Py_IsInitialized()) return;
    static _inittab table[] = {{"qlx", InitPackage}, {nullptr, nullptr}};
    PyImport_ExtendInittab(table);
  });
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
  if (!IsCommandLineApplication()) return kInterpreterFlags | kFlagEmbedded;
  const CommandLine& commandLine = ReadCommandLine();
  if (commandLine.fault) return commandLine.fault;
  return commandLine.operation == PYSTARTOPERATION_NONE ? commandLine.flags
                                                        : commandLine.flags | kFlagHasOperation;
}

tavor::Error InitMachine(VirtualMachine& machine, uint32_t flags) {
  DataDictionary* settings = DataDictionary::Create();
  if (!settings) return tavor::Error("no settings for the virtual machine", HOST_RESULT_OUT_OF_MEMORY);
  settings->SetInt(CPYTHON_INTERPRETERFLAGS, flags);
  if (IsCommandLineApplication()) {
    settings->SetString(CPYTHON_WARNING_OPTIONS, kelvar::Bytes(ReadCommandLine().warnings));
    settings->SetString(CPYTHON_EXTENDED_OPTIONS, kelvar::Bytes(ReadCommandLine().extended));
  }
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
  *g_machineRef = std::move(*machine);
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
  const std::lock_guard guard(g_loggerLock);
  if (g_logger) return {};
  const int32_t output =
      IsCommandLineApplication() || HasNoGuiArgument() ? LOGGER_OUTPUT_APPLICATION : LOGGER_OUTPUT_DEFAULT;
  Logger* logger = tavor::logger::Create("net.tavor.logger.python", kelvar::Text("Python"));
  tavor::Error error = logger ? tavor::logger::AddOutput(logger, output, LOGGER_LEVEL_ALL)
                              : tavor::Error("the logger 'net.tavor.logger.python' can't be created");
  if (error && logger) tavor::logger::Remove(logger);
  g_logger = error ? tavor::logger::GetDefault() : logger;
  return error;
}

// Leaves the guard, and wakes who waits at it.
void LeaveGuard(BringUpState state) {
  if (g_bringUpGuard.exchange(state, std::memory_order_acq_rel) == kRunningWithWaiter)
    BackOff::Wake(&g_bringUpGuard);
}

// True for the one thread that is to bring the machine up; the others wait for it.
bool EnterGuard() {
  BackOff wait(&g_bringUpGuard);
  while (true) {
    uint32_t state = kNotDone;
    if (g_bringUpGuard.compare_exchange_strong(state, kRunning, std::memory_order_acq_rel)) return true;
    if (state == kDone) return false;
    if (state == kRunning) g_bringUpGuard.compare_exchange_strong(state, kRunningWithWaiter);
    wait.Turn();
  }
}

}  // namespace

tavor::Error VmBringUp() {
  ExtendInittab();
  if (EnterGuard()) {
    const tavor::Error error = BringUpMachine();
    LeaveGuard(error ? kNotDone : kDone);
    if (error) LogError(error);
  }
  if (tavor::Error error = PublishModuleInfo()) return error;
  return CreateLogger();
}

void VmShutdown() {
  FreeTypeQueue();
  if (*g_machineRef) {
    tavor::registry::Erase(kMachineRegistry, kMachineId);
    (*g_machineRef)->Free();
    *g_machineRef = {};
    g_libraryRef = nullptr;
  }
  if (Logger* logger = g_logger.exchange(nullptr); logger && logger != tavor::logger::GetDefault())
    tavor::logger::Remove(logger);
}

CPythonLibrary* LibraryRef() { return g_libraryRef; }
VirtualMachine* MachineRef() { return g_machineRef->Get(); }
bool IsPythonPresent() { return IsPythonRunning() && g_libraryRef && g_libraryRef->CPy_IsInitialized(); }

Logger* PythonLogger() { return g_logger; }

bool IsCommandLineApplication() {
  return kelvar::View(tavor::application::GetIdentity()) == "net.tavor.application.python";
}

void Log(std::string_view text, int32_t level, const char* file, int32_t line) {
  Logger* logger = g_logger;
  tavor::logger::Write(logger ? logger : tavor::logger::GetDefault(), LOGGER_TARGET_USER, level,
                       kelvar::Bytes(std::string(text) + "\n"), file, line);
}

void LogError(const tavor::Error& error) { Log(error.Text(), LOGGER_LEVEL_ALL, error.File(), error.Line()); }

}  // namespace qlx
