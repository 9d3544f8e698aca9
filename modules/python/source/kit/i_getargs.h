// The argument parser of every bound function. docs/bindings.md has its letters.
#ifndef KIT_I_GETARGS_H
#define KIT_I_GETARGS_H

#include <Python.h>

#include <cstdarg>
#include <cstdint>

namespace qlx {

// The target of the letter '#': a gadget by its id, or the host's gadget with the id -1.
struct GadgetArg {
  int32_t id = -1;
  void* gadget = nullptr;
};

// Unpacks the arguments of a call into targets: after `kwlist` comes one pointer for each item of
// the format ("O!", "A!" and "P!" take the type object first). 1, or 0 with an exception. Targets
// of optional items that are not given stay as they are; after a failure any may be written. The
// letters '#', '$' and '%' may answer 1 with an exception pending: the caller returns null then.
int32_t ParseTupleAndKeywords(PyObject* args, PyObject* keywords, const char* format, const char* const* kwlist,
                              ...);
int32_t VaParseTupleAndKeywords(PyObject* args, PyObject* keywords, const char* format,
                                const char* const* kwlist, va_list va);

// Keywords that no code of a script can change or is asked about: the dictionary itself, or a copy
// with plain texts as keys, which the caller releases. False with an exception.
bool OwnKeywords(PyObject*& keywords, PyObject*& copy);

}  // namespace qlx

#endif
