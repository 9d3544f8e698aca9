// The module's own virtual machine over CPython.

#include "interpreter/lib_python_machine.h"

#include <Python.h>

#include <atomic>
#include <cstring>
#include <new>
#include <string>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_console.h"
#include "interpreter/lib_python_execute.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_link.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_paths.h"
#include "interpreter/lib_python_threads.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "tavor/application.h"
#include "tavor/datadictionary.h"
#include "tavor/registry.h"

namespace qlx {
namespace {

// Words of the interpreter about itself; empty before its library is there.
HostString About(const char* (*word)()) {
  return IsInterpreterLibraryBound() ? kelvar::Text(word()).Release() : HostString{};
}

class CPythonMachine : public VirtualMachine {
 public:
  CPythonMachine();

  void Retain() { ++references_; }
  void Release() {
    if (--references_ == 0) delete this;
  }

  HostResult Init(const DataDictionary* settings, int32_t runtime) {
    CPythonLibrary* library = CPythonLibraryObject();
    if (runtime != DEFAULTRUNTIME_DEFAULT_37 && runtime != DEFAULTRUNTIME_DEFAULT)
      return tavor::Error("this machine has no runtime " + std::to_string(runtime),
                          HOST_RESULT_ILLEGAL_ARGUMENT)
          .ToHost();
    if (tavor::Error error = library->Init()) return error.ToHost();
    const int64_t flags =
        settings ? settings->GetInt(CPYTHON_INTERPRETERFLAGS, kInterpreterFlags) : kInterpreterFlags;
    embedded_ = flags & kFlagEmbedded;
    if (tavor::Error error = library->CPy_Initialize(settings)) return error.ToHost();
    started_ = true;
    if (tavor::Error error = Prepare(settings)) {
      End();
      return error.ToHost();
    }
    FreeLockOfStart();
    return {};
  }

  // Ends the interpreter that this machine started, and no other.
  void Free() {
    if (!started_ || !IsPythonRunning()) return;
    if (embedded_) LetGoOfPythonThreads();
    TakeLockForEnd();
    End();
  }

  VirtualMachineScope* CreateScope() { return IsPythonRunning() ? CreateCPythonScope() : nullptr; }

  HostString GetName() { return kelvar::Text("Python").Release(); }
  HostString GetVersion() {
    if (!IsInterpreterLibraryBound()) return {};
    const std::string version = Py_GetVersion();
    return kelvar::Text(version.substr(0, version.find(' '))).Release();
  }
  HostString GetCopyright() { return About(Py_GetCopyright); }
  HostString GetCompiler() { return About(Py_GetCompiler); }
  HostString GetBuildInfo() { return About(Py_GetBuildInfo); }

  HostResult EnterInteractiveMode() {
    return Running([] { return RunInteractiveLoop(); });
  }
  HostResult ExecuteCode(const HostString* code) {
    return Running([&] { return RunMainText(*reinterpret_cast<const String*>(code)); });
  }
  HostResult ExecuteFile(const HostFilename* file) {
    return Running([&] { return RunMainFile(*reinterpret_cast<const Filename*>(file)); });
  }
  HostResult ExecuteModule(const HostString* name) {
    return Running([&] { return RunMainModule(*reinterpret_cast<const String*>(name)); });
  }

  HostString GetDocumentString() {
    return kelvar::Text("The CPython interpreter that the module qlx embeds.").Release();
  }
  TavorObject* GetLibraryRef() { return reinterpret_cast<TavorObject*>(CPythonLibraryObject()); }
  HostString GetAllAvailableVirtualMachineLibraries() {
    return kelvar::Text(IsInterpreterLibraryBound() ? InterpreterLibraryFile() : "").Release();
  }

 private:
  template <class Function>
  static HostResult Running(Function function) {
    if (!IsPythonRunning()) return tavor::Error("the Python interpreter does not run").ToHost();
    return function().ToHost();
  }

