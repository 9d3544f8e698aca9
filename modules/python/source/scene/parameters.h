// Parameters of elements by keys of scripts: `op[id]`, `op[id] = value` and their kin.
#ifndef SCENE_PARAMETERS_H
#define SCENE_PARAMETERS_H

#include <Python.h>

#include "kelvar/descid.h"
#include "kelvar/value.h"
#include "kit/i_wrapper.h"

namespace qlx {

// The id that a key stands for: an int, a qlx.DescID, or a list or tuple of ints and qlx.DescLevel, or a
// dictionary of such by their positions. For any other key TypeError "<function> expected <what>, not X".
// Runs no code of a script.
bool DescIDFromPython(PyObject* key, const char* function, const char* what, DescID& id);

// The same for rows, whose keys are called "Description identifier".
bool ReadDescID(PyObject* key, const char* function, DescID& id);

// The mapping slots of qlx.GeListNode.
PyObject* GetParameterItem(PyObject* self, PyObject* key);
int SetParameterItem(PyObject* self, PyObject* key, PyObject* value);

// A value that was read from the element; a new reference or null with an exception.
PyObject* ParameterToPython(AtomWrapper* wrapper, const GeData& data);

// Sets a parameter as the host wants it: a text becomes a file name where the parameter is one.
bool SetParameterData(QLXAtom* host, const DescID& id, const GeData& data, int32_t flags);

}  // namespace qlx

#endif
