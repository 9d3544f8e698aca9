// The elements of the scene as scripts see them.
#ifndef SCENE_SCENE_H
#define SCENE_SCENE_H

#include <Python.h>

#include "kelvar/baselist.h"
#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_QLXAtomType;
extern PyTypeObject g_GeListNodeType;
extern PyTypeObject g_BaseList2DType;

// The package's functions for events of the scene; false with an exception.
bool AddEventFunctions(PyObject* package);

template <>
struct TypeOf<QLXAtom> {
  static PyTypeObject& Get() { return g_QLXAtomType; }
};
template <>
struct TypeOf<BaseList2D> {
  static PyTypeObject& Get() { return g_BaseList2DType; }
};

}  // namespace qlx

#endif
