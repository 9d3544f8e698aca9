// Threads that scripts started with the interpreter's own means.

#include "interpreter/lib_python_threads.h"

#include <Python.h>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"

namespace qlx {
namespace {

constexpr const char* kJoin = R"(
def running(threading):
    me = threading.current_thread()
    main = threading.main_thread()
    return [t for t in threading.enumerate() if not t.daemon and t is not me and t is not main]

def join(limit):
    import sys, time
    threading = sys.modules.get('threading')
    if threading is None:
        return ''
    end = None if limit is None else time.monotonic() + limit
    while True:
        threads = running(threading)
        if not threads:
            return ''
        if end is None:
            threads[0].join()
            continue
        left = end - time.monotonic()
        if left <= 0:
            # The interpreter's end would wait for these without a limit.
            threading._shutdown = lambda: None
            return ', '.join(repr(t.name) for t in threads)
        threads[0].join(left)
)";

// Calls join(limit); the names of the threads that go on. An interruption from the keyboard
// ends the wait.
std::string Join(PyObject* limit) {
  std::string names;
  PyObject* globals = PyDict_New();
  PyObject* done = globals && PyDict_SetItemString(globals, "__builtins__", PyEval_GetBuiltins()) == 0
                       ? PyRun_String(kJoin, Py_file_input, globals, globals)
                       : nullptr;
  PyObject* join = done ? PyDict_GetItemString(globals, "join") : nullptr;
  PyObject* answer = join ? PyObject_CallFunctionObjArgs(join, limit, nullptr) : nullptr;
  const char* text = answer ? PyUnicode_AsUTF8(answer) : nullptr;
  if (text) names = text;
  PrintAndClearError();
  Py_XDECREF(answer);
  Py_XDECREF(done);
  Py_XDECREF(globals);
  return names;
}

}  // namespace

void JoinPythonThreads() {
  if (!IsPythonRunning()) return;
  GilScope lock;
  Join(Py_None);
}

void LetGoOfPythonThreads() {
  std::string names;
  {
    GilScope lock;
    PyObject* limit = PyFloat_FromDouble(2.0);
    if (limit) names = Join(limit);
    Py_XDECREF(limit);
  }
  if (!names.empty())
    LogError(tavor::Error("Python threads that still run at the end are left behind: " + names));
}

}  // namespace qlx
