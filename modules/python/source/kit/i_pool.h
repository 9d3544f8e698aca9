// Pools of freed records: wrappers are made and dropped in the inner loops of scripts. Lock held.
#ifndef KIT_I_POOL_H
#define KIT_I_POOL_H

#include <Python.h>

#include <cstring>

namespace qlx {

// The kept records of one size; each one's first word leads to the next.
class RecordList {
 public:
  RecordList();
  RecordList(const RecordList&) = delete;
  RecordList& operator=(const RecordList&) = delete;

  void* Take() {
    void* record = first_;
    if (!record) return nullptr;
    std::memcpy(&first_, record, sizeof first_);
    ++room_;
    return record;
  }

  // False when enough are kept already.
  bool Keep(void* record) {
    if (room_ == 0) return false;
    std::memcpy(record, &first_, sizeof first_);
    first_ = record;
    --room_;
    return true;
  }

  void Restart(bool keeps);

 private:
#ifdef __SANITIZE_ADDRESS__
  static constexpr int kMost = 0;  // a kept record would hide its use after the end
#else
  static constexpr int kMost = 1024;
#endif

  void* first_ = nullptr;
  int room_ = kMost;
};

// Gives the kept records of all pools back to the interpreter, ahead of its end. While instances are recorded
// the pools keep none from here, so that a kept one need not be asked whether it is.
void ReleaseRecordPools();

// The tp_alloc and tp_free of static types whose records have `Size` bytes.
template <size_t Size>
struct RecordPool {
  static PyObject* Alloc(PyTypeObject* type, Py_ssize_t) {
    PyObject* object = AllocRaw(type);
    if (object) std::memset(static_cast<void*>(object + 1), 0, Size - sizeof(PyObject));
    return object;
  }

  // For who writes every field at once.
  static PyObject* AllocRaw(PyTypeObject* type) {
    if (PyObject* object = Reuse(type)) [[likely]]
      return object;
    void* record = PyObject_Malloc(Size);
    return record ? Head(record, type) : PyErr_NoMemory();
  }

  // A kept record, or null.
  static PyObject* Reuse(PyTypeObject* type) {
    void* record = list_.Take();
    return record ? Head(record, type) : nullptr;
  }
  // False when the record is not kept.
  static bool Keep(void* record) { return list_.Keep(record); }

  static void Free(void* record) {
    if (!Keep(record)) PyObject_Free(record);
  }

 private:
  static PyObject* Head(void* record, PyTypeObject* type) {
    auto* object = static_cast<PyObject*>(record);
    object->ob_refcnt = 1;
    object->ob_type = type;
    return object;
  }

  inline static RecordList list_;
};

}  // namespace qlx

#endif
