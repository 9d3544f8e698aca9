// The private module `_qlx`, through which the streams of the interpreter reach the host.

#include "interpreter/lib_python_console.h"

#include <Python.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_streams.h"
#include "interpreter/lib_python_syntax.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_errors.h"
#include "kit/i_type.h"
#include "tavor/logger.h"

namespace qlx {
namespace {

// The one argument "str" of the writing functions.
bool ParseText(PyObject* arguments, PyObject* keywords, const char* format, String& text) {
  static char* names[] = {const_cast<char*>("str"), nullptr};
  PyObject* object = nullptr;
  if (!PyArg_ParseTupleAndKeywords(arguments, keywords, format, names, &object)) return false;
  if (ToHostText(object, text)) return true;
  if (!PyErr_Occurred()) PyErr_NoMemory();
  return false;
}

PyObject* RaiseSystemError(int32_t number) {
  errno = number;
  return PyErr_SetFromErrno(PyExc_OSError);
}

PyObject* StdoutWrite(PyObject*, PyObject* arguments, PyObject* keywords) {
  // A write that waits must be open to signals, so that a long text goes in pieces.
  constexpr size_t kPiece = 1 << 16;
  String text;
  if (!ParseText(arguments, keywords, "U:stdout_write", text)) return nullptr;
  for (std::string_view rest = kelvar::View(text); !rest.empty();) {
    int64_t written = 0;
    {
      HostBlockingScope window;
      const bool whole = rest.size() <= kPiece && rest.size() == kelvar::View(text).size();
      written = kelvar::ConsoleWrite(HOST_CONSOLE_OUT, whole ? text : kelvar::Bytes(rest.substr(0, kPiece)));
    }
    if (written == -EINTR) {
      if (PyErr_CheckSignals() != 0) return nullptr;
    } else if (written < 0) {
      return RaiseSystemError(int32_t(-written));
    } else if (written == 0) {
      break;
    } else {
      rest.remove_prefix(std::min(size_t(written), rest.size()));
    }
  }
  Py_RETURN_NONE;
}

PyObject* WriteToLogger(PyObject* arguments, PyObject* keywords, const char* format, int32_t meta) {
  String text;
  if (!ParseText(arguments, keywords, format, text)) return nullptr;
  int32_t error = 0;
  if (Logger* logger = PythonLogger()) {
    HostBlockingScope window;
    error = tavor::logger::Write(logger, LOGGER_TARGET_USER, meta, text, nullptr, 0);
  }
  if (error) return RaiseSystemError(error);
  Py_RETURN_NONE;
}

PyObject* StderrWrite(PyObject*, PyObject* arguments, PyObject* keywords) {
  return WriteToLogger(arguments, keywords, "U:stderr_write", LOGGER_LEVEL_STREAM_ERROR);
}

PyObject* WriteConsole(PyObject*, PyObject* arguments, PyObject* keywords) {
  return WriteToLogger(arguments, keywords, "U:WriteConsole", LOGGER_LEVEL_OUTPUT);
}

PyObject* GePrint(PyObject*, PyObject* arguments, PyObject* keywords) {
  String text;
  if (!ParseText(arguments, keywords, "U:GePrint", text)) return nullptr;
  {
    HostBlockingScope window;
    kelvar::GePrint(text);
  }
  Py_RETURN_NONE;
}

PyObject* StdinRead(PyObject*, PyObject* arguments, PyObject* keywords) {
  static char* names[] = {const_cast<char*>("size"), nullptr};
  Py_ssize_t size = 8192;
  if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "|n:stdin_read", names, &size)) return nullptr;
  if (!kelvar::GeIsMainThread()) return RaiseMainThreadOnly();
  if (size <= 0) size = 8192;
  while (true) {
    String text;
    int32_t answer = -1;
    {
      HostBlockingScope window;
      answer = kelvar::ConsoleRead(size, text);
    }
    if (answer > 0) {
      const std::string_view bytes = kelvar::View(text);
      return PyUnicode_DecodeUTF8(bytes.data(), Py_ssize_t(bytes.size()), "surrogateescape");
    }
    if (answer < 0) return RaiseFormatted(PyExc_OSError, "the host's console can't be read");
    if (PyErr_CheckSignals() != 0) return nullptr;
  }
}

PyObject* IsCompleteFunction(PyObject*, PyObject* arguments, PyObject* keywords) {
  String text;
  if (!ParseText(arguments, keywords, "U:is_complete", text)) return nullptr;
  return PyLong_FromLong(IsComplete(std::string(kelvar::View(text))));
}

