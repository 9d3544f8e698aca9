// Compiling without running.

#include "interpreter/lib_python_syntax.h"

#include <limits>

#include "interpreter/lib_python_lock.h"
#include "kit/i_cpython.h"
#include "kit/i_errors.h"

namespace qlx {
namespace {

// A number of the error as 32 bits; what does not fit is -1, as the interpreter's own conversion
// has it.
bool ReadNumber(PyObject* value, const char* attribute, int32_t& number) {
  PyObject* object = PyObject_GetAttrString(value, attribute);
  if (!object || !PyLong_Check(object)) {
    PyErr_Clear();
    Py_XDECREF(object);
    return false;
  }
  const long wide = PyLong_AsLong(object);
  Py_DECREF(object);
  PyErr_Clear();
  const bool fits = wide >= std::numeric_limits<int32_t>::min() && wide <= std::numeric_limits<int32_t>::max();
  number = fits ? int32_t(wide) : -1;
  return true;
}

void ReadFault(SyntaxFault& fault) {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  if (type && PyErr_GivenExceptionMatches(type, PyExc_SyntaxError)) {
    ReadNumber(value, "lineno", fault.line);
    ReadNumber(value, "offset", fault.column);
    PyObject* text = PyObject_GetAttrString(value, "text");
    const char* utf8 = text && PyUnicode_Check(text) ? PyUnicode_AsUTF8(text) : nullptr;
    if (utf8) fault.text = utf8;
    if (utf8 && FaultLinesMayLackEnd() && !fault.text.ends_with('\n')) fault.text += '\n';
    PyErr_Clear();
    Py_XDECREF(text);
  }
  PyErr_Restore(type, value, traceback);
}

}  // namespace

PyObject* Compile(const std::string& source, const std::string& fileName, int startMode) {
  if (!CheckSourceText(source)) return nullptr;
  PyObject* name = PyUnicode_DecodeFSDefaultAndSize(fileName.data(), Py_ssize_t(fileName.size()));
  PyObject* code = name ? Py_CompileStringObject(source.c_str(), name, startMode, nullptr, -1) : nullptr;
  Py_XDECREF(name);
  return code;
}

PyObject* CompileForCheck(const std::string& source, const std::string& name, SyntaxFault& fault) {
  PyObject* code = Compile(source, "'" + name + "'", Py_file_input);
  if (!code) ReadFault(fault);
  return code;
}

bool SyntaxCheck(const std::string& source, SyntaxFault& fault) {
  PyObject* code = CompileForCheck(source, "syntax_check", fault);
  PyErr_Clear();
  Py_XDECREF(code);
  return code != nullptr;
}

std::string ExtractScriptName(const std::string& source) {
  GilScope lock;
  SyntaxFault ignored;
  std::string name;
  PyObject* code = CompileForCheck(source, "Script Name Extractor", ignored);
  PyObject* constants = code ? PyObject_GetAttrString(code, "co_consts") : nullptr;
  if (constants && PyTuple_Check(constants) && PyTuple_GET_SIZE(constants) > 0) {
    PyObject* first = PyTuple_GET_ITEM(constants, 0);
    Py_ssize_t size = 0;
    const char* utf8 = PyUnicode_Check(first) ? PyUnicode_AsUTF8AndSize(first, &size) : nullptr;
    if (utf8) name.assign(utf8, size_t(size));
  }
  PyErr_Clear();
  Py_XDECREF(constants);
  Py_XDECREF(code);
  return name;
}

int IsComplete(const std::string& source) {
  if (source.find('\0') != std::string::npos) return -1;
  return TestCompleteness(source.c_str());
}

}  // namespace qlx
