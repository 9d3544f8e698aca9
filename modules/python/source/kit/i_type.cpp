// The type record of a wrapper class.

#include "kit/i_type.h"

#include "kit/i_errors.h"

namespace qlx {

PyObject* RefuseInstance(PyTypeObject*, PyObject*, PyObject*) { return RaiseNotInstantiable(); }

}  // namespace qlx
