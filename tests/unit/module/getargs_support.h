// What the tests and the fuzzer of the argument parser share: a host's texts, paths and links, an
// object for every letter, and targets that tell what they received.
#ifndef TESTS_UNIT_MODULE_GETARGS_SUPPORT_H
#define TESTS_UNIT_MODULE_GETARGS_SUPPORT_H

#include <Python.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "boundary/tables.h"
#include "kelvar/filename.h"
#include "kelvar/string.h"
#include "kelvar/text.h"
#include "kit/i_errors.h"
#include "kit/i_getargs.h"
#include "kit/i_valueletters.h"
#include "kit/i_wrapper.h"
#include "tables/t_values.h"

namespace getargs {

// Texts and paths that are counted while they live, and links whose generation 0 is a dead object.
struct Host {
  inline static int alive = 0;

  static void* Make(const std::string& text) {
    ++alive;
    return new std::string(text);
  }
  static const std::string& At(const void* word) {
    static const std::string empty;
    return word ? *static_cast<const std::string*>(word) : empty;
  }
  static void End(void*& word) {
    alive -= word != nullptr;
    delete static_cast<std::string*>(word);
    word = nullptr;
  }

  static void Install() {
    tables::string.FromUtf8 = [](const char* text, int64_t size) {
      return HostString{size > 0 ? Make({text, size_t(size)}) : nullptr};
    };
    tables::string.Copy = [](const HostString* self) { return HostString{Make(At(self->word))}; };
    tables::string.Destroy = [](HostString* self) { End(self->word); };
    tables::string.GetUtf8 = [](const HostString* self, int64_t* size) {
      if (size) *size = int64_t(At(self->word).size());
      return At(self->word).c_str();
    };
    tables::filename.FromString = [](const HostString* text) {
      return HostFilename{At(text->word).empty() ? nullptr : Make("path " + At(text->word))};
    };
    tables::filename.Destroy = [](HostFilename* self) { End(self->word); };
    tables::link.GetLink = [](HostLink link) { return link.generation ? link.slot : nullptr; };
  }
};

// The class of the objects with a type of their own: Value(kind, number), which may be `dead`.
constexpr const char* kClasses = R"(
class Value:
    dead = False
    def __init__(self, kind, number, dead=False):
        self.kind, self.number, self.dead = kind, number, dead
    def __repr__(self):
        return 'Value(%r, %r)' % (self.kind, self.number)
)";

constexpr const char* kKinds[] = {"Matrix",     "Quaternion", "BaseTime", "Vector",     "Vector4d",
                                  "Vector4d32", "Color",      "ColorA",   "ColorA32",   "Container",
                                  "GeData",     "Thread",     "Gadget",   "MemoryFile", "Url"};
static_assert(std::size(kKinds) == size_t(qlx::ValueLetter::kCount));

// The number of a Value of that kind. False for other objects; no exception is pending.
inline bool IsValue(PyObject* object, const std::string& kind, int64_t& number, bool& dead) {
  if (std::strcmp(Py_TYPE(object)->tp_name, "Value") != 0) return false;
  PyObject* own = PyObject_GetAttrString(object, "kind");
  PyObject* content = PyObject_GetAttrString(object, "number");
  PyObject* gone = PyObject_GetAttrString(object, "dead");
  const bool same = own && content && gone && PyUnicode_Check(own) && kind == PyUnicode_AsUTF8(own);
  if (same) {
    number = PyLong_AsLongLong(content);
    dead = gone == Py_True;
  }
  Py_XDECREF(own);
  Py_XDECREF(content);
  Py_XDECREF(gone);
  PyErr_Clear();
  return same;
}

template <qlx::ValueLetter kLetter, class Target, class Number = Target>
qlx::Conversion Convert(PyObject* object, void* target) {
  int64_t number = 0;
  bool dead = false;
  if (!IsValue(object, kKinds[int(kLetter)], number, dead)) return qlx::Conversion::kWrongType;
  if (dead) {
    qlx::ReportNotAlive(Py_TYPE(object));
    return qlx::Conversion::kFailed;
  }
  if constexpr (std::is_same_v<Target, Filename>) {
    const std::string text = kKinds[int(kLetter)] + (" " + std::to_string(number));
    *static_cast<Filename*>(target) = Filename::FromString(kelvar::Text(text));
  } else {
    for (size_t i = 0; i < sizeof(Target) / sizeof(Number); ++i)
      static_cast<Number*>(target)[i] = Number(number + int64_t(i));
  }
  return qlx::Conversion::kStored;
}

