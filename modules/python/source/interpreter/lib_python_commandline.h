// The command line of the application, and its main routine.
#ifndef INTERPRETER_LIB_PYTHON_COMMANDLINE_H
#define INTERPRETER_LIB_PYTHON_COMMANDLINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "tavor/error.h"

namespace qlx {

struct CommandLine {
  int32_t operation = 0;               // a StartOperation
  uint32_t flags = 0;                  // of the interpreter
  String argument;                     // the text, the module's name or the file's path
  std::vector<std::string> arguments;  // `sys.argv`, in the bytes of the process
  tavor::Error fault;                  // names the option that is wrong
};

// The application's command line, `qlxpy [options] [-c CODE | -m MODULE | FILE] [arguments]`,
// read once. A wrong one has set the exit code to 2. Main thread.
const CommandLine& ReadCommandLine();

// The main routine of the command-line application: runs what the command line asks for. Any
// other application has nothing to do here. The exit code goes to the application.
bool RunApplication();

}  // namespace qlx

#endif
