// Between the host's tagged values and Python objects. Lock held in all of these.
#ifndef KIT_I_CONVERSION_H
#define KIT_I_CONVERSION_H

#include <Python.h>

#include <cstddef>
#include <iterator>

#include "kelvar/document.h"
#include "kelvar/value.h"

namespace qlx {

// A new reference, or null with an exception; null alone for custom data of which the host has no value.
// Links are resolved in the document, which may be null. Containers and custom data are copies: a change of one
// does not write through.
PyObject* GeDataToPython(const HostGeData& data, BaseDocument* document);

// The element that a link points at, unless it stands in another document; null for the document finds all. The
// element's own code may run.
QLXAtom* LookUpIn(HostLink link, const BaseDocument* document);

// Converts by the type that `data` already has: a value without a type takes the object's natural
// one, a typed one only what fits it. False with an exception; `data` stays then. A null object
// gives false alone.
bool GeDataFromPython(PyObject* object, GeData& data);

// The module `uuid` is kept from its first use until it is released.
PyObject* UuidToPython(const Uuid& uuid);
void ReleaseUuidModule();
// From an object with `bytes` of 16 bytes; false with an exception.
bool UuidFromPython(PyObject* object, Uuid& uuid);

// The text of a `str`; empty when it has no UTF-8 form, and no exception is pending then. False for want of
// memory alone, with the exception.
bool StringFromPython(PyObject* object, String& text);

// ValueError and false for a text with a null byte, which no path has.
bool FilenameFromText(const String& text, Filename& name);

// The file name of a `str`, also of one whose bytes are no UTF-8, as the interpreter hands those out. False
// with UnicodeEncodeError for other lone surrogates, and as FilenameFromText.
bool FilenameFromPython(PyObject* object, Filename& name);

// As the host's times are: reduced, also what a script has set piece by piece.
BaseTime TimeFromPython(PyObject* time);

// `data` becomes what the host made for the object; TypeError and false where it made nothing.
bool StoreMade(GeData made, PyObject* object, GeData& data);

// The types of custom data that have wrappers of their own, in the order in which an object is tried.
inline constexpr int32_t kCustomTypes[] = {
    1009398,    // qlx.DateTimeData
    1009369,    // qlx.PriorityData
    200000044,  // qlx.LayerSet
    200000027,  // qlx.MatAssignData
    1000481,    // qlx.Gradient
    1009060,    // qlx.SplineData
    440000257,  // qlx.SoundEffectorData
    1009290,    // qlx.InExcludeData
    200000266,  // qlx.bitmaps.ColorProfile
    HOST_CUSTOM_DESCID,
    1009372,    // qlx.FontData
    200000275,  // qlx.UnitScaleData
    100004811,  // qlx.PLAData
    1001053,    // qlx.BitmapButtonStruct
    1000997,    // qlx.LensGlowStruct
    1009617,    // qlx.HyperLinkData
    431000178,  // qlx.RangeData
    440000246,  // qlx.FieldList
};

// The place of a type in that order; one without a place does not compile.
struct CustomPlace {
  size_t index = 0;

  consteval CustomPlace(int32_t id) {
    while (index < std::size(kCustomTypes) && kCustomTypes[index] != id) ++index;
    if (index == std::size(kCustomTypes)) throw "no type of custom data";
  }
};

// A row for each type of custom data whose wrapper is bound: a static object of this kind in the
// type's file adds it. `toPython` copies the value; `fromPython` answers false with an exception.
struct CustomDataEntry {
  PyTypeObject* type;
  PyObject* (*toPython)(const HostGeData& data);
  bool (*fromPython)(PyObject* object, GeData& data);

  CustomDataEntry(CustomPlace place, PyTypeObject& pythonType, PyObject* (*to)(const HostGeData&),
                  bool (*from)(PyObject*, GeData&));
};

}  // namespace qlx

#endif
