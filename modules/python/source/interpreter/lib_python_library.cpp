// The library of the CPython interpreter, as the rest of the system and other modules use it.

#include <Python.h>

#include <mutex>
#include <string>
#include <vector>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_home.h"
#include "interpreter/lib_python_link.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_machine.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_spinlock.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "kit/i_package.h"
#include "kit/i_pool.h"
#include "kit/i_typequeue.h"
#include "tavor/application.h"
#include "tavor/datadictionary.h"

namespace qlx {
namespace {

constexpr int32_t kOutputLost = 120;
constexpr int32_t kSpecialPaths = SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS + 1;

PyObject* Object(CPyObject* object) { return reinterpret_cast<PyObject*>(object); }
CPyObject* Opaque(PyObject* object) { return reinterpret_cast<CPyObject*>(object); }

std::vector<std::string> Lines(const String& text) {
  std::vector<std::string> lines;
  for (std::string_view rest = kelvar::View(text); !rest.empty();) {
    const size_t end = rest.find('\n');
    lines.emplace_back(rest.substr(0, end));
    rest = end == std::string_view::npos ? "" : rest.substr(end + 1);
  }
  return lines;
}

StartSettings ReadSettings(const DataDictionary* dictionary) {
  const auto flags = uint32_t(dictionary ? dictionary->GetInt(CPYTHON_INTERPRETERFLAGS, kInterpreterFlags)
                                         : kInterpreterFlags);
  StartSettings settings;
  if (dictionary) {
    settings.warnings = Lines(dictionary->GetString(CPYTHON_WARNING_OPTIONS));
    settings.extended = Lines(dictionary->GetString(CPYTHON_EXTENDED_OPTIONS));
  }
  settings.useEnvironment = flags & kFlagUseEnvironment;
  settings.userSite = flags & kFlagUserSite;
  settings.importSite = flags & kFlagImportSite;
  settings.writeBytecode = flags & kFlagWriteBytecode;
  settings.isolated = flags & kFlagIsolated;
  settings.unbuffered = flags & kFlagUnbuffered;
  settings.quiet = flags & kFlagQuiet;
  settings.inspect = flags & kFlagInspect;
  settings.optimize = flags & kFlagOptimizeMore ? 2 : flags & kFlagOptimize ? 1 : 0;
  settings.verbose = flags & kFlagVerbose ? 1 : 0;
  settings.bytesWarning = flags & kFlagBytesError ? 2 : flags & kFlagBytesWarning ? 1 : 0;
  settings.debugParser = flags & kFlagDebugParser;
  // A host with a life of its own keeps its signals.
  settings.signalHandlers = !(flags & kFlagEmbedded);
  return settings;
}

tavor::Error PendingError() {
  std::string text = TakePendingErrorText();
  return tavor::Error(text.empty() ? "the interpreter failed without an error" : text);
}

// A list with `path` moved or added by `handle`.
tavor::Error PlacePath(PyObject* list, const Filename& path, Py_ssize_t place) {
  const String text = path.GetString();
  const std::string_view bytes = kelvar::View(text);
  PyObject* entry = PyUnicode_DecodeFSDefaultAndSize(bytes.data(), Py_ssize_t(bytes.size()));
  if (!entry) return PendingError();
  bool ok = true;
  // Only plain texts: an entry with a comparison of its own could change the list.
  for (Py_ssize_t i = PyList_GET_SIZE(list); ok && i-- > 0;) {
    PyObject* known = PyList_GET_ITEM(list, i);
    const bool same = PyUnicode_CheckExact(known) && PyUnicode_Compare(known, entry) == 0;
    ok = !PyErr_Occurred() && (!same || PyList_SetSlice(list, i, i + 1, nullptr) == 0);
  }
  ok = ok && PyList_Insert(list, place < 0 ? PyList_GET_SIZE(list) : place, entry) == 0;
  Py_DECREF(entry);
  return ok ? tavor::Error() : PendingError();
}

class CPythonLibraryImplementation : public CPythonLibrary {
 public:
  CPythonLibraryImplementation();

  HostResult Init() {
    if (tavor::Error error = BindInterpreterLibrary()) return error.ToHost();
    const InterpreterVersion version = GetInterpreterVersion();
    dll_ = {InterpreterLibraryHandle(),
            InterpreterLibraryFile().c_str(),
            0,
            version.major,
            version.minor,
            version.micro};
    return {};
  }

  HostResult InitTypes() {
    const std::string failed = ReadyTypeQueue();
    return failed.empty() ? HostResult{} : tavor::Error("types that can't be made ready: " + failed).ToHost();
  }

  HostResult InitBuiltinModules() { return ImportPackage().ToHost(); }

