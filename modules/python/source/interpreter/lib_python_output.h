// What happens to a pending Python error. Lock held in all of these.
#ifndef INTERPRETER_LIB_PYTHON_OUTPUT_H
#define INTERPRETER_LIB_PYTHON_OUTPUT_H

#include <string>

namespace qlx {

// Prints the pending error with its traceback. A SystemExit asks the host to end instead and
// stays pending: the caller clears it.
void PrintBridgeError();

// PrintBridgeError, and no error is pending afterwards.
void PrintAndClearError();

// Takes the pending error away: "ValueError: bad value"; empty when there is none.
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
