// qlx.threading.QLXThread: a class of a script whose Main runs on a thread of the host.

#include <memory>

#include "boundary/guard.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_streams.h"
#include "kelvar/text.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "threading/threads.h"

namespace qlx {
namespace {

struct ThreadWrapper : AtomWrapper {
  ScriptThread* thread;  // valid while the link is
};

ThreadWrapper* AsRecord(PyObject* object) { return reinterpret_cast<ThreadWrapper*>(object); }

// What the host calls, on its threads. Nothing here cleans up by a destructor but the lock's own: where the
// interpreter's end unwinds a thread, nobody may touch an object of Python any more.

// The methods of a class do not tell their function, without which the report with its line can't be given.
void ReportWrong(PyObject* self, const char* method, const char* expected, PyObject* result) {
  ReportBadResult(self, method, expected, result);
  if (!PyErr_Occurred()) return;
  PyErr_Clear();
  RaiseExpectedTypeFor(method, expected, result);
}

// Calls a method of the script. `take` answers whether the result is what is expected; what is wrong is
// printed.
template <class Take>
void CallMethod(const ScriptThread& thread, const char* method, const char* expected, PyObject* (*raiseDead)(),
                Take take) {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  PyObject* self = thread.self;
  // A wrapper on its way out has no reference any more.
  if (self && Py_REFCNT(self) > 0) {
    Py_INCREF(self);
    PyObject* result = PyObject_CallMethod(self, method, nullptr);
    if (result && !take(result) && !PyErr_Occurred()) ReportWrong(self, method, expected, result);
    Py_XDECREF(result);
    Py_DECREF(self);
  } else {
    raiseDead();
  }
  if (PyErr_Occurred()) PrintAndClearError();
  PyErr_Restore(type, value, traceback);
}

void CallMain(void* data) {
  boundary::Guard([&] {
    const auto& thread = *static_cast<ScriptThread*>(data);
    if (!thread.hasMain || !IsPythonRunning()) return;
    const GilScope lock;
    CallMethod(thread, "Main", "None", RaiseThreadDead, [](PyObject* result) { return result == Py_None; });
  });
}

// Who asks stops where there is no answer.
HostBool CallTestDBreak(void* data) {
  return boundary::Guard(
      [&]() -> HostBool {
        const auto& thread = *static_cast<ScriptThread*>(data);
        if (!thread.hasTestDBreak) return 0;
        if (!IsPythonRunning()) return 1;
        const GilScope lock;
        bool isToStop = true;
        CallMethod(thread, "TestDBreak", "bool or int", RaiseAskedThreadDead, [&](PyObject* result) {
          const int truth = PyLong_Check(result) ? PyObject_IsTrue(result) : -1;
          isToStop = truth != 0;
          return truth >= 0;
        });
        return isToStop;
      },
      HostBool(1));
}

HostString CallGetThreadName(void* data) {
  return boundary::Guard(
      [&]() -> HostString {
        const auto& thread = *static_cast<ScriptThread*>(data);
        String name = kelvar::Text("Python");
        if (!thread.hasGetThreadName || !IsPythonRunning()) return name.Release();
        const GilScope lock;
        CallMethod(thread, "GetThreadName", "str", RaiseThreadDead, [&](PyObject* result) {
          Py_ssize_t size = 0;
          const char* utf8 = PyUnicode_Check(result) ? PyUnicode_AsUTF8AndSize(result, &size) : nullptr;
          if (utf8) name = kelvar::Text({utf8, size_t(size)});
          return utf8 != nullptr;
        });
        return name.Release();
      },
      HostString{});
}

void CallFree(void* data) { HandOverEnded(*static_cast<ScriptThread*>(data)); }

// Whether a script's class has a method in the place of the package's own.
bool IsOverridden(PyObject* self, const char* name) {
  PyObject* method = PyObject_GetAttrString(self, name);
  const bool isOverridden = method && Py_TYPE(method) == &PyMethod_Type;
  Py_XDECREF(method);
  PyErr_Clear();
  return isOverridden;
}

// The look for the methods may run the script's own code, for which the object is not alive yet.
bool Establish(PyObject* self) {
  auto thread = std::make_unique<ScriptThread>();
  thread->self = self;
  thread->hasTestDBreak = IsOverridden(self, "TestDBreak");
  thread->hasMain = IsOverridden(self, "Main");
  thread->hasGetThreadName = IsOverridden(self, "GetThreadName");
  const ThreadRecord record = {sizeof record,     0,       thread.get(), CallMain, CallTestDBreak,
                               CallGetThreadName, CallFree};
  BaseThread* host = BaseThread::Alloc(&record);
  if (!host) {
    ReportAllocFailed(Py_TYPE(self), 0);
    return false;
  }
  ScriptThread& owned = *thread.release();  // the host's, until its CallFree
  if (!SetLink(host, owned.host) || !SetLink(host, AsRecord(self)->link)) {
    host->Free();
    PyErr_NoMemory();
    return false;
  }
  AsRecord(self)->thread = &owned;
  AsRecord(self)->owned = true;
  if (KeepThread(owned)) return true;
  ReportAllocFailed(Py_TYPE(self), kThreadNode);
  return false;
}

// The constructors of scripts' classes take what they want.
PyObject* Construct(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  return Guarded([&]() -> PyObject* {
    Arguments<&Construct, TypeList<>, ""> none;
    if (type == &g_QLXThreadType && !none.Parse(args, keywords)) return nullptr;
    FreeEnded();
    PyObject* self = AllocWrapper(g_wrapperTracker, type);
    if (!self || Establish(self)) return self;
    Py_DECREF(self);
    return nullptr;
  });
}

void Free(PyObject* self) {
  ThreadWrapper* wrapper = AsRecord(self);
  auto* host = wrapper->owned ? static_cast<BaseThread*>(LookUp(wrapper->link)) : nullptr;
  if (host) {
    wrapper->thread->self = nullptr;
    // The thread runs to its end, and the host's object goes with it then.
    if (host->IsRunning())
      kelvar::DiagnosticOutput(kelvar::Text(std::string("Stop: a script let go of the running thread '") +
                                            Py_TYPE(self)->tp_name + "'"));
    host->Free();
  }
  FreeEnded();
  FreeLink(wrapper->link);
  FreeWrapper(g_wrapperTracker, self);
}

PyObject* Get(BaseThread* self) { return Present<BaseThread>::Wrap(self); }

PyObject* Start(BaseThread* self, int32_t mode, int32_t priority) {
  const Pin<BaseThread> pin(self);
  if (!pin.held) return PyErr_NoMemory();
  bool hasStarted = false;
  if (MayThreadsStart()) {
    const HostBlockingScope blocking;
    hasStarted = self->Start(mode, priority);
  }
  return ToPython(hasStarted);
}

PyObject* RefuseMain(PyObject*) { return RaiseAbstractMethod(); }

bool NeverStop(PyObject*) { return false; }

PyMethodDef g_methods[] = {
    Method<&Get>(
        "Get",
        "Get() -> qlx.threading.BaseThread or None\n\n"
        "A handle to the thread, for calls that take one. It is dead when the thread object has gone."),
    Method<&Start, "|ii", "mode=1", "priority=0">(
        "Start",
        "Start(mode=1, priority=0) -> bool\n\n"
        "Runs Main on a new thread, also again after its end. False while it runs, and when the application "
        "is\n"
        "about to end. mode and priority are hints to the application; this one passes over them. Keep the\n"
        "object as long as its thread runs."),
    Method<&EndThread, "|b", "wait=true">(
        "End",
        "End(wait=True) -> None\n\n"
        "Asks Main to stop, which it learns by TestBreak, and waits until it has ended; on the thread itself "
        "it\n"
        "does not wait. Other threads run meanwhile, and Ctrl-C on the main thread raises."),
    Method<&AwaitThread, "|b", "checkevents=false">(
        "Wait",
        "Wait(checkevents=False) -> None\n\n"
        "Waits until Main has ended, as End does; at once on the thread itself, or where it doesn't run. With\n"
        "checkevents the windows of an application that has some go on meanwhile."),
    Method<&BaseThread::IsRunning>("IsRunning", "IsRunning() -> bool\n\nWhether Main has begun and not ended."),
    Method<Row<Waits>, &BaseThread::TestBreak>("TestBreak",
                                               "TestBreak() -> bool\n\n"
                                               "Whether Main is to stop: End was called since Start, or "
                                               "TestDBreak says so. Inside of TestDBreak only End\n"
                                               "counts."),
    Method<&RefuseMain>(
        "Main",
        "Main() -> None\n\n"
        "Override it: the work of the thread. What it raises is printed. This one raises OSError."),
    Method<&NeverStop>(
        "TestDBreak",
        "TestDBreak() -> bool\n\n"
        "Override it: whether TestBreak is to answer True. It is called on the thread that asks.\n"
        "Where it raises, the answer is True. This one answers False."),
    {},
};

}  // namespace

PyTypeObject g_QLXThreadType = MakeType<ThreadWrapper>({
    .name = "qlx.threading.QLXThread",
    .doc = "User thread object",
    .methods = g_methods,
    .create = Construct,
    .destroy = Free,
    .flags = kSubclassable,
});

namespace {
const TypeQueueEntry g_entry(g_QLXThreadType);
}

}  // namespace qlx
