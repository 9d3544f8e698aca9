// Statements of the console of any content: the test answers, leaves no error, and calls no text
// complete that the parser refuses.

#include <Python.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "interpreter/lib_python_link.h"
#include "interpreter/lib_python_syntax.h"
#include "kit/i_cpython.h"
#include "python_interpreter.h"

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

void Start() {
  // The sanitizer sees the interpreter's memory only where it comes from the C library.
  setenv("PYTHONMALLOC", "malloc", 0);
  Require(!qlx::BindInterpreterLibrary());
  qlx::StartSettings settings;
  settings.program = QLX_PYTHON_EXECUTABLE;
  Require(qlx::StartInterpreter(settings).empty());
}

// The words of the tokenizer and the parser; those of later stages are no concern of the test.
constexpr const char* kGrammar[] = {
    "invalid syntax",
    "invalid token",
    "invalid character in identifier",
    "unexpected EOF while parsing",
    "EOL while scanning string literal",
    "EOF while scanning triple-quoted string literal",
    "unexpected character after line continuation character",
    "unexpected indent",
    "expected an indented block",
    "unindent does not match any outer indentation level",
    "inconsistent use of tabs and spaces in indentation",
    "too many levels of indentation",
    "multiple statements found while compiling a single statement",
    "incomplete input",
};

std::string Attribute(PyObject* object, const char* name) {
  PyObject* value = object ? PyObject_GetAttrString(object, name) : nullptr;
  const char* utf8 = value && PyUnicode_Check(value) ? PyUnicode_AsUTF8(value) : nullptr;
  std::string text = utf8 ? utf8 : "";
  PyErr_Clear();
  Py_XDECREF(value);
  return text;
}

// Whether the pending error, which it takes away, is one of the grammar. The inside of a
// formatted literal is parsed as a file of its own, later.
bool TakeGrammarError(const char* file) {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  // The parser's own stack is too small for the text.
  bool grammar = PyErr_GivenExceptionMatches(type, PyExc_MemoryError) != 0;
  if (PyErr_GivenExceptionMatches(type, PyExc_SyntaxError) && Attribute(value, "filename") == file)
    for (const char* words : kGrammar) grammar = grammar || Attribute(value, "msg") == words;
  Py_XDECREF(type);
  Py_XDECREF(value);
  Py_XDECREF(traceback);
  return grammar;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool started = (Start(), true);
  (void)started;
  const std::string source(reinterpret_cast<const char*>(data), size);
  const int answer = qlx::IsComplete(source);
  Require(answer >= -1 && answer <= 1);
  Require(!PyErr_Occurred());
  Require(qlx::IsComplete(source) == answer);
  if (answer != 1) return 0;
  Require(source.find('\0') == std::string::npos);
  PyObject* code = Py_CompileStringExFlags(source.c_str(), "<statement>", Py_single_input, nullptr, -1);
  if (!code) Require(!TakeGrammarError("<statement>"));
  Py_XDECREF(code);
  return 0;
}

// What the interpreter keeps until the process ends.
extern "C" const char* __lsan_default_suppressions() { return "leak:libpython\n"; }
