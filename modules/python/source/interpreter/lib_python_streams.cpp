// Printing from the module to the streams of the interpreter.

#include "interpreter/lib_python_streams.h"

#include <cstdarg>
#include <string_view>

#include "interpreter/lib_python_output.h"
#include "kelvar/general.h"
#include "kelvar/text.h"

namespace qlx {
namespace {

constexpr size_t kLineBytes = 1001;
constexpr const char* kTruncated = "... truncated";

// A buffer that was cut must not end inside a character.
void CutToCharacter(char* buffer) {
  size_t end = kLineBytes - 1;
  const auto* bytes = reinterpret_cast<const unsigned char*>(buffer);
  size_t start = end;
  while (start > 0 && end - start < 4 && (bytes[start - 1] & 0xc0) == 0x80) --start;
  if (start == 0 || bytes[start - 1] < 0xc0) return;
  const unsigned char lead = bytes[start - 1];
  const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (start - 1 + length > end) buffer[start - 1] = 0;
}

void WriteOrFallBack(PyObject* stream, FILE* fallback, const char* text) {
  if (PyFile_WriteString(text, stream) == 0) return;
  PyErr_Clear();
  std::fputs(text, fallback);
}

// A formatted line of `length` bytes in all, of which the buffer has the first 1000.
void WriteBuffer(PyObject* stream, FILE* fallback, char* buffer, int length) {
  const bool cut = length > int(kLineBytes) - 1;
  if (cut) CutToCharacter(buffer);
  Py_INCREF(stream);
  WriteOrFallBack(stream, fallback, buffer);
  if (cut) WriteOrFallBack(stream, fallback, kTruncated);
  Py_DECREF(stream);
}

void WriteFormat(const char* name, FILE* fallback, const char* format, va_list arguments) {
  const PreservedError preserved;
  if (PyObject* stream = PySys_GetObject(name)) {
    char buffer[kLineBytes] = "";
    WriteBuffer(stream, fallback, buffer, std::vsnprintf(buffer, sizeof buffer, format, arguments));
  } else {
    std::vfprintf(fallback, format, arguments);
  }
}

__attribute__((format(printf, 3, 4))) void WriteFormatted(const char* name, FILE* fallback, const char* format,
                                                          ...) {
  va_list arguments;
  va_start(arguments, format);
  WriteFormat(name, fallback, format, arguments);
  va_end(arguments);
}

std::string AttributeText(PyObject* object, const char* name) {
  PyObject* value = PyObject_GetAttrString(object, name);
  const char* text = value && PyUnicode_Check(value) ? PyUnicode_AsUTF8(value) : nullptr;
  std::string result = text ? text : "";
  PyErr_Clear();
  Py_XDECREF(value);
  return result;
}

}  // namespace

void WriteFormatToStdout(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  WriteFormat("stdout", stdout, format, arguments);
  va_end(arguments);
}

void WriteToSysStream(const char* name, FILE* fallback, const String& text) {
  WriteFormatted(name, fallback, "%s", text.GetUtf8(nullptr));
}

void PrintLineToStdout(const String& text) {
  WriteToSysStream("stdout", stdout, kelvar::Bytes(std::string(kelvar::View(text)) + "\n"));
}

void PrintLineToStderr(const String& text) {
  WriteToSysStream("stderr", stderr, kelvar::Bytes(std::string(kelvar::View(text)) + "\n"));
}

void WriteToStderr(const String& text) { WriteToSysStream("stderr", stderr, text); }

void ReportBadResult(PyObject* object, const char* method, const char* expected, PyObject* returned) {
  PyObject* bound = PyObject_GetAttrString(object, method);
  PyObject* function = bound ? PyObject_GetAttrString(bound, "im_func") : nullptr;
  Py_XDECREF(bound);
  PyObject* code = function && PyFunction_Check(function) ? PyFunction_GetCode(function) : nullptr;
  if (code) {
    // The third hole is the word "module", and no blank follows "Traceback": readers of logs
    // rely on this line.
    const std::string line = std::to_string(reinterpret_cast<PyCodeObject*>(code)->co_firstlineno);
    const std::string type = returned == Py_None ? "None" : Py_TYPE(returned)->tp_name;
    const String text = kelvar::Text(
        "Traceback(most recent call last):\n  File \"<" + AttributeText(code, "co_filename") + ">\", line " +
        line + ", in <module>\nTypeError: " + method + " expected " + expected + ", not " + type + "\n");
    kelvar::DiagnosticOutput(text);
    WriteToStderr(text);
  }
  Py_XDECREF(function);
}

bool ToHostText(PyObject* text, String& result) {
  Py_ssize_t size = 0;
  if (const char* utf8 = PyUnicode_AsUTF8AndSize(text, &size)) {
    result = kelvar::Bytes({utf8, size_t(size)});
    return true;
  }
  PyErr_Clear();
  PyObject* bytes = PyUnicode_AsEncodedString(text, "utf-8", "surrogateescape");
  if (!bytes) {
    PyErr_Clear();
    bytes = PyUnicode_AsEncodedString(text, "utf-8", "backslashreplace");
  }
  if (!bytes) return false;
  result = kelvar::Bytes({PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes))});
  Py_DECREF(bytes);
  return true;
}

}  // namespace qlx
