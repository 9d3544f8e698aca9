// Running texts, files and modules in `__main__`, as `python` does.

#include "interpreter/lib_python_execute.h"

#include <Python.h>

#include <cstdio>
#include <string>

#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "kelvar/text.h"
#include "tavor/application.h"

namespace qlx {
namespace {

// What a run leaves behind: its result is dropped, its error printed. An exit that the script
// asks for is a failure when its code says so.
tavor::Error Settle(PyObject* result) {
  if (result) {
    Py_DECREF(result);
    return {};
  }
  int code = 1;
  if (!IsSystemExitPending()) PrintPendingError();
  // The script's own hook for errors may ask for an exit as well.
  TakeSystemExit(code);
  PyErr_Clear();
  tavor::application::SetExitCode(code);
  return code == 0 ? tavor::Error() : tavor::Error("the script ended with exit code " + std::to_string(code));
}

void FlushStreams() {
  for (const char* name : {"stdout", "stderr"}) {
    PyObject* stream = PySys_GetObject(name);
    PyObject* done = stream && stream != Py_None ? PyObject_CallMethod(stream, "flush", nullptr) : nullptr;
    Py_XDECREF(done);
    PyErr_Clear();
  }
}

PyObject* MainGlobals() {
  PyObject* module = PyImport_AddModule("__main__");
  return module ? PyModule_GetDict(module) : nullptr;
}

// Opens and runs a file with `__file__` set for the time of the run.
PyObject* RunFile(const std::string& path, PyObject* globals) {
  FILE* stream = std::fopen(path.c_str(), "rb");
  if (!stream) {
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.c_str());
    return nullptr;
  }
  PyObject* name = PyUnicode_DecodeFSDefaultAndSize(path.data(), Py_ssize_t(path.size()));
  const bool named = name && PyDict_SetItemString(globals, "__file__", name) == 0;
  Py_XDECREF(name);
  if (!named) {
    std::fclose(stream);
    return nullptr;
  }
  PyObject* result = PyRun_FileExFlags(stream, path.c_str(), Py_file_input, globals, globals, 1, nullptr);
  if (result && PyDict_DelItemString(globals, "__file__") != 0) PyErr_Clear();
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
  tavor::Error error = Settle(globals ? run(globals) : nullptr);
  FlushStreams();
  return error;
}

}  // namespace

tavor::Error RunMainText(const String& code) {
  const std::string text(kelvar::View(code));
  return InMain([&](PyObject* globals) -> PyObject* {
    if (text.find('\0') != std::string::npos) {
      PyErr_SetString(PyExc_ValueError, "source code string cannot contain null bytes");
      return nullptr;
    }
    return PyRun_StringFlags(text.c_str(), Py_file_input, globals, globals, nullptr);
  });
}

tavor::Error RunMainFile(const Filename& file) {
  const std::string path(kelvar::View(file.GetString()));
  return InMain([&](PyObject* globals) { return RunFile(path, globals); });
}

tavor::Error RunMainModule(const String& name) {
  return InMain([&](PyObject*) { return RunModule(name); });
}

tavor::Error RunInteractiveLoop() {
  return InMain([](PyObject* globals) -> PyObject* {
    if (!Py_FdIsInteractive(stdin, "<stdin>"))
      return PyRun_FileExFlags(stdin, "<stdin>", Py_file_input, globals, globals, 0, nullptr);
    // Line editing, where the interpreter has it, comes with the import.
    Py_XDECREF(PyImport_ImportModule("readline"));
    PyErr_Clear();
    PyObject* console = PyImport_ImportModule("code");
    PyObject* interact = console ? PyObject_GetAttrString(console, "interact") : nullptr;
    PyObject* arguments = interact ? PyTuple_New(0) : nullptr;
    PyObject* keywords =
        arguments ? Py_BuildValue("{s:s,s:s,s:O}", "banner", "", "exitmsg", "", "local", globals) : nullptr;
    PyObject* result = keywords ? PyObject_Call(interact, arguments, keywords) : nullptr;
    Py_XDECREF(keywords);
    Py_XDECREF(arguments);
    Py_XDECREF(interact);
    Py_XDECREF(console);
    return result;
  });
}

}  // namespace qlx