// A line from the terminal with the editing that the interpreter has, whatever a script has done
// to its streams.
PyObject* ReadLine(PyObject*, PyObject* arguments, PyObject* keywords) {
  static char* names[] = {const_cast<char*>("prompt"), nullptr};
  const char* prompt = "";
  if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "|s:read_line", names, &prompt)) return nullptr;
  char* line = PyOS_Readline(stdin, stdout, prompt);
  if (!line) {
    if (PyErr_CheckSignals() == 0 && !PyErr_Occurred()) PyErr_SetNone(PyExc_KeyboardInterrupt);
    return nullptr;
  }
  const std::string text = line;
  PyMem_Free(line);
  if (text.empty()) {
    PyErr_SetNone(PyExc_EOFError);
    return nullptr;
  }
  const size_t size = text.back() == '\n' ? text.size() - 1 : text.size();
  return PyUnicode_DecodeUTF8(text.data(), Py_ssize_t(size), "surrogateescape");
}

PyMethodDef g_functions[] = {
    {"stdout_write", AsMethod(StdoutWrite), METH_VARARGS | METH_KEYWORDS,
     "stdout_write(str) -> None\n\nWrites to the host's console. Raises OSError when it can't take more."},
    {"stderr_write", AsMethod(StderrWrite), METH_VARARGS | METH_KEYWORDS,
     "stderr_write(str) -> None\n\nWrites to the host's log as an error of a script."},
    {"stdin_read", AsMethod(StdinRead), METH_VARARGS | METH_KEYWORDS,
     "stdin_read(size=8192) -> str\n\nAsks the user for input; empty at its end. Bytes that are not UTF-8 are\n"
     "lone surrogates. Raises RuntimeError on another thread than the main one."},
    {"GePrint", AsMethod(GePrint), METH_VARARGS | METH_KEYWORDS,
     "GePrint(str) -> None\n\nPrints a line on the host's console."},
    {"WriteConsole", AsMethod(WriteConsole), METH_VARARGS | METH_KEYWORDS,
     "WriteConsole(str) -> None\n\nWrites to the host's log as output of a script."},
    {"read_line", AsMethod(ReadLine), METH_VARARGS | METH_KEYWORDS,
     "read_line(prompt='') -> str\n\nA line from the terminal, without its end. Raises EOFError at the end of "
     "input."},
    {"is_complete", AsMethod(IsCompleteFunction), METH_VARARGS | METH_KEYWORDS,
     "is_complete(str) -> int\n\nWhether a statement of the console is complete: 1, 0 for more lines, -1 for "
     "an error."},
    {},
};

// The same in the package.
PyMethodDef g_packageFunctions[] = {
    {"stdout_write", AsMethod(StdoutWrite), METH_VARARGS | METH_KEYWORDS, "The stdout file object."},
    {"stderr_write", AsMethod(StderrWrite), METH_VARARGS | METH_KEYWORDS, "The stderr file object."},
    {"stdin_read", AsMethod(StdinRead), METH_VARARGS | METH_KEYWORDS, "The stdin file object."},
    g_functions[3],
    g_functions[4],
    {},
};

PyModuleDef g_definition = {
    PyModuleDef_HEAD_INIT, "_qlx", "The host's console.", -1, g_functions, nullptr, nullptr, nullptr, nullptr};

// `_qlx`, put among the imported modules.
bool AddPrivateModule() {
  PyObject* module = PyModule_Create(&g_definition);
  PyObject* modules = PyImport_GetModuleDict();
  const bool ok = module &&
                  PyModule_AddIntConstant(module, "process_streams", IsCommandLineApplication() ? 1 : 0) == 0 &&
                  PyDict_SetItemString(modules, "_qlx", module) == 0;
  Py_XDECREF(module);
  return ok;
}

}  // namespace

bool AddConsoleFunctions(PyObject* package) { return PyModule_AddFunctions(package, g_packageFunctions) == 0; }

tavor::Error ConnectStreams(const Filename& framework) {
  const std::string folder(kelvar::View(framework.GetString()));
  PyObject* module = AddPrivateModule() ? PyImport_ImportModule("_qlx_init") : nullptr;
  if (module) {
    Py_DECREF(module);
    return {};
  }
  return tavor::Error("'_qlx_init' of '" + folder + "' can't be imported: " + TakePendingErrorText());
}

}  // namespace qlx
