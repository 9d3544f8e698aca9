// Between the argument parser's loop and its letters.
#ifndef KIT_I_GETARGS_LETTERS_H
#define KIT_I_GETARGS_LETTERS_H

#include <Python.h>

#include <cstdarg>
#include <cstddef>

namespace qlx {

// The caller's target pointers, in format order, and the exception of a letter that counts as
// converted all the same: letters behind it may run Python code, which wants none pending.
class Targets {
 public:
  explicit Targets(va_list va) { va_copy(list_, va); }
  ~Targets() {
    va_end(list_);
    if (type_) GiveException();
  }
  Targets(const Targets&) = delete;
  Targets& operator=(const Targets&) = delete;

  template <class T>
  T* Next() {
    return va_arg(list_, T*);
  }

  // Takes the pending exception until the parse ends. Of several the last one stands.
  void KeepException();
  bool HasException() const { return type_ || PyErr_Occurred(); }

 private:
  void GiveException();

  va_list list_;
  PyObject* type_ = nullptr;
  PyObject* value_ = nullptr;
  PyObject* traceback_ = nullptr;
};

// Converts by the letter at `*p_format` and steps over it. Null, or a message, which is empty where an
// exception is pending. `optional` tells that the item stands behind '|'. No letter uses the free list.
const char* convertsimple(PyObject* arg, const char** p_format, Targets* p_va, bool optional, char* msgbuf,
                          size_t bufsize, PyObject** p_freelist);

// "must be ..., not ..." in the buffer, with the type of `arg` or "None".
const char* converterr(const char* expected, PyObject* arg, char* msgbuf, size_t bufsize);
const char* converterr_twoargs(const char* expected, const char* expected2, PyObject* arg, char* msgbuf,
                               size_t bufsize);

}  // namespace qlx

#endif
