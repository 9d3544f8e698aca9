// The parameters that a user added to an element.
#ifndef SCENE_USERDATA_H
#define SCENE_USERDATA_H

#include <Python.h>

#include "kelvar/baselist.h"
#include "kit/i_wrapper.h"

namespace qlx::userdata {

// A new reference in each; null with an exception.
PyObject* Add(BaseList2D* self, BaseContainer* settings);
PyObject* Remove(BaseList2D* self, PyObject* id);
PyObject* Set(BaseList2D* self, PyObject* id, BaseContainer* settings, BaseList2D* node);
PyObject* GetAll(AtomWrapper* self);

}  // namespace qlx::userdata

#endif
