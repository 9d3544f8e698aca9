// Threads that scripts started with the interpreter's own means.

#include "interpreter/lib_python_threads.h"

#include <Python.h>

#include <string>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"

namespace qlx {
namespace {

// The interpreter's end calls threading._shutdown, which waits without a limit: it is called
// here, or not at all. Thread pools are told to end by callbacks that it runs first.
constexpr const char* kSource = R"(
import sys
threading = sys.modules.get('threading')

def take_shutdown():
    shutdown = threading._shutdown
    threading._shutdown = lambda: None
    return shutdown

def join():
    if threading:
        take_shutdown()()

def running():
    main = threading.main_thread()
    return [t for t in threading.enumerate() if not t.daemon and t is not main]

def end_pools(callbacks):
    for callback in reversed(callbacks):
        callback()

def let_go(limit):
    if not threading:
        return ''
    import time
    take_shutdown()
    end = time.monotonic() + limit
    callbacks = list(getattr(threading, '_threading_atexits', ()))
    if callbacks:
        threading.Thread(target=end_pools, args=(callbacks,), daemon=True).start()
    while running() and time.monotonic() < end:
        running_thread = next(iter(running()), None)
        if running_thread:
            running_thread.join(max(0, end - time.monotonic()))
    return ', '.join(repr(t.name) for t in running())
)";

// Calls a function of the text above; what it returns as a text. An interruption from the
// keyboard ends a wait.
std::string Call(const char* function, PyObject* arguments) {
  std::string answer;
  PyObject* globals = arguments ? PyDict_New() : nullptr;
  PyObject* done = globals && PyDict_SetItemString(globals, "__builtins__", PyEval_GetBuiltins()) == 0
                       ? PyRun_String(kSource, Py_file_input, globals, globals)
                       : nullptr;
  PyObject* callable = done ? PyDict_GetItemString(globals, function) : nullptr;
  PyObject* returned = callable ? PyObject_CallObject(callable, arguments) : nullptr;
  const char* text = returned && PyUnicode_Check(returned) ? PyUnicode_AsUTF8(returned) : nullptr;
  if (text) answer = text;
  PrintAndClearError();
  Py_XDECREF(returned);
  Py_XDECREF(done);
  Py_XDECREF(globals);
  Py_XDECREF(arguments);
  return answer;
}

}  // namespace

void JoinPythonThreads() {
  if (!IsPythonRunning()) return;
  GilScope lock;
  Call("join", PyTuple_New(0));
}

void LetGoOfPythonThreads() {
  std::string names;
  {
    GilScope lock;
    names = Call("let_go", Py_BuildValue("(d)", 2.0));
  }
  if (!names.empty())
    LogError(tavor::Error("Python threads that still run at the end are left behind: " + names));
}

}  // namespace qlx
