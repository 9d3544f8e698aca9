// Compiling without running. Lock held in all but ExtractScriptName, which takes it.
#ifndef INTERPRETER_LIB_PYTHON_SYNTAX_H
#define INTERPRETER_LIB_PYTHON_SYNTAX_H

#include <Python.h>

#include <cstdint>
#include <string>

namespace qlx {

// Where a text is wrong. Untouched where the error tells no place.
struct SyntaxFault {
  int32_t line = 0;
  int32_t column = 0;
  std::string text;
};

// A new code object, or null with the error pending. A traceback shows `fileName`, the bytes of a path.
PyObject* Compile(const std::string& source, const std::string& fileName, int startMode);

// The same for a whole script, with the place of the error in `fault`. A traceback shows `name` in
// quotes.
PyObject* CompileForCheck(const std::string& source, const std::string& name, SyntaxFault& fault);

// Whether a text compiles. No error is pending afterwards.
bool SyntaxCheck(const std::string& source, SyntaxFault& fault);

// The doc string of a script; empty when it does not compile. It is the first constant of the
// compiled text: a script without a doc string whose first constant is a text has that as its
// name, on which script menus rely.
std::string ExtractScriptName(const std::string& source);

// Whether a statement of the console is complete: 1, 0 when another line must come, -1 when it
// is wrong. No error is pending afterwards.
int IsComplete(const std::string& source);

}  // namespace qlx

#endif
