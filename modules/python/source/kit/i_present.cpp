// How host values are presented to Python.

#include "kit/i_present.h"

#include <cstdint>
#include <cstring>

#include "kelvar/text.h"

namespace qlx {
namespace {

bool IsAscii(std::string_view text) {
  uint64_t bits = 0;
  size_t at = 0;
  for (uint64_t word; at + sizeof word <= text.size(); at += sizeof word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    bits |= word;
  }
  for (; at < text.size(); ++at) bits |= uint8_t(text[at]);
  return !(bits & 0x8080808080808080);
}

}  // namespace

PyObject* StringToPython(const String& text) {
  const std::string_view utf8 = kelvar::View(text);
  // Nearly all names; the interpreter has texts of one character already.
  if (utf8.size() > 1 && IsAscii(utf8)) {
    PyObject* result = PyUnicode_New(Py_ssize_t(utf8.size()), 127);
    if (result) std::memcpy(PyUnicode_1BYTE_DATA(result), utf8.data(), utf8.size());
    return result;
  }
  return PyUnicode_DecodeUTF8(utf8.data(), Py_ssize_t(utf8.size()), "replace");
}

PyObject* FilenameToPython(const Filename& name) {
  const String path = name.GetString();
  const std::string_view bytes = kelvar::View(path);
  return PyUnicode_DecodeFSDefaultAndSize(bytes.data(), Py_ssize_t(bytes.size()));
}

}  // namespace qlx
