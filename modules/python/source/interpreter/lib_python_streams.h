// Printing from the module to the streams of the interpreter. Lock held in all of these. A
// pending error survives a write.
#ifndef INTERPRETER_LIB_PYTHON_STREAMS_H
#define INTERPRETER_LIB_PYTHON_STREAMS_H

#include <Python.h>

#include <cstdio>
#include <string>

#include "kelvar/string.h"

namespace qlx {

// Up to 1000 bytes of a printf-like text to `sys.stdout`; a longer one ends in "... truncated".
// Without the stream the whole text goes to the C stream.
__attribute__((format(printf, 1, 2))) void WriteFormatToStdout(const char* format, ...);

// The same for a text and either stream, "stdout" or "stderr".
void WriteToSysStream(const char* name, FILE* fallback, const String& text);

void PrintLineToStdout(const String& text);
void PrintLineToStderr(const String& text);
void WriteToStderr(const String& text);

// Reports a Python override that returned `returned` where `expected` was due, in the shape of a
// traceback. The function is found by the attribute `im_func` of the method: where that is
// missing, the report ends with the AttributeError pending.
void ReportBadResult(PyObject* object, const char* method, const char* expected, PyObject* returned);

// The bytes of a str for the host; what UTF-8 can't hold keeps the bytes that it came from.
bool ToHostText(PyObject* text, String& result);

}  // namespace qlx

#endif
