// The wrapper of a host object.

#include "kit/i_wrapper.h"

#include "interpreter/lib_python_lock.h"
#include "kelvar/baselist.h"
#include "kit/i_errors.h"

namespace qlx {
namespace {

void Destroy(QLXAtom* host) { static_cast<BaseList2D*>(host)->Free(); }
void Destroy(BaseBitmap* host) { host->Free(); }

template <class Host>
PyObject* Wrap(PyTypeObject* type, Host* host, bool owned, int32_t line, const char* file) {
  PyObject* object = AllocWrapper(g_wrapperTracker, type, line, file);
  auto* wrapper = reinterpret_cast<AtomWrapper*>(object);
  if (object && host->SetLink(&wrapper->link)) {
    wrapper->owned = owned;
    return object;
  }
  // Nothing of the host's stays behind without a wrapper.
  if (owned) Destroy(host);
  if (!object) return nullptr;
  Py_DECREF(object);
  return PyErr_NoMemory();
}

template <class Host>
void FreeOwning(PyObject* self) {
  auto* wrapper = reinterpret_cast<AtomWrapper*>(self);
  if (wrapper->owned)
    if (auto* host = static_cast<Host*>(kelvar::GetLink(wrapper->link))) Destroy(host);
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
  kelvar::FreeLink(&reinterpret_cast<AtomWrapper*>(self)->link);
  FreeWrapper(g_wrapperTracker, self);
}

void FreeElement(PyObject* self) { FreeOwning<QLXAtom>(self); }
void FreePicture(PyObject* self) { FreeOwning<BaseBitmap>(self); }

// Whoever looked an object up held the lock from there to the end of its call.
void WaitForCalls() {
  if (IsPythonRunning()) GilScope lock;
}

}  // namespace qlx
