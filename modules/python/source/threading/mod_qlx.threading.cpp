// The module qlx.threading.

#include "kit/i_row.h"
#include "threading/threads.h"

namespace qlx {
namespace {

PyObject* Lock(PyObject*) { return WaitFor(BaseThread::GeThreadLock) ? NewNone() : nullptr; }

void Unlock(PyObject*) {
  const HostBlockingScope blocking;
  BaseThread::GeThreadUnlock();
}

int32_t IdentifyThread(PyObject*, BaseThread* bt) { return bt ? bt->IdentifyThread() : 0; }

bool CheckBackground(PyObject*, int32_t typeclass, bool all) {
  return BaseThread::GeCheckBackgroundThreadsRunning(typeclass, all);
}

void StopBackground(PyObject*, int32_t typeclass, int32_t flags) {
  const HostBlockingScope blocking;
  BaseThread::GeStopBackgroundThreads(typeclass, flags);
}

bool IsMainThread() { return kelvar::GeIsMainThread(); }

}  // namespace

PyMethodDef g_threadingFunctions[] = {
    Method<&Lock>(
        "GeThreadLock",
        "GeThreadLock() -> None\n\n"
        "Takes the one lock that all threads of the application share, and waits for it; other threads run\n"
        "meanwhile. The thread that has it may take it again. Ctrl-C on the main thread raises."),
    Method<&Unlock>("GeThreadUnlock",
                    "GeThreadUnlock() -> None\n\n"
                    "Gives one GeThreadLock back. Nothing happens on a thread that doesn't have the lock."),
    Function<&IsMainThread>("GeIsMainThread",
                            "GeIsMainThread() -> bool\n\nWhether this is the application's main thread."),
    Function<&BaseThread::GeIsMainThreadAndNoDrawThread>(
        "GeIsMainThreadAndNoDrawThread",
        "GeIsMainThreadAndNoDrawThread() -> bool\n\n"
        "Whether this is the main thread and no other one draws a view in the background."),
    Function<&BaseThread::GeGetCPUCount>(
        "GeGetCPUCount", "GeGetCPUCount() -> int\n\nHow many threads the processor runs at once."),
    Function<&BaseThread::GeGetCPUCount>(
        "GeGetCurrentThreadCount",
        "GeGetCurrentThreadCount() -> int\n\nOver how many threads work is best spread: GeGetCPUCount."),
    Function<&BaseThread::GeGetCurrentThreadId>(
        "GeGetCurrentThreadId",
        "GeGetCurrentThreadId() -> int\n\nA number above 0 of this thread, which no other one has or had."),
    Method<&IdentifyThread, "X", "bt">(
        "IdentifyThread",
        "IdentifyThread(bt) -> int\n\n"
        "The number that GeGetCurrentThreadId answers on that thread; 0 while it doesn't run, and for None."),
    Function<&BaseThread::GeGetCurrentThread>(
        "GeGetCurrentThread",
        "GeGetCurrentThread() -> qlx.threading.BaseThread or None\n\n"
        "This thread; None on one that the application did not start, such as one of Python's threading."),
    Function<&BaseThread::GeGetDummyThread>(
        "GeGetDummyThread",
        "GeGetDummyThread() -> qlx.threading.BaseThread or None\n\nA thread that is never to stop."),
    Function<&BaseThread::GeGetEscTestThread>(
        "GeGetEscTestThread",
        "GeGetEscTestThread() -> qlx.threading.BaseThread or None\n\n"
        "A thread for long calls that the user may stop. Without windows its End does: TestBreak answers True\n"
        "once then."),
    Method<&CheckBackground, "ib", "typeclass", "all">(
        "GeCheckBackgroundThreadsRunning",
        "GeCheckBackgroundThreadsRunning(typeclass, all) -> bool\n\n"
        "Whether the application does something in the background: 1 draws a view, 2 renders, 3 something "
        "else;\n"
        "with `all` any of them. Threads of scripts don't count."),
    Method<&StopBackground, "ii", "typeclass", "flags">(
        "GeStopBackgroundThreads",
        "GeStopBackgroundThreads(typeclass, flags) -> None\n\n"
        "Stops that work and waits until it has ended. No flags have a meaning yet."),
    {},
};

}  // namespace qlx
