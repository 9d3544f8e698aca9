// Calls on documents that take long.

#include "interpreter/lib_python_lock.h"
#include "kit/i_row.h"
#include "scene/documents.h"

namespace qlx::documents {
namespace {

// Lets the host ask now and then whether the call is to be stopped: by a thread that the script gave, as long
// as that is there, or by a signal, such as Ctrl-C. What the signal's handler raises is raised behind the call.
class Interruption {
 public:
  explicit Interruption(BaseThread* thread = nullptr) {
    if (thread) SetLink(thread, thread_);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption() {
    Py_XDECREF(type_);
    Py_XDECREF(value_);
    Py_XDECREF(traceback_);
    FreeLink(thread_);
  }

  static HostBool IsDue(void* user) {
    auto& self = *static_cast<Interruption*>(user);
    if (self.type_ || self.IsThreadToStop()) return 1;
    if (!kelvar::GeIsMainThread() || !IsPythonRunning()) return 0;  // signals are that thread's
    const GilScope lock;
    if (PyErr_CheckSignals() == 0) return 0;
    PyErr_Fetch(&self.type_, &self.value_, &self.traceback_);
    return 1;
  }

  // Lock held.
  bool Raise() {
    if (!type_) return false;
    PyErr_Restore(std::exchange(type_, nullptr), std::exchange(value_, nullptr),
                  std::exchange(traceback_, nullptr));
    return true;
  }

 private:
  bool IsThreadToStop() const {
    auto* thread = static_cast<BaseThread*>(kelvar::PinLink(thread_));
    const bool isToStop = thread && thread->TestBreak();
    if (thread) kelvar::UnpinLink(thread_);
    return isToStop;
  }

  HostLink thread_{};
  PyObject *type_ = nullptr, *value_ = nullptr, *traceback_ = nullptr;
};

// Calls the host without the lock; what it is to keep meanwhile is pinned by the caller.
template <class Body>
auto WithoutLock(Body&& body) {
  const HostBlockingScope blocking;
  return body();
}

PyObject* Answer(Interruption& interruption, bool success) {
  return interruption.Raise() ? nullptr : ToPython(success);
}

}  // namespace

PyObject* ExecutePasses(BaseDocument* self, BaseThread* bt, bool animation, bool expressions, bool caches,
                        int32_t flags) {
  Interruption interruption(bt);
  const Pin<BaseDocument> pin(self);
  if (!pin.held) return PyErr_NoMemory();
  const bool success = WithoutLock([&] {
    return self->ExecutePasses(animation, expressions, caches, flags, Interruption::IsDue, &interruption);
  });
  return Answer(interruption, success);
}

PyObject* LoadFile(PyObject*, const Filename& name) {
  Interruption interruption;
  const bool success =
      WithoutLock([&] { return BaseDocument::LoadFile(name, Interruption::IsDue, &interruption); });
  return Answer(interruption, success);
}

PyObject* LoadDocument(PyObject*, const Filename& name, int32_t loadflags, BaseThread* thread) {
  Interruption interruption(thread);
  BaseDocument* document = WithoutLock(
      [&] { return BaseDocument::LoadDocument(name, loadflags, Interruption::IsDue, &interruption); });
  if (document && interruption.Raise()) {
    document->Free();
    return nullptr;
  }
  if (document) return WrapHostObject(document, true);  // the script's
  return interruption.Raise() ? nullptr : NewNone();
}

// Other threads wait: scripts rely on a document that doesn't change while something is merged into it.
PyObject* MergeDocument(PyObject*, BaseDocument* doc, const Filename& name, int32_t loadflags,
                        BaseThread* thread) {
  Interruption interruption(thread);
  const bool success = doc->MergeDocument(name, loadflags, Interruption::IsDue, &interruption);
  return Answer(interruption, success);
}

PyObject* SaveDocument(PyObject*, BaseDocument* doc, const Filename& name, int32_t saveflags, int32_t format) {
  Interruption interruption;
  const Pin<BaseDocument> pin(doc);
  if (!pin.held) return PyErr_NoMemory();
  const bool success = WithoutLock(
      [&] { return doc->SaveDocument(name, saveflags, format, Interruption::IsDue, &interruption); });
  return Answer(interruption, success);
}

}  // namespace qlx::documents
