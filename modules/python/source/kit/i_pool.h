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
    --count_;
    return record;
  }

  // False when enough are kept already.
  bool Keep(void* record) {
    if (count_ >= kMost) return false;
    std::memcpy(record, &first_, sizeof first_);
    first_ = record;
    ++count_;
    return true;
  }

  void Release();

 private:
#ifdef __SANITIZE_ADDRESS__
  static constexpr int kMost = 0;  // a kept record would hide its use after the end
#else
  static constexpr int kMost = 1024;
#endif

  void* first_ = nullptr;
  int count_ = 0;
};

// Gives the kept records of all pools back to the interpreter, ahead of its end.
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
    void* record = list_.Take();
    if (!record) record = PyObject_Malloc(Size);
    if (!record) return PyErr_NoMemory();
    auto* object = static_cast<PyObject*>(record);
    object->ob_refcnt = 1;
    object->ob_type = type;
    return object;
  }

  static void Free(void* record) {
    if (!list_.Keep(record)) PyObject_Free(record);
  }

 private:
  inline static RecordList list_;
};

}  // namespace qlx

#endif