inline void InstallLetters() {
  using enum qlx::ValueLetter;
  qlx::LetterEntry(kMatrix, Convert<kMatrix, Matrix, double>);
  qlx::LetterEntry(kQuaternion, Convert<kQuaternion, Quaternion, double>);
  qlx::LetterEntry(kBaseTime, Convert<kBaseTime, BaseTime, double>);
  qlx::LetterEntry(kVector, Convert<kVector, Vector, double>);
  qlx::LetterEntry(kVector4d, Convert<kVector4d, Vector4d, double>);
  qlx::LetterEntry(kVector4d32, Convert<kVector4d32, Vector4d32, float>);
  qlx::LetterEntry(kColor, Convert<kColor, Color, double>);
  qlx::LetterEntry(kColorA, Convert<kColorA, ColorA, double>);
  qlx::LetterEntry(kColorA32, Convert<kColorA32, ColorA32, float>);
  qlx::LetterEntry(kContainer, Convert<kContainer, int64_t>);
  qlx::LetterEntry(kGeData, Convert<kGeData, int64_t>);
  qlx::LetterEntry(kThread, Convert<kThread, int64_t>);
  qlx::LetterEntry(kGadget, Convert<kGadget, int64_t>);
  qlx::LetterEntry(kMemoryFile, Convert<kMemoryFile, Filename>);
  qlx::LetterEntry(kUrl, Convert<kUrl, Filename>);
}

// A type of host objects, and an instance whose object is the number; 0 is a dead one.
inline PyTypeObject* MakeType(const char* name) {
  PyType_Slot slots[] = {{0, nullptr}};
  PyType_Spec spec = {name, int(sizeof(qlx::AtomWrapper)), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
  return reinterpret_cast<PyTypeObject*>(PyType_FromSpec(&spec));
}

inline PyObject* MakeAtom(PyTypeObject* type, uint64_t number) {
  PyObject* atom = PyType_GenericAlloc(type, 0);
  reinterpret_cast<qlx::AtomWrapper*>(atom)->link = {reinterpret_cast<void*>(number), number};
  return atom;
}

// The forms of a letter that differ in their target.
inline size_t FormSize(const char* item) {
  size_t size = 1;
  if (*item == 'A' || *item == 'O' || *item == 'P') {
    size += item[1] == '!' || (*item == 'O' && item[1] == '&');
  } else if (*item == 'V') {
    size += item[size] == 'C';
    const bool four = item[size] == '4' || item[size] == '3';
    size += four;
    size += item[size] == '6' || (four && item[size] == '3');
  } else if (*item == 'e' && item[1]) {
    size = 2;
  }
  return size;
}

inline bool IsEnd(char c) { return c == '\0' || c == ':' || c == ';'; }

// A place for the value of any letter.
class Target {
 public:
  explicit Target(std::string form, unsigned char fill = 0xa5) : form_(std::move(form)) {
    fill_ = form_ == "$" || form_ == "%" ? 0 : fill;
    std::memset(bytes_, fill_, sizeof bytes_);
  }
  Target(Target&& other) noexcept : form_(other.form_), fill_(other.fill_) {
    std::memcpy(bytes_, other.bytes_, sizeof bytes_);
    std::memset(other.bytes_, other.fill_ = 0, sizeof bytes_);
    other.form_.clear();
  }
  ~Target() { Clear(form_); }

  void* Data() { return bytes_; }
  const std::string& Form() const { return form_; }

  void Clear(const std::string& form) {
    if (form == "$") *static_cast<String*>(Data()) = {};
    if (form == "%") *static_cast<Filename*>(Data()) = {};
  }

  // What the target holds by the form of a letter; "-" where nothing was written.
  std::string Describe(const std::string& form) const {
    bool same = true;
    for (const unsigned char byte : bytes_) same = same && byte == fill_;
    if (same) return "-";
    switch (form[0]) {
      case '#':
        return std::to_string(At<qlx::GadgetArg>().id) + "/" +
               std::to_string(intptr_t(At<qlx::GadgetArg>().gadget));
      case '$':
        return "'" + std::string(kelvar::View(At<String>())) + "'";
      case '%':
        return "'" + Host::At(At<Filename>().Word()->word) + "'";
      case '4':
        return Numbers<float>(12);
      case '6':
      case 'M':
        return Numbers<double>(12);
      case 'Q':
        return Numbers<double>(4);
      case 'T':
        return Numbers<double>(2);
      case 'V': {
        const bool four = form.find_first_of("34") != form.npos;
        if (form == "V33" || form == "V43" || form == "VC33" || form == "VC43") return Numbers<float>(4);
        return Numbers<double>(four ? 4 : 3);
      }
      case 'O': {
        PyObject* text = PyObject_Repr(At<PyObject*>());
        const char* utf8 = text ? PyUnicode_AsUTF8(text) : nullptr;
        const std::string result = utf8 ? utf8 : "(no text)";
        if (!utf8) PyErr_Clear();
        Py_XDECREF(text);
        return result;
      }
      case 'U': {
        std::string text;
        for (const uint8_t byte : At<Uuid>().bytes)
          text += "0123456789abcdef"[byte >> 4], text += "0123456789abcdef"[byte & 15];
        return text;
      }
      case 'B':
        return std::to_string(At<int8_t>());
      case 'b':
        return std::to_string(At<uint8_t>());
      case 'c':
        return std::to_string(static_cast<unsigned char>(At<char>()));
      case 'd':
      case 'f':
      case 'r':
        return Numbers<double>(1);
      case 'h':
        return std::to_string(At<int16_t>());
      case 'i':
        return std::to_string(At<int32_t>());
      case 'j':
        return std::to_string(At<uint16_t>());
      case 'I':
        return std::to_string(At<uint32_t>());
      case 'L':
      case 'v':
        return std::to_string(At<uint64_t>());
      default:
        return std::to_string(At<int64_t>());
    }
  }

 private:
  template <class T>
  const T& At() const {
    return *reinterpret_cast<const T*>(bytes_);
  }
  template <class T>
  std::string Numbers(size_t count) const {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
      char number[40];
      std::snprintf(number, sizeof number, "%s%.17g", i ? " " : "",
                    double(reinterpret_cast<const T*>(bytes_)[i]));
      text += number;
    }
    return text;
  }

  std::string form_;
  unsigned char fill_;
  alignas(16) unsigned char bytes_[96];
};

