// What the layer of an element says, as a dictionary.
#ifndef SCENE_LAYERS_H
#define SCENE_LAYERS_H

#include <Python.h>

#include "kelvar/baselist.h"

namespace qlx::layers {

// A new reference in each; null with an exception.
PyObject* GetData(BaseList2D* self, BaseDocument* doc, bool raw);
PyObject* SetData(BaseList2D* self, BaseDocument* doc, PyObject* data);

}  // namespace qlx::layers

#endif
