// The argument parser of every bound function. docs/bindings-reference.md has its letters.
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

// Takes a reference to what a call gave for each name of the list, so that no code of a script that runs
// meanwhile frees it, and replaces keywords whose names have code of their own by a copy. The caller
// releases all of it. False with an exception.
bool HoldKeywords(PyObject*& keywords, PyObject*& copy, const char* const* kwlist, PyObject** given);

}  // namespace qlx

#endif
