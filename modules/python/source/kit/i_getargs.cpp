// The argument parser of every bound function.

#include "kit/i_getargs.h"

#include <cassert>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>

#include "kit/i_errors.h"
#include "kit/i_getargs_letters.h"
#include "kit/i_valueletters.h"
#include "tables/t_values.h"

namespace qlx {
namespace {

constexpr size_t kMessageBytes = 512;
constexpr const char* kKeysNoStrings = "keywords must be strings";
constexpr int32_t kAllRequired = std::numeric_limits<int32_t>::max();

// The place of a failed item inside nested sequences, from outside in; a zero ends it. Levels that
// don't fit are left out.
using Levels = std::span<int32_t>;
constexpr size_t kLevels = 32;

void SetLevel(Levels levels, int32_t value) {
  if (!levels.empty()) levels[0] = value;
}

Levels Deeper(Levels levels) { return levels.empty() ? levels : levels.subspan(1); }

bool IsEndOfFormat(char c) { return c == '\0' || c == ':' || c == ';'; }

int32_t cleanreturn(int32_t result, PyObject* freelist) {
  if (!freelist) return result;
  assert(PyList_Check(freelist));
  Py_DECREF(freelist);
  return result;
}

// Raises unless a letter has raised already. Without memory for the text that is what the script is told.
template <class... Values>
void Raise(const Targets& targets, PyObject* exception, const char* format, Values... values) {
  if (targets.HasException()) return;
  PyObject* text = PyUnicode_FromFormat(format, values...);
  if (text) PyErr_SetObject(exception, text);
  Py_XDECREF(text);
}

// What follows the mark in the format, or null.
const char* Behind(const char* format, char mark) {
  const char* found = std::strchr(format, mark);
  return found ? found + 1 : nullptr;
}

// The failure of the argument at `index`, by the format's own message if it has one.
void RaiseRefused(const Targets& targets, const char* format, int32_t index, Levels levels,
                  const char* message) {
  const char* const function = Behind(format, ':');
  if (const char* custom = function ? nullptr : Behind(format, ';'))
    return Raise(targets, PyExc_TypeError, "%s", custom);
  constexpr int kLevelBytes = 220;
  char text[kMessageBytes];
  int used = function ? std::snprintf(text, sizeof text, "%.200s() ", function) : 0;
  used += std::snprintf(text + used, sizeof text - size_t(used), "argument %d", index + 1);
  for (size_t i = 0; i < levels.size() && levels[i] > 0 && used < kLevelBytes; ++i)
    used += std::snprintf(text + used, sizeof text - size_t(used), ", item %d", levels[i] - 1);
  std::snprintf(text + used, sizeof text - size_t(used), " %.256s", message);
  Raise(targets, PyExc_TypeError, "%s", text);
}

// How many items a nested sequence has: its letters and its sequences. Marks and digits don't count,
// also where they are letters of their own.
int32_t CountItems(const char* format) {
  int32_t count = 0;
  int32_t level = 0;
  for (; !IsEndOfFormat(*format); ++format) {
    if (*format == ')' && level-- == 0) break;
    if (level == 0 && (*format == '(' || std::isalpha(static_cast<unsigned char>(*format)))) ++count;
    if (*format == '(') ++level;
  }
  return count;
}

const char* convertsequence(PyObject* arg, const char** p_format, Targets* p_va, Levels levels, char* msgbuf,
                            PyObject** p_freelist);

inline const char* convertitem(PyObject* arg, const char** p_format, Targets* p_va, Levels levels, char* msgbuf,
                               PyObject** p_freelist, bool optional) {
  if (**p_format == '(') return convertsequence(arg, p_format, p_va, levels, msgbuf, p_freelist);
  const char* message = convertsimple(arg, p_format, p_va, optional, msgbuf, kMessageBytes, p_freelist);
  if (message) SetLevel(levels, 0);
  return message;
}

const char* convertsequence(PyObject* arg, const char** p_format, Targets* p_va, Levels levels, char* msgbuf,
                            PyObject** p_freelist) {
  const char* format = *p_format + 1;
  const int32_t count = CountItems(format);
  if (!PySequence_Check(arg) || PyUnicode_Check(arg)) {
    SetLevel(levels, 0);
    std::snprintf(msgbuf, kMessageBytes, "must be %d-item sequence, not %.50s", count, NameOfType(arg));
    return msgbuf;
  }
  const Py_ssize_t size = PySequence_Size(arg);
  if (size != count) {
    SetLevel(levels, 0);
    std::snprintf(msgbuf, kMessageBytes, "must be sequence of length %d, not %d", count, int(size));
    return msgbuf;
  }
  for (int32_t i = 0; i < count; ++i) {
    PyObject* item = PySequence_GetItem(arg, i);
    if (!item) {
      PyErr_Clear();
      SetLevel(levels, i + 1);
      SetLevel(Deeper(levels), 0);
      return "is not retrievable";
    }
    const char* message = convertitem(item, &format, p_va, Deeper(levels), msgbuf, p_freelist, false);
    Py_DECREF(item);
    if (!message) continue;
    SetLevel(levels, i + 1);
    return message;
  }
  // The closing parenthesis, or an item that the count left out.
  *p_format = IsEndOfFormat(*format) ? format : format + 1;
  return nullptr;
}

constexpr const char* kBadCharacter = "impossible<bad format char>";

// Characters that are stepped over with one target. Not all of them are letters, and '4' and 'N' lack.
constexpr std::string_view kOneTarget = "#$%6BCDGHIKLMQSTUVXbcdfhijklmnrvwz";

// Steps over one item and its targets. Null, or a message.
const char* skipitem(const char** p_format, Targets* p_va) {
  const char* format = *p_format;
  const char letter = *format++;
  int targets = 1;
  switch (letter) {
    case 'O':
      if (*format != '!' && *format != '&') break;
      ++format;
      targets = 2;
      break;
    case 'A':
    case 'P':
      targets = 0;
      if (*format != '!') break;
      ++format;
      targets = 2;
      break;
    case 'e':
      if (*format != 's' && *format != 't') return kBadCharacter;
      ++format;
      targets = 2;
      break;
    case '(':
      targets = 0;
      while (*format != ')') {
        if (IsEndOfFormat(*format)) return "Unmatched left paren in format string";
        if (const char* message = skipitem(&format, p_va)) return message;
      }
      ++format;
      break;
    case ')':
      return "Unmatched right paren in format string";
    default:
      if (kOneTarget.find(letter) == kOneTarget.npos) return kBadCharacter;
  }
  while (targets-- > 0) p_va->Next<void>();
  *p_format = format;
  return nullptr;
}

// The keywords of a call, read once: comparing a few texts is faster than making one of every name.
class Keywords {
 public:
  explicit Keywords(PyObject* dict) : dict_(dict) {}
  ~Keywords() {
    for (int i = 0; i < count_; ++i) {
      Py_DECREF(entries_[i].key);
      Py_DECREF(entries_[i].value);
    }
  }
  Keywords(const Keywords&) = delete;
  Keywords& operator=(const Keywords&) = delete;

