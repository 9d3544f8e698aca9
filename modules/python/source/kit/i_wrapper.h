// The wrapper of a host object: a weak link and an owner flag in a Python object. It may outlive
// what it presents; every use passes the gate, which raises ReferenceError then. Lock held in all
// of these.
#ifndef KIT_I_WRAPPER_H
#define KIT_I_WRAPPER_H

#include <Python.h>

#include "interpreter/lib_python_leaks.h"
#include "kelvar/atom.h"
#include "kelvar/bitmap.h"
#include "kelvar/link.h"

namespace qlx {

// Links by the words that the host offers for them, or by its entries.

template <class Word>
Word ReadWord(const void* base, uint32_t offset) {
  return __atomic_load_n(reinterpret_cast<const Word*>(static_cast<const char*>(base) + offset),
                         __ATOMIC_ACQUIRE);
}

// The object that a link points at, or null.
inline void* LookUp(HostLink link) {
  const auto* layout = static_cast<const HostLinkLayout*>(tables::link.layout);
  if (!layout) return kelvar::GetLink(link);
  if (!link.slot) return nullptr;
  // The object is read first: a slot that has the next one has the next generation too.
  void* object = ReadWord<void*>(link.slot, layout->objectInSlot);
  return ReadWord<uint64_t>(link.slot, layout->generationInSlot) == link.generation ? object : nullptr;
}

// Where the host offers the words and the object was linked before: true, and a link that needs no FreeLink.
inline bool ReadLink(const void* host, HostLink& link) {
  const auto* layout = static_cast<const HostLinkLayout*>(tables::link.layout);
  void* slot = layout ? ReadWord<void*>(host, layout->slotInObject) : nullptr;
  if (!slot) return false;
  link = {slot, ReadWord<uint64_t>(slot, layout->generationInSlot)};
  return true;
}

// False when memory lacks.
template <class Host>
bool SetLink(Host* host, HostLink& link) {
  return ReadLink(host, link) || host->SetLink(&link);
}

inline void FreeLink(HostLink& link) {
  if (!tables::link.layout) kelvar::FreeLink(&link);
}

// The record of every atom and bitmap type; a subclass adds no field. `owned` tells that the host
// object exists for this wrapper only, which then destroys it.
struct AtomWrapper {
  PyObject ob_base;
  HostLink link;
  bool owned;
};

// ReportNotAlive for the wrapper's type; false.
bool RefuseDead(AtomWrapper* wrapper);

// The gate: true with the object, or ReportNotAlive and false. In place, since every bound call passes it.
inline bool ResolveAtom(AtomWrapper* wrapper, QLXAtom*& host) {
  host = static_cast<QLXAtom*>(LookUp(wrapper->link));
  return host || RefuseDead(wrapper);
}
inline bool ResolveBitmap(AtomWrapper* wrapper, BaseBitmap*& host) {
  host = static_cast<BaseBitmap*>(LookUp(wrapper->link));
  return host || RefuseDead(wrapper);
}

// A new wrapper of the Python type that fits the element best; null with an exception. With
// `owned` the wrapper takes the element over, which is destroyed when there is no wrapper for it.
PyObject* WrapHostObject(QLXAtom* host, bool owned);

// The same with the type told, for the constructors behind WrapHostObject.
PyObject* WrapAtom(PyTypeObject* type, QLXAtom* host, bool owned, int32_t line = __builtin_LINE(),
                   const char* file = __builtin_FILE());
// The same for the object of a link, which is taken over; the wrapper of one that went meanwhile is dead.
PyObject* WrapLinkedAtom(PyTypeObject* type, HostLink link, bool owned, int32_t line = __builtin_LINE(),
                         const char* file = __builtin_FILE());
// The end of what a wrapper owned: what stands in a list is the list's, whatever other wrappers of it did.
void FreeUnlessListed(QLXAtom* host);
PyObject* WrapBitmap(PyTypeObject* type, BaseBitmap* host, bool owned, int32_t line = __builtin_LINE(),
                     const char* file = __builtin_FILE());

// The deallocation of wrappers: of those that own nothing, of elements, and of pictures.
void FreeLinkOnly(PyObject* self);
void FreeElement(PyObject* self);
void FreePicture(PyObject* self);

// What the host calls before it frees the memory of objects that it destroyed by itself: the calls
// that looked one up are over then.
void WaitForCalls();

// What the host calls around its own work on a scene, in calls that came without the lock.
int32_t TakeTurn();
void GiveTurn(int32_t turn);

}  // namespace qlx

#endif
