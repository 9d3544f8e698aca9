// The letters of the argument parser.

#include "kit/i_getargs_letters.h"

#include <cassert>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "kelvar/filename.h"
#include "kelvar/string.h"
#include "kit/i_conversion.h"
#include "kit/i_cpython.h"
#include "kit/i_errors.h"
#include "kit/i_getargs.h"
#include "kit/i_valueletters.h"
#include "kit/i_wrapper.h"
#include "tables/t_values.h"

namespace qlx {
namespace {

// The message where an exception is pending.
constexpr const char* kRaised = "";

// What every letter works on. `format` stands behind the letter.
struct Item {
  PyObject* arg;
  const char* format;
  Targets& targets;
  char* msgbuf;
  size_t bufsize;

  bool Consume(char c) {
    if (*format != c) return false;
    ++format;
    return true;
  }
  const char* Refuse(const char* expected) const { return converterr(expected, arg, msgbuf, bufsize); }
  const char* Refuse(const char* expected, const char* expected2) const {
    return converterr_twoargs(expected, expected2, arg, msgbuf, bufsize);
  }
};

// The interpreter's own conversion, after a warning for floats.
template <class T>
bool ToNumber(const Item& item, T (*convert)(PyObject*), T& value) {
  if (PyLong_Check(item.arg)) {
    value = convert(item.arg);
  } else {
    if (PyFloat_Check(item.arg) &&
        PyErr_WarnEx(PyExc_DeprecationWarning, "integer argument expected, got float", 1) != 0)
      return false;
    PyObject* integer = ToInteger(item.arg);
    if (!integer) return false;
    value = convert(integer);
    Py_DECREF(integer);
  }
  return value != T(-1) || !item.targets.HasException();
}

// All numbers that the conversion yields, cut to the target's width.
template <class Target, class T>
const char* ConvertInteger(const Item& item, T (*convert)(PyObject*), const char* word) {
  T value;
  if (!ToNumber(item, convert, value)) return item.Refuse(word);
  *item.targets.Next<Target>() = Target(value);
  return nullptr;
}

template <class Target>
const char* ConvertRanged(const Item& item, const char* kind, const char* word) {
  long value;
  if (!ToNumber(item, PyLong_AsLong, value)) return item.Refuse(word);
  if (value < std::numeric_limits<Target>::min() || value > std::numeric_limits<Target>::max()) {
    RaiseFormatted(PyExc_OverflowError, "%s is %s", kind,
                   value < 0 ? "less than minimum" : "greater than maximum");
    return item.Refuse(word);
  }
  *item.targets.Next<Target>() = Target(value);
  return nullptr;
}

const char* ConvertReal(const Item& item, const char* word) {
  const double value = PyFloat_CheckExact(item.arg) ? PyFloat_AS_DOUBLE(item.arg) : PyFloat_AsDouble(item.arg);
  if (value == -1 && item.targets.HasException()) return item.Refuse(word);
  *item.targets.Next<double>() = value;
  return nullptr;
}

const char* ConvertChar(const Item& item) {
  if (!PyUnicode_Check(item.arg) || PyUnicode_GetLength(item.arg) != 1) return item.Refuse("Char");
  const char* utf8 = PyUnicode_AsUTF8(item.arg);
  if (!utf8) return kRaised;
  *item.targets.Next<char>() = *utf8;
  return nullptr;
}

// A value with a Python type of its own.
const char* ConvertValue(const Item& item, ValueLetter letter, const char* expected, void* target) {
  const Conversion conversion = ConvertLetter(letter, item.arg, target);
  if (conversion == Conversion::kStored) return nullptr;
  return conversion == Conversion::kFailed ? kRaised : item.Refuse(expected);
}

const char* ConvertMatrix32(const Item& item) {
  Matrix matrix;
  if (const char* message = ConvertValue(item, ValueLetter::kMatrix, "qlx.Matrix", &matrix)) return message;
  Matrix32& target = *item.targets.Next<Matrix32>();
  const auto narrow = [](const Vector& from, float* to) {
    to[0] = float(from.x);
    to[1] = float(from.y);
    to[2] = float(from.z);
  };
  narrow(matrix.off, target.off);
  narrow(matrix.v1, target.v1);
  narrow(matrix.v2, target.v2);
  narrow(matrix.v3, target.v3);
  return nullptr;
}

const char* ConvertContainer(Item& item) {
  const bool orNone = item.Consume('N');
  void** target = item.targets.Next<void*>();
  if (orNone && item.arg == Py_None) {
    *target = nullptr;
    return nullptr;
  }
  const Conversion conversion = ConvertLetter(ValueLetter::kContainer, item.arg, target);
  if (conversion == Conversion::kStored) return nullptr;
  if (conversion == Conversion::kFailed) return kRaised;
  return orNone ? item.Refuse("qlx.BaseContainer", "None") : item.Refuse("qlx.BaseContainer");
}

const char* ConvertThread(const Item& item) {
  BaseThread** target = item.targets.Next<BaseThread*>();
  if (item.arg == Py_None) {
    *target = nullptr;
    return nullptr;
  }
  const Conversion conversion = ConvertLetter(ValueLetter::kThread, item.arg, target);
  if (conversion == Conversion::kStored) return nullptr;
  return conversion == Conversion::kFailed ? kRaised : item.Refuse("qlx.threading.BaseThread", "None");
}

// "V", then 'C' for colours, '3' or '4' for four components, and the width; three components are
// always of 64 bits.
const char* ConvertVector(Item& item) {
  const bool color = item.Consume('C');
  const bool four = item.Consume('4') || item.Consume('3');
  const bool narrow = !item.Consume('6') && four && item.Consume('3');
  static constexpr ValueLetter vectors[] = {ValueLetter::kVector, ValueLetter::kVector4d,
                                            ValueLetter::kVector4d32};
  static constexpr ValueLetter colors[] = {ValueLetter::kColor, ValueLetter::kColorA, ValueLetter::kColorA32};
  const ValueLetter letter = (color ? colors : vectors)[int(four) + int(narrow)];
  const Conversion conversion = ConvertLetter(letter, item.arg, item.targets.Next<void>());
  if (conversion == Conversion::kStored) return nullptr;
  return conversion == Conversion::kFailed ? kRaised : item.Refuse(DataTypeIdentifier(letter));
}

// An id that is no 32 bit number and a dead gadget count as converted; their exceptions wait.
const char* ConvertGadget(const Item& item) {
  GadgetArg& target = *item.targets.Next<GadgetArg>();
  if (PyLong_Check(item.arg)) {
    int overflow = 0;
    const long id = PyLong_AsLongAndOverflow(item.arg, &overflow);
    if (overflow == 0 && id <= std::numeric_limits<int32_t>::max()) {
      target = {int32_t(id), nullptr};
      return nullptr;
    }
    RaiseIntTooLarge();
    item.targets.KeepException();
    target = {-1, nullptr};
    return nullptr;
  }
  void* gadget = nullptr;
  const Conversion conversion = ConvertLetter(ValueLetter::kGadget, item.arg, &gadget);
  if (conversion == Conversion::kWrongType) return item.Refuse("qlx.gui.QLXGadget", "int");
  if (conversion == Conversion::kFailed) item.targets.KeepException();
  target = {-1, conversion == Conversion::kStored ? gadget : nullptr};
  return nullptr;
}

enum class Text { kMade, kNoUtf8, kNoMemory };

Text MakeText(PyObject* object, String& text) {
  Py_ssize_t size = 0;
  const char* utf8 = PyUnicode_AsUTF8AndSize(object, &size);
  if (!utf8) return Text::kNoUtf8;
  text = String::FromUtf8(utf8, size);
  if (size == 0 || text.Word()->word) return Text::kMade;
  PyErr_NoMemory();
  return Text::kNoMemory;
}

// A text without a UTF-8 form counts as converted, but its letter stays the next one. So does the
// target: letters and targets would not match otherwise.
const char* Stay(Item& item) {
  --item.format;
  item.targets.KeepException();
  return nullptr;
}

const char* ConvertString(Item& item) {
  PyObject* made = PyUnicode_Check(item.arg) ? nullptr : PyObject_Str(item.arg);
  if (!made && !PyUnicode_Check(item.arg)) return item.Refuse("object");
  String text;
  const Text result = MakeText(made ? made : item.arg, text);
  Py_XDECREF(made);
  if (result == Text::kNoUtf8) return Stay(item);
  if (result == Text::kNoMemory) return kRaised;
  *item.targets.Next<String>() = std::move(text);
  return nullptr;
}

const char* ConvertFilename(Item& item) {
  if (PyUnicode_Check(item.arg)) {
    String path;
    const Text result = MakeText(item.arg, path);
    if (result == Text::kNoUtf8) return Stay(item);
    if (result == Text::kNoMemory) return kRaised;
    Filename name;
    if (!FilenameFromText(path, name)) return kRaised;
    if (path.Word()->word && !name.Word()->word) return PyErr_NoMemory(), kRaised;
    *item.targets.Next<Filename>() = std::move(name);
    return nullptr;
  }
  Filename* const target = item.targets.Next<Filename>();
  for (const ValueLetter letter : {ValueLetter::kMemoryFile, ValueLetter::kUrl}) {
    const Conversion conversion = ConvertLetter(letter, item.arg, target);
    if (conversion == Conversion::kStored) return nullptr;
    if (conversion == Conversion::kFailed) return kRaised;
  }
  return item.Refuse("str", "qlx.storage.MemoryFileStruct");
}

// Bytes of another size have a message without words.
const char* ConvertUuid(const Item& item) {
  Uuid& target = *item.targets.Next<Uuid>();
  PyObject* bytes = PyObject_GetAttrString(item.arg, "bytes");
  char* data = nullptr;
  Py_ssize_t size = 0;
  const bool whole =
      bytes && PyBytes_AsStringAndSize(bytes, &data, &size) == 0 && size == Py_ssize_t(sizeof target.bytes);
  if (whole) std::memcpy(target.bytes, data, sizeof target.bytes);
  Py_XDECREF(bytes);
  return whole ? nullptr : kRaised;
}

template <class Host>
const char* Resolve(PyObject* arg, bool (*resolve)(AtomWrapper*, Host*&), Host*& target) {
  Host* host = nullptr;
  if (!resolve(reinterpret_cast<AtomWrapper*>(arg), host)) return kRaised;
  target = host;
  return nullptr;
}

// "A!", "O!" and "P!", with 'N' where None is welcome. None leaves the target as it is.
const char* ConvertChecked(Item& item, char letter, bool optional) {
  PyTypeObject* const type = item.targets.Next<PyTypeObject>();
  const bool orNone = item.Consume('N');
  if (PyObject_TypeCheck(item.arg, type)) {
    if (letter == 'A') return Resolve(item.arg, ResolveAtom, *item.targets.Next<QLXAtom*>());
    if (letter == 'P') return Resolve(item.arg, ResolveBitmap, *item.targets.Next<BaseBitmap*>());
    *item.targets.Next<PyObject*>() = item.arg;
    return nullptr;
  }
  item.targets.Next<void*>();
  if ((optional || orNone) && item.arg == Py_None) return nullptr;
  return orNone && !optional ? item.Refuse(type->tp_name, "None") : item.Refuse(type->tp_name);
}

const char* Convert(Item& item, char letter, bool optional) {
  switch (letter) {
    case '#':
      return ConvertGadget(item);
    case '$':
      return ConvertString(item);
    case '%':
      return ConvertFilename(item);
    case '4':
      return ConvertMatrix32(item);
    case '6':
    case 'M':
      return ConvertValue(item, ValueLetter::kMatrix, "qlx.Matrix", item.targets.Next<Matrix>());
    case 'A':
    case 'P':
      return item.Consume('!') ? ConvertChecked(item, letter, optional) : nullptr;
    case 'B':
      return ConvertInteger<int8_t>(item, PyLong_AsUnsignedLongMask, "integer<Char>");
    case 'C':
      return ConvertContainer(item);
    case 'G':
      return ConvertValue(item, ValueLetter::kGeData, "a valid type", item.targets.Next<void>());
    case 'I':
      return ConvertInteger<uint32_t>(item, PyLong_AsUnsignedLongMask, "integer<UInt32>");
    case 'L':
      return ConvertInteger<uint64_t>(item, PyLong_AsUnsignedLongLong, "integer<UInt64>");
    case 'O':
      if (item.Consume('!')) return ConvertChecked(item, letter, optional);
      *item.targets.Next<PyObject*>() = item.arg;
      return nullptr;
    case 'Q':
      return ConvertValue(item, ValueLetter::kQuaternion, "qlx.Quaternion", item.targets.Next<Quaternion>());
    case 'T':
      return ConvertValue(item, ValueLetter::kBaseTime, "qlx.BaseTime", item.targets.Next<BaseTime>());
    case 'U':
      return ConvertUuid(item);
    case 'V':
      return ConvertVector(item);
    case 'X':
      return ConvertThread(item);
    case 'b':
      return ConvertRanged<uint8_t>(item, "unsigned byte integer", "integer<UChar>");
    case 'c':
      return ConvertChar(item);
    case 'd':
      return ConvertReal(item, "float<Float64>");
    case 'f':
    case 'r':
      return ConvertReal(item, "float<Float>");
    case 'h':
      return ConvertRanged<int16_t>(item, "signed short integer", "integer<Int16>");
    case 'i':
      return ConvertRanged<int32_t>(item, "signed integer", "integer<Int32>");
    case 'j':
      return ConvertRanged<uint16_t>(item, "unsigned short integer", "integer<UInt16>");
    case 'l':
      return ConvertInteger<int64_t>(item, PyLong_AsLongLong, "integer<Int64>");
    case 'v':
      return ConvertInteger<uint64_t>(item, PyLong_AsUnsignedLongLongMask, "integer<UInt>");
    default:
      return item.Refuse("impossible<bad format char>");
  }
}

}  // namespace

void Targets::GiveException() {
  // The exception of a letter behind the kept one stands.
  if (!PyErr_Occurred()) {
    PyErr_Restore(type_, value_, traceback_);
    return;
  }
  Py_XDECREF(type_);
  Py_XDECREF(value_);
  Py_XDECREF(traceback_);
}

void Targets::KeepException() {
  Py_XDECREF(type_);
  Py_XDECREF(value_);
  Py_XDECREF(traceback_);
  PyErr_Fetch(&type_, &value_, &traceback_);
}

const char* convertsimple(PyObject* arg, const char** p_format, Targets* p_va, bool optional, char* msgbuf,
                          size_t bufsize, PyObject**) {
  Item item{arg, *p_format + 1, *p_va, msgbuf, bufsize};
  const char* message = Convert(item, **p_format, optional);
  if (!message) *p_format = item.format;
  return message;
}

const char* converterr(const char* expected, PyObject* arg, char* msgbuf, size_t bufsize) {
  assert(expected != nullptr);
  assert(arg != nullptr);
  std::snprintf(msgbuf, bufsize, "must be %.50s, not %.50s", expected, NameOfType(arg));
  return msgbuf;
}

const char* converterr_twoargs(const char* expected, const char* expected2, PyObject* arg, char* msgbuf,
                               size_t bufsize) {
  assert(expected != nullptr);
  assert(expected2 != nullptr);
  assert(arg != nullptr);
  std::snprintf(msgbuf, bufsize, "must be %.50s or %.50s, not %.50s", expected, expected2, NameOfType(arg));
  return msgbuf;
}

}  // namespace qlx
