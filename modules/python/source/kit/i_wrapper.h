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
  host = static_cast<QLXAtom*>(kelvar::GetLink(wrapper->link));
  return host || RefuseDead(wrapper);
}
inline bool ResolveBitmap(AtomWrapper* wrapper, BaseBitmap*& host) {
  host = static_cast<BaseBitmap*>(kelvar::GetLink(wrapper->link));
  return host || RefuseDead(wrapper);
}

// A new wrapper of the Python type that fits the element best; null with an exception. With
// `owned` the wrapper takes the element over, which is destroyed when there is no wrapper for it.
PyObject* WrapHostObject(QLXAtom* host, bool owned);

// The same with the type told, for the constructors behind WrapHostObject.
PyObject* WrapAtom(PyTypeObject* type, QLXAtom* host, bool owned, int32_t line = __builtin_LINE(),
                   const char* file = __builtin_FILE());
PyObject* WrapBitmap(PyTypeObject* type, BaseBitmap* host, bool owned, int32_t line = __builtin_LINE(),
                     const char* file = __builtin_FILE());

// The deallocation of wrappers: of those that own nothing, of elements, and of pictures.
void FreeLinkOnly(PyObject* self);
void FreeElement(PyObject* self);
void FreePicture(PyObject* self);

// What the host calls before it frees the memory of objects that it destroyed by itself: the calls
// that looked one up are over then.
void WaitForCalls();

}  // namespace qlx

#endif