  HostResult CPy_Initialize(const DataDictionary* dictionary) {
    if (!IsInterpreterLibraryBound()) return tavor::Error("the interpreter's library is not loaded").ToHost();
    if (Py_IsInitialized()) return tavor::Error("an interpreter runs in this process already").ToHost();
    StartSettings settings = ReadSettings(dictionary);
    const tavor::Result<std::string> program =
        FindInterpreterHome(settings.useEnvironment && !settings.isolated);
    if (!program) return program.Failure().ToHost();
    settings.program = *program;
    const std::string reason = StartInterpreter(settings);
    if (!reason.empty()) return tavor::Error("the Python interpreter can't start: " + reason).ToHost();
    // As for a program without a name: modules that run as scripts write to the first entry.
    if (SetArguments({""})) return {};
    const tavor::Error error = PendingError();
    CPy_Finalize();
    return error.ToHost();
  }

  void CPy_Finalize() {
    if (Py_IsInitialized()) ReleaseRecordPools();
    // A standard output that could not take all is an error, as it is for `python`.
    if (Py_IsInitialized() && Py_FinalizeEx() != 0 && IsCommandLineApplication())
      tavor::application::SetExitCode(kOutputLost);
    ReleasePackage();  // what is kept still has gone: another interpreter may not take it for its own
  }

  void Free() {
    const std::lock_guard guard(pathLock_);
    for (Filename& path : paths_) path = {};
  }

  const CPythonDll* GetDll() { return &dll_; }

  int32_t CPy_IsInitialized() { return IsPythonRunning(); }
  int32_t CPyGilState_Ensure() { return IsPythonRunning() ? TakeLockState() : -1; }
  void CPyGilState_Release(int32_t state) {
    if (state >= 0) GiveLockState(state);
  }

  void CPyErr_Print() { PrintAndClearError(); }
  void CPyErr_Clear() { PyErr_Clear(); }
  CPyObject* CPyErr_Occurred() { return Opaque(PyErr_Occurred()); }

  HostResult CPySys_SetPath(const HostFilename* paths, int32_t count, int32_t handle) {
    if (handle < PATHHANDLE_OVERWRITE || handle > PATHHANDLE_INSERT_AT_BEGINNING)
      return tavor::Error("there is no path handle " + std::to_string(handle), HOST_RESULT_ILLEGAL_ARGUMENT)
          .ToHost();
    PyObject* list = PySys_GetObject("path");
    if (!list || !PyList_Check(list)) return tavor::Error("sys.path is not a list").ToHost();
    if (handle == PATHHANDLE_OVERWRITE && PyList_SetSlice(list, 0, PyList_GET_SIZE(list), nullptr) != 0)
      return PendingError().ToHost();
    for (int32_t i = 0; i < count; ++i) {
      const Py_ssize_t place = handle == PATHHANDLE_INSERT_AT_BEGINNING ? i : -1;
      if (tavor::Error error = PlacePath(list, *reinterpret_cast<const Filename*>(paths + i), place))
        return error.ToHost();
    }
    return {};
  }

  CPyObject* CPyImport_ImportModule(const char* name) { return Opaque(PyImport_ImportModule(name)); }
  CPyObject* CPyModule_GetDict(CPyObject* module) {
    return PyModule_Check(Object(module)) ? Opaque(PyModule_GetDict(Object(module))) : nullptr;
  }
  CPyObject* CPyDict_GetItemString(CPyObject* dictionary, const char* name) {
    return PyDict_Check(Object(dictionary)) ? Opaque(PyDict_GetItemString(Object(dictionary), name)) : nullptr;
  }
  int32_t CPyLong_Check(CPyObject* object) { return PyLong_Check(Object(object)); }
  void CPy_IncRef(CPyObject* object) { Py_XINCREF(Object(object)); }
  void CPy_DecRef(CPyObject* object) { Py_XDECREF(Object(object)); }

  HostFilename GetSpecialPath(int32_t which) {
    if (which < 0 || which >= kSpecialPaths) return {};
    const std::lock_guard guard(pathLock_);
    return Filename(paths_[which]).Release();
  }
  int32_t RegisterSpecialPath(int32_t which, const HostFilename* path) {
    if (which < 0 || which >= kSpecialPaths || !path) return 0;
    const std::lock_guard guard(pathLock_);
    paths_[which] = *reinterpret_cast<const Filename*>(path);
    return 1;
  }

 private:
  SpinLock pathLock_;
  Filename paths_[kSpecialPaths];
  CPythonDll dll_{};
};

CPythonLibraryImplementation::CPythonLibraryImplementation() {
  table = &kCPythonLibraryTable<CPythonLibraryImplementation>;
}

}  // namespace

CPythonLibrary* CPythonLibraryObject() {
  // Never destroyed: other modules may hold it until the process is gone.
  static auto* library = new CPythonLibraryImplementation;
  return library;
}

}  // namespace qlx
