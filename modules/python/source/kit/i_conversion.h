// Between the host's tagged values and Python objects. Lock held in all of these.
#ifndef KIT_I_CONVERSION_H
#define KIT_I_CONVERSION_H

#include <Python.h>

#include "kelvar/document.h"
#include "kelvar/value.h"

namespace qlx {

// A new reference, or null with an exception. Links are resolved in the document, which may be null.
// Containers and custom data are copies: a change of one does not write through.
PyObject* GeDataToPython(const HostGeData& data, BaseDocument* document);

// Converts by the type that `data` already has: a value without a type takes the object's natural
// one, a typed one only what fits it. False with an exception; `data` stays then. A null object
// gives false alone.
bool GeDataFromPython(PyObject* object, GeData& data);

PyObject* UuidToPython(const Uuid& uuid);
// From an object with `bytes` of 16 bytes; false with an exception.
bool UuidFromPython(PyObject* object, Uuid& uuid);

// The text of a `str`; empty when it has no UTF-8 form, and no exception is pending then.
String StringFromPython(PyObject* text);

// A row for each type of custom data whose wrapper is bound: a static object of this kind in the
// type's file adds it. `toPython` copies the value; `fromPython` answers false with an exception.
struct CustomDataEntry {
  int32_t typeId;
  PyTypeObject* type;
  PyObject* (*toPython)(const HostGeData& data);
  bool (*fromPython)(PyObject* object, GeData& data);

  CustomDataEntry(int32_t id, PyTypeObject& pythonType, PyObject* (*to)(const HostGeData&),
                  bool (*from)(PyObject*, GeData&));
};

}  // namespace qlx

#endif
