// qlx.threading.BaseThread: a handle to a thread that the host knows.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "kit/i_valueletters.h"
#include "threading/threads.h"

namespace qlx {
namespace {

PyMethodDef g_methods[] = {
    Method<Row<Waits>, &BaseThread::TestBreak>("TestBreak",
                                               "TestBreak() -> bool\n\n"
                                               "Whether what the thread does is to stop: by End, or by the "
                                               "TestDBreak of its qlx.threading.QLXThread."),
    Method<&EndThread, "|b", "wait=true">(
        "End",
        "End(wait=True) -> None\n\n"
        "Asks what the thread does to stop, and waits until it has; on the thread itself it does not wait. "
        "The\n"
        "main thread and the dummy thread are not asked; the escape test tells it once."),
    Method<&BaseThread::IsRunning>(
        "IsRunning",
        "IsRunning() -> bool\n\n"
        "Whether the thread runs. The main thread does, the dummy thread and the escape test do not."),
    {},
};

// The caller has pinned it: its object may go meanwhile.
PyObject* Await(BaseThread* host, bool checkevents) {
  return WaitFor([&](int32_t limit) { return host->Wait(checkevents, limit); }) ? NewNone() : nullptr;
}

}  // namespace

PyObject* EndThread(BaseThread* self, bool wait) {
  const Pin<BaseThread> pin(self);
  if (!pin.held) return PyErr_NoMemory();
  {
    const HostBlockingScope blocking;
    self->End(false);
  }
  return wait ? Await(self, false) : NewNone();
}

PyObject* AwaitThread(BaseThread* self, bool checkevents) {
  const Pin<BaseThread> pin(self);
  if (!pin.held) return PyErr_NoMemory();
  return Await(self, checkevents);
}

PyTypeObject g_BaseThreadType = MakeType<AtomWrapper>({
    .name = "qlx.threading.BaseThread",
    .doc = "BaseThread class.",
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = FreeLinkOnly,
});

namespace {

Conversion Convert(PyObject* object, void* target) {
  if (Py_TYPE(object) != &g_BaseThreadType) return Conversion::kWrongType;
  return Present<BaseThread>::Get(object, *static_cast<BaseThread**>(target)) ? Conversion::kStored
                                                                              : Conversion::kFailed;
}

const LetterEntry g_letter(ValueLetter::kThread, Convert);
const TypeQueueEntry g_entry(g_BaseThreadType);

}  // namespace

bool Present<BaseThread>::Get(PyObject* object, BaseThread*& host) {
  auto* wrapper = reinterpret_cast<AtomWrapper*>(object);
  host = static_cast<BaseThread*>(LookUp(wrapper->link));
  return host || RefuseDead(wrapper);
}

PyObject* Present<BaseThread>::Wrap(BaseThread* host, bool) {
  HostLink link{};
  return SetLink(host, link) ? WrapLinkedAtom(&g_BaseThreadType, link, false) : PyErr_NoMemory();
}

}  // namespace qlx
