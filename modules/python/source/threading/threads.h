// Threads of the package, which run on threads of the host.
#ifndef THREADING_THREADS_H
#define THREADING_THREADS_H

#include <Python.h>

#include "interpreter/lib_python_lock.h"
#include "kelvar/general.h"
#include "kelvar/thread.h"
#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_BaseThreadType;
extern PyTypeObject g_QLXThreadType;
extern PyMethodDef g_threadingFunctions[];

// Of an instance of either type; both have the record of atoms in front.
template <>
struct Present<BaseThread> {
  static PyTypeObject& Type() { return g_BaseThreadType; }
  static constexpr bool kResolvedFirst = true;
  static bool Get(PyObject* object, BaseThread*& host);
  static PyObject* Wrap(BaseThread* host, bool owned = false);  // a handle; it never owns
};

// What a thread object of a script is to the host. It lives as long as the host's object.
struct ScriptThread {
  PyObject* self = nullptr;  // the wrapper, not counted; null when it has gone
  HostLink host{};
  HostLink keeper{};  // the node in the list of all of these
  bool hasMain = false, hasTestDBreak = false, hasGetThreadName = false;
  ScriptThread* next = nullptr;  // of those that have ended
};

// Lock held in all that follows, but where it says otherwise.

inline constexpr int32_t kThreadNode = 1026947;

// On the main thread, without the lock.
void RegisterThreadNode();

// No thread begins from here. Those that run are asked to stop, and waited for until a signal ends the wait.
void StopPythonThreads();
void FreeThreadList();
bool MayThreadsStart();

// Puts it into the list of all threads; false where there is none, or no node for it.
bool KeepThread(ScriptThread& thread);

// The host's object has gone. Any thread, with or without the lock.
void HandOverEnded(ScriptThread& thread);
void FreeEnded();

PyObject* EndThread(BaseThread* self, bool wait);
PyObject* AwaitThread(BaseThread* self, bool checkevents);

// Calls `step` with a limit in milliseconds, without the lock, until it answers true. On the main thread
// signals such as Ctrl-C come through: false with what their handler raised.
template <class Step>
bool WaitFor(Step step) {
  const int32_t limit = kelvar::GeIsMainThread() ? 50 : -1;
  for (;;) {
    {
      const HostBlockingScope blocking;
      if (step(limit)) return true;
    }
    if (PyErr_CheckSignals() != 0) return false;
  }
}

}  // namespace qlx

#endif
