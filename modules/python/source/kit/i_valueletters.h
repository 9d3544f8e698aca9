// What stands behind the parser's letters for values that have a Python type of their own. The
// file of each type brings its conversion; a letter whose type is not bound refuses every object.
#ifndef KIT_I_VALUELETTERS_H
#define KIT_I_VALUELETTERS_H

#include <Python.h>

namespace qlx {

enum class Conversion {
  kWrongType,  // the object is none of this letter's; no exception is pending
  kStored,     // the target holds the value
  kFailed,     // an exception is pending, such as that of a dead object
};

// The kind of value, with the type of the target. The vector and colour forms are what the data
// bridge converts; the words are their data types' identifiers.
enum class ValueLetter {
  kMatrix,      // Matrix
  kQuaternion,  // Quaternion
  kBaseTime,    // BaseTime
  kVector,      // Vector
  kVector4d,    // Vector4d
  kVector4d32,  // Vector4d32
  kColor,       // Color
  kColorA,      // ColorA
  kColorA32,    // ColorA32
  kContainer,   // BaseContainer*
  kGeData,      // GeData
  kThread,      // BaseThread*
  kGadget,      // the host's gadget, as void*
  kMemoryFile,  // Filename that reads from or writes to the memory file
  kUrl,         // Filename from what the data bridge takes for a URL
  kCount,
};

using LetterConverter = Conversion (*)(PyObject* object, void* target);

// A static object of this kind beside a type's functions puts its conversion into the table.
struct LetterEntry {
  LetterEntry(ValueLetter letter, LetterConverter converter);
};

// Converts by the table. Lock held.
Conversion ConvertLetter(ValueLetter letter, PyObject* object, void* target);

// The identifier of the data type of a vector or colour form, for messages.
const char* DataTypeIdentifier(ValueLetter letter);

}  // namespace qlx

#endif
