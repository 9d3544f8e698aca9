// What stands behind the parser's letters for values that have a Python type of their own.

#include "kit/i_valueletters.h"

namespace qlx {
namespace {

// Zero before any constructor runs, so that entries of other files find it ready.
LetterConverter g_converters[int(ValueLetter::kCount)];

}  // namespace

LetterEntry::LetterEntry(ValueLetter letter, LetterConverter converter) {
  g_converters[int(letter)] = converter;
}

Conversion ConvertLetter(ValueLetter letter, PyObject* object, void* target) {
  const LetterConverter converter = g_converters[int(letter)];
  return converter ? converter(object, target) : Conversion::kWrongType;
}

const char* DataTypeIdentifier(ValueLetter letter) {
  switch (letter) {
    case ValueLetter::kVector:
      return "net.tavor.parametrictype.vec<3,float64>";
    case ValueLetter::kVector4d:
      return "net.tavor.parametrictype.vec<4,float64>";
    case ValueLetter::kVector4d32:
      return "net.tavor.parametrictype.vec<4,float32>";
    case ValueLetter::kColor:
      return "net.tavor.parametrictype.col<3,float64>";
    case ValueLetter::kColorA:
      return "net.tavor.parametrictype.col<4,float64>[A]";
    case ValueLetter::kColorA32:
      return "net.tavor.parametrictype.col<4,float32>[A]";
    default:
      return "";
  }
}

}  // namespace qlx
