// What happens to a pending Python error.

#include "interpreter/lib_python_output.h"

#include <Python.h>

#include <cstdio>
#include <utility>

#include "interpreter/lib_python.h"
#include "kelvar/general.h"
#include "tavor/application.h"

namespace qlx {
namespace {

std::string TextOf(PyObject* object) {
  PyObject* text = object ? PyObject_Str(object) : nullptr;
  PyObject* bytes = text ? PyUnicode_AsEncodedString(text, "utf-8", "backslashreplace") : nullptr;
  std::string result = bytes ? std::string(PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes))) : "";
  Py_XDECREF(bytes);
  Py_XDECREF(text);
  PyErr_Clear();
  return result;
}

// The pending error, taken away and normalised.
struct Taken {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* traceback = nullptr;

  Taken() {
    PyErr_Fetch(&type, &value, &traceback);
    if (!type) return;
    PyErr_NormalizeException(&type, &value, &traceback);
    if (value && traceback) PyException_SetTraceback(value, traceback);
  }
  ~Taken() {
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
  }
  Taken(const Taken&) = delete;
  Taken& operator=(const Taken&) = delete;

  std::string Line() const {
    if (!type) return "";
    const std::string name = PyType_Check(type) ? reinterpret_cast<PyTypeObject*>(type)->tp_name : "error";
    const std::string text = TextOf(value);
    return text.empty() ? name : name + ": " + text;
  }
};

// Shows an error through `sys.excepthook`; a hook that fails is shown with it.
void Show(const Taken& error) {
  PyObject* traceback = error.traceback ? error.traceback : Py_None;
  PySys_SetObject("last_type", error.type);
  PySys_SetObject("last_value", error.value);
  PySys_SetObject("last_traceback", traceback);
  PyErr_Clear();
  PyObject* hook = PySys_GetObject("excepthook");
  if (!hook) {
    PySys_WriteStderr("sys.excepthook is missing\n");
    PyErr_Display(error.type, error.value, error.traceback);
    return;
  }
  Py_INCREF(hook);
  PyObject* done = PyObject_CallFunctionObjArgs(hook, error.type, error.value, traceback, nullptr);
  Py_DECREF(hook);
  Py_XDECREF(done);
  if (done || IsSystemExitPending()) return;
  const Taken fault;
  PySys_WriteStderr("Error in sys.excepthook:\n");
  PyErr_Display(fault.type, fault.value, fault.traceback);
  PySys_WriteStderr("\nOriginal exception was:\n");
  PyErr_Display(error.type, error.value, error.traceback);
}

}  // namespace

void FlushStreams() {
  for (const char* name : {"stdout", "stderr"}) {
    PyObject* stream = PySys_GetObject(name);
    if (!stream || stream == Py_None) continue;
    Py_INCREF(stream);
    Py_XDECREF(PyObject_CallMethod(stream, "flush", nullptr));
    Py_DECREF(stream);
    PyErr_Clear();
  }
}

void PrintPendingError() {
  const Taken error;
  if (!error.type) return;
  Show(error);
  // An exit that the hook asks for stays pending. The error is seen at once, behind what was
  // printed ahead of it.
  const PreservedError exit;
  FlushStreams();
}

void PrintBridgeError() {
  if (!IsSystemExitPending()) PrintPendingError();
  // The hook may have asked for the end as well.
  if (IsSystemExitPending()) kelvar::SpecialEventAdd(HOST_EVENT_QUIT, 0, 0);
}

bool IsSystemExitPending() { return PyErr_Occurred() && PyErr_ExceptionMatches(PyExc_SystemExit); }

void PrintAndClearError() {
  PrintBridgeError();
  int code = 0;
  if (TakeSystemExit(code) && IsCommandLineApplication()) tavor::application::SetExitCode(code);
  PyErr_Clear();
}

std::string TakePendingErrorText() { return Taken().Line(); }

std::string PendingErrorText() {
  Taken error;
  std::string line = error.Line();
  PyErr_Restore(std::exchange(error.type, nullptr), std::exchange(error.value, nullptr),
                std::exchange(error.traceback, nullptr));
  return line;
}

std::string TakePendingTraceback() {
  const Taken error;
  if (!error.type) return "";
  PyObject* module = PyImport_ImportModule("traceback");
  PyObject* lines = module ? PyObject_CallMethod(module, "format_exception", "OOO", error.type, error.value,
                                                 error.traceback ? error.traceback : Py_None)
                           : nullptr;
  PyObject* nothing = lines ? PyUnicode_FromString("") : nullptr;
  PyObject* joined = nothing ? PyUnicode_Join(nothing, lines) : nullptr;
  std::string text = joined ? TextOf(joined) : "";
  PyErr_Clear();
  Py_XDECREF(joined);
  Py_XDECREF(nothing);
  Py_XDECREF(lines);
  Py_XDECREF(module);
  return text.empty() ? error.Line() : text;
}

bool TakeSystemExit(int& code) {
  if (!IsSystemExitPending()) return false;
  const Taken error;
  PyObject* value = error.value ? PyObject_GetAttrString(error.value, "code") : nullptr;
  PyErr_Clear();
  if (!value || value == Py_None) {
    code = 0;
  } else if (PyLong_Check(value)) {
    // As the interpreter does: too large a number becomes -1, of which the low byte counts.
    code = int(PyLong_AsLong(value));
  } else {
    code = 1;
    PyObject* stream = PySys_GetObject("stderr");
    Py_XINCREF(stream);
    if (stream && stream != Py_None) {
      PyFile_WriteObject(value, stream, Py_PRINT_RAW);
    } else {
      PyObject_Print(value, stderr, Py_PRINT_RAW);
      std::fflush(stderr);
    }
    Py_XDECREF(stream);
    PyErr_Clear();
    PySys_WriteStderr("\n");
  }
  PyErr_Clear();
  Py_XDECREF(value);
  return true;
}

void ResetExceptHook() {
  // The value holds the traceback too.
  for (const char* name : {"last_traceback", "last_value", "last_type"})
    if (PySys_GetObject(name)) PySys_SetObject(name, nullptr);
  PyObject* original = PySys_GetObject("__excepthook__");
  if (original && PySys_GetObject("excepthook") != original) PySys_SetObject("excepthook", original);
  PyErr_Clear();
}

}  // namespace qlx
