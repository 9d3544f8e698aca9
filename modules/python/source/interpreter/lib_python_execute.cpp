// Running texts, files and modules in `__main__`, as `python` does.

#include "interpreter/lib_python_execute.h"

#include <Python.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "kit/i_errors.h"
#include "tavor/application.h"

namespace qlx {
namespace {

// What a run leaves behind: its result is dropped, its error printed. An exit that the script
// asks for is a failure when its code says so.
tavor::Error Settle(PyObject* result) {
  if (result) {
    Py_DECREF(result);
    tavor::application::SetExitCode(0);
    return {};
  }
  int code = 1;
  const bool interrupted = PyErr_ExceptionMatches(PyExc_KeyboardInterrupt);
  if (!IsSystemExitPending()) PrintPendingError();
  // The script's own hook for errors may ask for an exit as well.
  if (TakeSystemExit(code))
    code &= 0xff;
  else if (interrupted && InterruptEndsBySignal())
    code = -SIGINT;
  PyErr_Clear();
  tavor::application::SetExitCode(code);
  return code == 0 ? tavor::Error() : tavor::Error("the script ended with exit code " + std::to_string(code));
}

PyObject* MainGlobals() {
  PyObject* module = PyImport_AddModule("__main__");
  return module ? PyModule_GetDict(module) : nullptr;
}

// What the interpreter's own command line binds for a script: its path and its loader.
bool BindFile(PyObject* globals, const std::string& path) {
  PyObject* name = PyUnicode_DecodeFSDefaultAndSize(path.data(), Py_ssize_t(path.size()));
  PyObject* machinery = name ? PyImport_ImportModule("importlib.machinery") : nullptr;
  PyObject* loader =
      machinery ? PyObject_CallMethod(machinery, "SourceFileLoader", "sO", "__main__", name) : nullptr;
  const bool ok = loader && PyDict_SetItemString(globals, "__file__", name) == 0 &&
                  PyDict_SetItemString(globals, "__cached__", Py_None) == 0 &&
                  PyDict_SetItemString(globals, "__loader__", loader) == 0;
  Py_XDECREF(loader);
  Py_XDECREF(machinery);
  Py_XDECREF(name);
  return ok;
}

PyObject* RunFile(const std::string& path, PyObject* globals) {
  FILE* stream = std::fopen(path.c_str(), "rb");
  if (!stream) {
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.c_str());
    return nullptr;
  }
  if (!BindFile(globals, path)) {
    std::fclose(stream);
    return nullptr;
  }
  PyObject* result = PyRun_FileExFlags(stream, path.c_str(), Py_file_input, globals, globals, 1, nullptr);
  if (!result) return nullptr;
  for (const char* name : {"__file__", "__cached__"})
    if (PyDict_DelItemString(globals, name) != 0) PyErr_Clear();
  return result;
}

// `runpy` is how `python -m` does it, with the same words for a missing module.
PyObject* RunModule(const String& name) {
  PyObject* runpy = PyImport_ImportModule("runpy");
  PyObject* run = runpy ? PyObject_GetAttrString(runpy, "_run_module_as_main") : nullptr;
  const std::string text(kelvar::View(name));
  PyObject* result = run ? PyObject_CallFunction(run, "si", text.c_str(), 1) : nullptr;
  Py_XDECREF(run);
  Py_XDECREF(runpy);
  return result;
}

template <class Run>
tavor::Error InMain(Run run) {
  GilScope lock;
  PyObject* globals = MainGlobals();
  return Settle(globals ? run(globals) : nullptr);
}

}  // namespace

tavor::Error RunMainText(const String& code) {
  const std::string text(kelvar::View(code));
  return InMain([&](PyObject* globals) -> PyObject* {
    if (!CheckSourceText(text)) return nullptr;
    return PyRun_StringFlags(text.c_str(), Py_file_input, globals, globals, nullptr);
  });
}

tavor::Error RunMainFile(const Filename& file) {
  const std::string path = ScriptFileName(std::string(kelvar::View(file.GetString())));
  return InMain([&](PyObject* globals) { return RunFile(path, globals); });
}

tavor::Error RunMainModule(const String& name) {
  return InMain([&](PyObject*) { return RunModule(name); });
}

tavor::Error RunInteractiveLoop() {
  return InMain([](PyObject* globals) -> PyObject* {
    const bool inspect = IsCommandLineApplication() && ReadCommandLine().flags & kFlagInspect;
    if (!inspect && !Py_FdIsInteractive(stdin, "<stdin>"))
      return PyRun_FileExFlags(stdin, "<stdin>", Py_file_input, globals, globals, 0, nullptr);
    PyObject* console = PyImport_ImportModule("_qlx_console");
    PyObject* result = console ? PyObject_CallMethod(console, "interact", "O", globals) : nullptr;
    Py_XDECREF(console);
    return result;
  });
}

}  // namespace qlx
