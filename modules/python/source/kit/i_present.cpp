// How host values are presented to Python.

#include "kit/i_present.h"

#include "kelvar/text.h"

namespace qlx {

PyObject* StringToPython(const String& text) {
  const std::string_view utf8 = kelvar::View(text);
  return PyUnicode_DecodeUTF8(utf8.data(), Py_ssize_t(utf8.size()), "replace");
}

PyObject* FilenameToPython(const Filename& name) {
  const String path = name.GetString();
  const std::string_view bytes = kelvar::View(path);
  return PyUnicode_DecodeFSDefaultAndSize(bytes.data(), Py_ssize_t(bytes.size()));
}

}  // namespace qlx
