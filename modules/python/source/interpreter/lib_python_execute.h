// Running texts, files and modules in `__main__`, as `python` does. No lock held. Errors of the
// script are printed; its exit code goes to the application.
#ifndef INTERPRETER_LIB_PYTHON_EXECUTE_H
#define INTERPRETER_LIB_PYTHON_EXECUTE_H

#include "kelvar/filename.h"
#include "tavor/error.h"

namespace qlx {

tavor::Error RunMainText(const String& code);
tavor::Error RunMainFile(const Filename& file);
tavor::Error RunMainModule(const String& name);

// Statements from the console, or a whole program when standard input is no terminal.
tavor::Error RunInteractiveLoop();

}  // namespace qlx

#endif
