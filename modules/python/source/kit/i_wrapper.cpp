// The wrapper of a host object.

#include "kit/i_wrapper.h"

#include "interpreter/lib_python_lock.h"
#include "kelvar/baselist.h"
#include "kit/i_errors.h"
#include "kit/i_pool.h"

namespace qlx {
namespace {

void Destroy(QLXAtom* host) { static_cast<BaseList2D*>(host)->Free(); }
void Destroy(BaseBitmap* host) { host->Free(); }

using Pool = RecordPool<sizeof(AtomWrapper)>;

// AllocWrapper and FreeWrapper in place: scripts make wrappers in their inner loops. No wrapper type of
// this record is open to subclasses, whose instances would not come from the pool.
PyObject* Alloc(PyTypeObject* type, int32_t line, const char* file) {
  if (LeakTracker::IsOn()) return AllocWrapper(g_wrapperTracker, type, line, file);
  return Pool::AllocRaw(type);
}

void Free(PyObject* self) {
  if (LeakTracker::IsOn()) return FreeWrapper(g_wrapperTracker, self);
  Pool::Free(self);
}

template <class Host>
PyObject* Wrap(PyTypeObject* type, Host* host, bool owned, int32_t line, const char* file) {
  PyObject* object = Alloc(type, line, file);
  auto* wrapper = reinterpret_cast<AtomWrapper*>(object);
  if (object && SetLink(host, wrapper->link)) [[likely]] {
    wrapper->owned = owned;
    return object;
  }
  // Nothing of the host's stays behind without a wrapper.
  if (owned) Destroy(host);
  if (!object) return nullptr;
  wrapper->link = {};
  wrapper->owned = false;
  Py_DECREF(object);
  return PyErr_NoMemory();
}

template <class Host>
void FreeOwning(PyObject* self) {
  auto* wrapper = reinterpret_cast<AtomWrapper*>(self);
  if (wrapper->owned)
    if (auto* host = static_cast<Host*>(LookUp(wrapper->link))) Destroy(host);
  FreeLinkOnly(self);
}

}  // namespace

bool RefuseDead(AtomWrapper* wrapper) {
  ReportNotAlive(Py_TYPE(wrapper));
  return false;
}

PyObject* WrapAtom(PyTypeObject* type, QLXAtom* host, bool owned, int32_t line, const char* file) {
  return Wrap(type, host, owned, line, file);
}

PyObject* WrapBitmap(PyTypeObject* type, BaseBitmap* host, bool owned, int32_t line, const char* file) {
  return Wrap(type, host, owned, line, file);
}

void FreeLinkOnly(PyObject* self) {
  FreeLink(reinterpret_cast<AtomWrapper*>(self)->link);
  Free(self);
}

void FreeElement(PyObject* self) { FreeOwning<QLXAtom>(self); }
void FreePicture(PyObject* self) { FreeOwning<BaseBitmap>(self); }

// Whoever looked an object up held the lock from there to the end of its call.
void WaitForCalls() {
  if (IsPythonRunning()) GilScope lock;
}

}  // namespace qlx
