// The wrapper of a host object.

#include "kit/i_wrapper.h"

#include "interpreter/lib_python_lock.h"
#include "kelvar/baselist.h"
#include "kit/i_errors.h"
#include "kit/i_pool.h"

namespace qlx {

void FreeUnlessListed(QLXAtom* host) {
  auto* node = static_cast<BaseList2D*>(host);
  if (!node->GetUp() && !node->GetListHead()) node->Free();
}
static void FreeUnlessListed(BaseBitmap* host) { host->Free(); }

namespace {

using Pool = RecordPool<sizeof(AtomWrapper)>;

// A wrapper of what a link points at, which is taken over; the allocation may run the code of scripts. Nothing
// of the host's stays behind without a wrapper.
template <class Host>
PyObject* WrapLink(PyTypeObject* type, HostLink link, bool owned, int32_t line, const char* file) {
  PyObject* object = AllocWrapper(g_wrapperTracker, type, line, file);
  if (auto* wrapper = reinterpret_cast<AtomWrapper*>(object)) {
    wrapper->link = link;
    wrapper->owned = owned;
    return object;
  }
  auto* host = static_cast<Host*>(LookUp(link));
  if (owned && host) FreeUnlessListed(host);
  FreeLink(link);
  return nullptr;
}

// What isn't usual: no link or no record is at hand, or instances are recorded.
template <class Host>
[[gnu::noinline]] PyObject* WrapAfresh(PyTypeObject* type, Host* host, bool owned, int32_t line,
                                       const char* file) {
  HostLink link{};
  if (SetLink(host, link)) return WrapLink<Host>(type, link, owned, line, file);
  if (owned) FreeUnlessListed(host);
  return PyErr_NoMemory();
}

// Scripts make wrappers in their inner loops. No wrapper type of this record is open to subclasses, whose
// instances would not come from the pool.
template <class Host>
PyObject* Wrap(PyTypeObject* type, Host* host, bool owned, int32_t line, const char* file) {
  HostLink link;
  PyObject* object = ReadLink(host, link) ? Pool::Reuse(type) : nullptr;
  if (!object) [[unlikely]]
    return WrapAfresh(type, host, owned, line, file);
  auto* wrapper = reinterpret_cast<AtomWrapper*>(object);
  wrapper->link = link;
  wrapper->owned = owned;
  return object;
}

[[gnu::noinline]] void FreeAtLast(PyObject* self) {
  FreeLink(reinterpret_cast<AtomWrapper*>(self)->link);
  FreeWrapper(g_wrapperTracker, self);
}

template <class Host>
[[gnu::noinline]] void FreeOwning(PyObject* self) {
  auto* host = static_cast<Host*>(LookUp(reinterpret_cast<AtomWrapper*>(self)->link));
  if (host) FreeUnlessListed(host);
  FreeLinkOnly(self);
}

bool Owns(PyObject* self) { return reinterpret_cast<AtomWrapper*>(self)->owned; }

}  // namespace

bool RefuseDead(AtomWrapper* wrapper) {
  ReportNotAlive(Py_TYPE(wrapper));
  return false;
}

PyObject* WrapAtom(PyTypeObject* type, QLXAtom* host, bool owned, int32_t line, const char* file) {
  return Wrap(type, host, owned, line, file);
}

PyObject* WrapLinkedAtom(PyTypeObject* type, HostLink link, bool owned, int32_t line, const char* file) {
  return WrapLink<QLXAtom>(type, link, owned, line, file);
}

PyObject* WrapBitmap(PyTypeObject* type, BaseBitmap* host, bool owned, int32_t line, const char* file) {
  return Wrap(type, host, owned, line, file);
}

void FreeLinkOnly(PyObject* self) {
  if (!tables::link.layout || !Pool::Keep(self)) [[unlikely]]
    FreeAtLast(self);
}

void FreeElement(PyObject* self) { Owns(self) ? FreeOwning<QLXAtom>(self) : FreeLinkOnly(self); }
void FreePicture(PyObject* self) { Owns(self) ? FreeOwning<BaseBitmap>(self) : FreeLinkOnly(self); }

// Whoever looked an object up held the lock from there to the end of its call.
void WaitForCalls() {
  if (IsPythonRunning()) GilScope lock;
}

constexpr int32_t kNoTurn = -1;

int32_t TakeTurn() { return IsPythonRunning() ? int32_t(TakeLockState()) : kNoTurn; }

void GiveTurn(int32_t turn) {
  if (turn != kNoTurn && IsPythonRunning()) GiveLockState(turn);
}

}  // namespace qlx