  // The value, borrowed, or null, with an exception where the look-up itself fails.
  PyObject* Find(const char* name) {
    if (!read_) Read();
    if (!plain_) return LookUp(name);
    const Py_ssize_t size = Py_ssize_t(std::strlen(name));
    // Most calls name their arguments in the list's order.
    for (int i = 0; i < count_; ++i) {
      const Entry& entry = entries_[next_];
      if (++next_ == count_) next_ = 0;
      const char* const text = reinterpret_cast<const char*>(PyUnicode_1BYTE_DATA(entry.key));
      if (*text == *name && PyUnicode_GET_LENGTH(entry.key) == size &&
          std::memcmp(text, name, size_t(size)) == 0)
        return entry.value;
    }
    return nullptr;
  }

 private:
  static constexpr int kMost = 16;
  struct Entry {
    PyObject *key, *value;
  };

  // Keys of other kinds have their own idea of what they equal.
  void Read() {
    read_ = true;
    if (PyDict_Size(dict_) > kMost) return;
    PyObject *key, *value;
    for (Py_ssize_t position = 0; PyDict_Next(dict_, &position, &key, &value);) {
      if (!PyUnicode_CheckExact(key) || !PyUnicode_IS_COMPACT_ASCII(key)) return;
      Py_INCREF(key);
      Py_INCREF(value);
      entries_[count_++] = {key, value};
    }
    plain_ = true;
  }
  PyObject* LookUp(const char* name) {
    PyObject* text = PyUnicode_FromString(name);
    PyObject* value = text ? PyDict_GetItemWithError(dict_, text) : nullptr;
    Py_XDECREF(text);
    return value;
  }

