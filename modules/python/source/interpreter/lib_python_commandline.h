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
  std::string argument;                // the text, the module's name or the file's path
  std::vector<std::string> arguments;  // `sys.argv`
};

// Reads `qlxpy [-V] [-c CODE | -m MODULE | FILE] [arguments]`. Options of the interpreter
// change `flags`. The error names the option that is wrong.
tavor::Error ParseCommandLine(CommandLine& commandLine, uint32_t& flags);

// The main routine of the command-line application: runs what the command line asks for. Any
// other application has nothing to do here. The exit code goes to the application.
bool RunApplication();

}  // namespace qlx

#endif
