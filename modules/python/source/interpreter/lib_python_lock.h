// The one door to the interpreter's lock. Nothing else names the functions that take or free it.
#ifndef INTERPRETER_LIB_PYTHON_LOCK_H
#define INTERPRETER_LIB_PYTHON_LOCK_H

#include <Python.h>

#include <utility>

#include "interpreter/lib_python_link.h"
#include "tavor/cpythonlibrary.h"

namespace qlx {

// Whether Python objects may be touched at all: an interpreter library is there and runs.
inline bool IsPythonRunning() { return IsInterpreterLibraryBound() && Py_IsInitialized(); }

// Set in the calls that take the lock. The interpreter ends threads in them at its own end, by unwinding their
// stacks: it is still set then, and the scopes further out must not come to the lock again.
[[gnu::tls_model("initial-exec")]] inline thread_local bool t_isTakingLock = false;

inline PyGILState_STATE TakeLock() {
  t_isTakingLock = true;
  const PyGILState_STATE state = PyGILState_Ensure();
  t_isTakingLock = false;
  return state;
}

// Host into Python. Holds the lock from here to the end of the scope; nesting is allowed.
class GilScope {
 public:
  GilScope() : state_(TakeLock()) {}
  // The lock that this scope held is gone where the interpreter ended the thread inside.
  ~GilScope() noexcept(false) {
    if (!t_isTakingLock && Py_IsInitialized()) PyGILState_Release(state_);
  }
  GilScope(const GilScope&) = delete;
  GilScope& operator=(const GilScope&) = delete;

 private:
  PyGILState_STATE state_;
};

// Python into a host call that may wait. No Python object is touched inside.
class HostBlockingScope {
 public:
  HostBlockingScope() : thread_(PyEval_SaveThread()) {}
  // A thread that comes back after the interpreter's end is ended in the same way.
  ~HostBlockingScope() noexcept(false) {
    if (t_isTakingLock) return;
    t_isTakingLock = true;
    PyEval_RestoreThread(thread_);
    t_isTakingLock = false;
  }
  HostBlockingScope(const HostBlockingScope&) = delete;
  HostBlockingScope& operator=(const HostBlockingScope&) = delete;

 private:
  PyThreadState* thread_;
};

// The lock of the thread that starts and ends the interpreter, where no scope can hold it:
// the start leaves it taken, the end consumes it.
inline void FreeLockOfStart() { PyEval_SaveThread(); }
inline void TakeLockForEnd() { PyGILState_Ensure(); }

// The lock as a state word, for callers on the other side of the boundary.
inline int TakeLockState() { return int(TakeLock()); }
inline void GiveLockState(int state) {
  if (!t_isTakingLock) PyGILState_Release(PyGILState_STATE(state));
}

// The lock through the library's interface, where the start must work with any library.
class LibraryGilScope {
 public:
  explicit LibraryGilScope(CPythonLibrary* library)
      : library_(library), state_(library->CPyGilState_Ensure()) {}
  ~LibraryGilScope() noexcept(false) { library_->CPyGilState_Release(state_); }
  LibraryGilScope(const LibraryGilScope&) = delete;
  LibraryGilScope& operator=(const LibraryGilScope&) = delete;

 private:
  CPythonLibrary* library_;
  int32_t state_;
};

// A Python reference that a host object keeps. May be dropped by any thread, with or without
// the lock, also after the interpreter ended: then the object is gone and is not touched.
class KeptReference {
 public:
  KeptReference() = default;
  KeptReference(KeptReference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  KeptReference& operator=(KeptReference&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~KeptReference() noexcept(false) { Drop(); }

  // Takes over a reference that the caller owns. Lock held.
  static KeptReference Adopt(PyObject* object) {
    KeptReference reference;
    reference.object_ = object;
    return reference;
  }

  void Drop() {
    PyObject* object = std::exchange(object_, nullptr);
    if (!object || !IsPythonRunning()) return;
    GilScope lock;
    Py_DECREF(object);
  }

  PyObject* Get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  PyObject* object_ = nullptr;
};

}  // namespace qlx

#endif