// The types that a format's "A!", "O!" and "P!" ask for.
struct Types {
  PyTypeObject *atom, *object, *bitmap;
};

// The targets of a format, and the call that fills them.
class TargetsOf {
 public:
  TargetsOf(const std::string& format, const Types& types, unsigned char fill = 0xa5) {
    for (const char* item = format.c_str(); !IsEnd(*item);) {
      const std::string form(item, FormSize(item));
      item += form.size();
      if (form == "A" || form == "P" || std::strchr("()|N!&", form[0])) continue;
      if (form.size() == 2 && form[1] == '!')
        pointers_.push_back(form[0] == 'A' ? types.atom : form[0] == 'P' ? types.bitmap : types.object);
      // Two targets, of which no letter takes the second.
      if (form[0] == 'e' || form == "O&") Add("O", fill);
      Add(form, fill);
    }
    for (size_t i = 0; i < targets_.size(); ++i) pointers_[places_[i]] = targets_[i].Data();
  }

  static constexpr size_t kMost = 24;

  int32_t Parse(PyObject* args, PyObject* keywords, const std::string& format,
                const std::vector<std::string>& names) {
    std::vector<const char*> list;
    for (const std::string& name : names) list.push_back(name.c_str());
    list.push_back(nullptr);
    std::array<void*, kMost> p{};
    if (pointers_.size() > kMost) std::abort();
    std::copy(pointers_.begin(), pointers_.end(), p.begin());
    return qlx::ParseTupleAndKeywords(args, keywords, format.c_str(), list.data(), p[0], p[1], p[2], p[3], p[4],
                                      p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12], p[13], p[14], p[15],
                                      p[16], p[17], p[18], p[19], p[20], p[21], p[22], p[23]);
  }

  // Everything that was written, in the format's order.
  std::string Describe() const {
    std::string text;
    for (const Target& target : targets_) text += (text.empty() ? "" : ", ") + target.Describe(target.Form());
    return text;
  }

  std::vector<Target>& All() { return targets_; }

 private:
  void Add(const std::string& form, unsigned char fill) {
    targets_.emplace_back(form, fill);
    pointers_.push_back(nullptr);
    places_.push_back(pointers_.size() - 1);
  }

  std::vector<Target> targets_;
  std::vector<void*> pointers_;
  std::vector<size_t> places_;
};

// The pending exception as "Type: text", taken away.
inline std::string TakeError() {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  if (!type) return "";
  PyErr_NormalizeException(&type, &value, &traceback);
  PyObject* words = value ? PyObject_Str(value) : nullptr;
  PyObject* bytes = words ? PyUnicode_AsEncodedString(words, "utf-8", "surrogatepass") : nullptr;
  std::string text = reinterpret_cast<PyTypeObject*>(type)->tp_name;
  text += ": " + (bytes ? std::string(PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes))) : "(no text)");
  PyErr_Clear();
  Py_XDECREF(bytes);
  Py_XDECREF(words);
  Py_XDECREF(type);
  Py_XDECREF(value);
  Py_XDECREF(traceback);
  return text;
}

}  // namespace getargs

#endif