  // What the running interpreter gets ahead of any script. Lock held.
  tavor::Error Prepare(const DataDictionary* settings) const {
    try {
      tavor::Error error =
          settings ? AddSearchPath(settings->GetString(CPYTHON_ADDITIONAL_SYS_PATH)) : tavor::Error();
      if (!error) error = AddOwnFolders();
      if (!error) error = ConnectToConsole();
      if (!error && !embedded_) error = SetExecutable();
      return error;
    } catch (const std::bad_alloc&) {
      return tavor::Error("out of memory", HOST_RESULT_OUT_OF_MEMORY);
    }
  }

  void End() {
    started_ = false;
    CPythonLibraryObject()->CPy_Finalize();
    CPythonLibraryObject()->Free();
  }

  // Folders as in PYTHONPATH, parted by colons.
  static tavor::Error AddSearchPath(const String& folders) {
    std::string_view rest = kelvar::View(folders);
    while (!rest.empty()) {
      const size_t end = rest.find(':');
      if (tavor::Error error = Append(Filename::FromString(kelvar::Bytes(rest.substr(0, end))))) return error;
      rest = end == std::string_view::npos ? "" : rest.substr(end + 1);
    }
    return {};
  }

  // Without the framework's file the interpreter keeps its own streams.
  static tavor::Error ConnectToConsole() {
    const Filename framework = GetFrameworkFolder();
    Filename file = framework;
    if (!framework.Content() || file.Append(kelvar::Text("_qlx_init.py"))) return {};
    return kelvar::HostFileExists(file, false) ? ConnectStreams(framework) : tavor::Error();
  }

  // What a script starts as its own interpreter has the package too.
  static tavor::Error SetExecutable() {
    const String text = tavor::application::GetExecutable().GetString();
    const std::string_view bytes = kelvar::View(text);
    if (bytes.empty()) return {};
    PyObject* path = PyUnicode_DecodeFSDefaultAndSize(bytes.data(), Py_ssize_t(bytes.size()));
    const bool ok = path && PySys_SetObject("executable", path) == 0;
    Py_XDECREF(path);
    if (ok) return {};
    PyErr_Clear();
    return tavor::Error("sys.executable can't be set");
  }

  static tavor::Error AddOwnFolders() {
    CPythonLibrary* library = CPythonLibraryObject();
    library->RegisterSpecialPath(SPECIALPATH_TAVOR_MODULES, GetFrameworkFolder());
    library->RegisterSpecialPath(SPECIALPATH_PREFS_PYTHON_GENERATED_DIRECTORY, GetPackageFolder());
    library->RegisterSpecialPath(SPECIALPATH_PREFS_PYTHON_GLOBAL_LIBS, GetGlobalPreferenceFolder());
    library->RegisterSpecialPath(SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS, GetPreferenceFolder());
    for (int32_t which = SPECIALPATH_TAVOR_MODULES; which <= SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS; ++which)
      if (tavor::Error error = Append(library->GetSpecialPath(which))) return error;
    return {};
  }

  static tavor::Error Append(const Filename& folder) {
    if (!folder.Content()) return {};
    return CPythonLibraryObject()->CPySys_SetPath(folder.Word(), 1, PATHHANDLE_APPEND_AT_END);
  }

  std::atomic<int> references_{1};
  bool embedded_ = true;
  bool started_ = false;
};

CPythonMachine::CPythonMachine() { table = &kVirtualMachineTable<CPythonMachine>; }

VirtualMachine* CreateMachine() { return new (std::nothrow) CPythonMachine; }

VirtualMachineClass g_machineClass = {sizeof(VirtualMachineClass), 0, CreateMachine};

}  // namespace

void ProvideMachineClass() {
  if (tavor::registry::Find(kMachineClassRegistry, kMachineClassId)) return;
  if (tavor::Error error = tavor::registry::Insert(kMachineClassRegistry, kMachineClassId, &g_machineClass))
    LogError(error);
}

bool Implements(const TavorObject* object, const char* identity) {
  if (!object) return false;
  const TavorHead* head;
  std::memcpy(&head, object, sizeof head);
  return head && head->identity && !std::strcmp(head->identity, identity);
}

}  // namespace qlx
