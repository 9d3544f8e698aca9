// What happens to a pending Python error. Lock held in all of these.
#ifndef INTERPRETER_LIB_PYTHON_OUTPUT_H
#define INTERPRETER_LIB_PYTHON_OUTPUT_H

#include <Python.h>

#include <string>

namespace qlx {

// Keeps a pending error, or none, out of the way of what may raise another.
class PreservedError {
 public:
  PreservedError() { PyErr_Fetch(&type_, &value_, &traceback_); }
  ~PreservedError() { PyErr_Restore(type_, value_, traceback_); }
  PreservedError(const PreservedError&) = delete;
  PreservedError& operator=(const PreservedError&) = delete;

 private:
  PyObject *type_, *value_, *traceback_;
};

// Takes the pending error away and shows it through `sys.excepthook`. An exit that the hook
// asks for is pending afterwards; the interpreter's own function would end the process there.
void PrintPendingError();

// Prints the pending error with its traceback. A SystemExit asks the host to end instead and
// stays pending: the caller clears it.
void PrintBridgeError();

bool IsSystemExitPending();

// Flushes `sys.stdout` and `sys.stderr`. What goes wrong there is passed over.
void FlushStreams();

// PrintBridgeError, and no error is pending afterwards. In the command-line application an
// exit leaves its code.
void PrintAndClearError();

// The pending error as a line, "ValueError: bad value"; empty when there is none. The error
// stays pending in the first one and is taken away in the second.
std::string PendingErrorText();
std::string TakePendingErrorText();

// Takes the pending error away: its whole traceback, as `sys.excepthook` shows it.
std::string TakePendingTraceback();

// Takes a pending SystemExit away and tells its exit code, as the interpreter's own command
// line does: a text goes to standard error and means 1. False for any other error.
bool TakeSystemExit(int& code);

// Frees what the last uncaught error held, and restores the default `sys.excepthook`.
void ResetExceptHook();

}  // namespace qlx

#endif