  PyObject* const dict_;
  bool read_ = false;
  bool plain_ = false;
  int count_ = 0;
  int next_ = 0;
  Entry entries_[kMost];
};

// Raises for the first keyword that is no entry of the list; true where all are.
bool CheckNames(const Targets& targets, PyObject* keywords, const char* const* kwlist, int32_t len) {
  PyObject* key;
  for (Py_ssize_t position = 0; PyDict_Next(keywords, &position, &key, nullptr);) {
    if (!PyUnicode_Check(key)) {
      Raise(targets, PyExc_TypeError, kKeysNoStrings);
      return false;
    }
    const char* name = PyUnicode_AsUTF8(key);
    if (!name) {
      // A name without a UTF-8 form is no entry either.
      if (!PyErr_ExceptionMatches(PyExc_UnicodeEncodeError)) return false;
      PyErr_Clear();
      Raise(targets, PyExc_TypeError, "'%U' is an invalid keyword argument for this function", key);
      return false;
    }
    int32_t i = 0;
    while (i < len && std::strcmp(name, kwlist[i]) != 0) ++i;
    if (i < len) continue;
    Raise(targets, PyExc_TypeError, "'%s' is an invalid keyword argument for this function", name);
    return false;
  }
  return true;
}

bool IsVectorSuffix(char c) { return c == 'C' || c == '3' || c == '4' || c == '6'; }

// Stores the usual numbers and vectors as their letters do, without the way there. False leaves it to the
// letter.
bool TakeUsual(PyObject* arg, const char* format, Targets* p_va) {
  const char letter = *format;
  if (letter == 'V' && !IsVectorSuffix(format[1])) {
    Vector value;
    const Conversion conversion = ConvertLetter(ValueLetter::kVector, arg, &value);
    if (conversion == Conversion::kFailed) PyErr_Clear();  // the letter raises it again
    if (conversion != Conversion::kStored) return false;
    *p_va->Next<Vector>() = value;
    return true;
  }
  if (letter == 'i' && PyLong_CheckExact(arg)) {
    int overflow = 0;
    const long value = PyLong_AsLongAndOverflow(arg, &overflow);
    // The letter tells -1 from an error, and has the words for what does not fit.
    if (value == -1 || value != int32_t(value)) return false;
    *p_va->Next<int32_t>() = int32_t(value);
    return true;
  }
  if ((letter == 'd' || letter == 'f' || letter == 'r') && PyFloat_CheckExact(arg)) {
    const double value = PyFloat_AS_DOUBLE(arg);
    if (value == -1) return false;
    *p_va->Next<double>() = value;
    return true;
  }
  return false;
}

int32_t vgetargskeywords(PyObject* args, PyObject* keywords, const char* format, const char* const* kwlist,
                         Targets* p_va, int /*flags*/) {
  assert(args != nullptr && PyTuple_Check(args));
  assert(keywords == nullptr || PyDict_Check(keywords));
  assert(format != nullptr);
  assert(kwlist != nullptr);
  assert(p_va != nullptr);
  const char* const whole = format;
  char msgbuf[kMessageBytes];
  int32_t levels[kLevels];
  PyObject* freelist = nullptr;

  int32_t len = 0;
  while (kwlist[len]) ++len;
  const int32_t nargs = int32_t(PyTuple_GET_SIZE(args));
  int32_t nkeywords = keywords ? int32_t(PyDict_Size(keywords)) : 0;
  if (len < nargs + nkeywords) {
    const char* const function = Behind(whole, ':');
    Raise(*p_va, PyExc_TypeError, "%s%s takes at most %d argument%s (%d given)",
          function ? function : "function", function ? "()" : "", len, len == 1 ? "" : "s", nargs + nkeywords);
    return cleanreturn(0, freelist);
  }

  int32_t min = kAllRequired;
  Keywords named(keywords);
  for (int32_t i = 0; i < len; ++i) {
    const char* const keyword = kwlist[i];
    if (*format == '|') {
      min = i;
      ++format;
    }
    if (IsEndOfFormat(*format)) {
      Raise(*p_va, PyExc_RuntimeError, "More keyword list entries (%d) than format specifiers (%d)", len, i);
      return cleanreturn(0, freelist);
    }
    PyObject* value = nullptr;
    if (nkeywords != 0) {
      value = named.Find(keyword);
      if (value) {
        --nkeywords;
        if (i < nargs) {
          Raise(*p_va, PyExc_TypeError, "Argument given by name ('%s') and position (%d)", keyword, i + 1);
          return cleanreturn(0, freelist);
        }
      } else if (p_va->HasException()) {
        return cleanreturn(0, freelist);
      }
    }
    if (!value && i < nargs) value = PyTuple_GET_ITEM(args, i);
    if (value) {
      if (TakeUsual(value, format, p_va)) {
        ++format;
        continue;
      }
      const char* message = convertitem(value, &format, p_va, levels, msgbuf, &freelist, min != kAllRequired);
      if (!message) continue;
      RaiseRefused(*p_va, whole, i, levels, message);
      return cleanreturn(0, freelist);
    }
    if (i < min) {
      Raise(*p_va, PyExc_TypeError, "Required argument '%s' (pos %d) not found", keyword, i + 1);
      return cleanreturn(0, freelist);
    }
    // Nothing is left to unpack; the targets of what isn't given keep their defaults.
    if (nkeywords == 0) return cleanreturn(1, freelist);
    if (const char* message = skipitem(&format, p_va)) {
      Raise(*p_va, PyExc_RuntimeError, "%s: '%s'", message, format);
      return cleanreturn(0, freelist);
    }
  }
  if (!IsEndOfFormat(*format) && *format != '|') {
    Raise(*p_va, PyExc_RuntimeError,
          "more argument specifiers than keyword list entries (remaining format:'%s')", format);
    return cleanreturn(0, freelist);
  }
  return cleanreturn(nkeywords == 0 || CheckNames(*p_va, keywords, kwlist, len), freelist);
}

}  // namespace

namespace {

bool IsName(PyObject* key, const char* name) {
  if (!PyUnicode_IS_COMPACT_ASCII(key)) return PyUnicode_CompareWithASCIIString(key, name) == 0;
  const size_t size = std::strlen(name);
  return size_t(PyUnicode_GET_LENGTH(key)) == size && std::memcmp(PyUnicode_1BYTE_DATA(key), name, size) == 0;
}

// The same keywords with plain texts as keys. What is no text stays something that is none, so that the
// parser refuses it in its turn.
PyObject* CopyKeywords(PyObject* keywords) {
  PyObject* copy = PyDict_New();
  PyObject *key, *value;
  for (Py_ssize_t position = 0; copy && PyDict_Next(keywords, &position, &key, &value);) {
    PyObject* name = PyUnicode_Check(key) ? PyUnicode_FromObject(key) : PyLong_FromSsize_t(position);
    if (!name || PyDict_SetItem(copy, name, value) < 0) Py_CLEAR(copy);
    Py_XDECREF(name);
  }
  return copy;
}

}  // namespace

bool HoldKeywords(PyObject*& keywords, PyObject*& copy, const char* const* kwlist, PyObject** given) {
  bool plain = true;
  PyObject *key, *value;
  for (Py_ssize_t position = 0; PyDict_Next(keywords, &position, &key, nullptr);)
    plain &= PyUnicode_CheckExact(key);
  if (!plain) {
    keywords = copy = CopyKeywords(keywords);
    if (!copy) return false;
  }
  for (Py_ssize_t position = 0; PyDict_Next(keywords, &position, &key, &value);) {
    if (!PyUnicode_Check(key)) continue;
    int32_t i = 0;
    while (kwlist[i] && !IsName(key, kwlist[i])) ++i;
    if (!kwlist[i]) continue;
    Py_INCREF(value);
    given[i] = value;
  }
  return true;
}

int32_t VaParseTupleAndKeywords(PyObject* args, PyObject* keywords, const char* format,
                                const char* const* kwlist, va_list va) {
  if (!args || !PyTuple_Check(args) || (keywords && !PyDict_Check(keywords)) || !format || !kwlist) {
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return 0;
  }
  Targets targets(va);
  return vgetargskeywords(args, keywords, format, kwlist, &targets, 0);
}

int32_t ParseTupleAndKeywords(PyObject* args, PyObject* keywords, const char* format, const char* const* kwlist,
                              ...) {
  va_list va;
  va_start(va, kwlist);
  const int32_t result = VaParseTupleAndKeywords(args, keywords, format, kwlist, va);
  va_end(va);
  return result;
}

}  // namespace qlx
