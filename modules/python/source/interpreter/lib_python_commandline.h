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
  std::string argument;                // the text, the module's name or the file's path
  std::vector<std::string> arguments;  // `sys.argv`
  std::string warnings;                // of -W, a line each
  std::string extended;                // of -X, a line each
  bool help = false;
  tavor::Error fault;  // names the option that is wrong
};

// Reads `qlxpy [options] [-c CODE | -m MODULE | FILE | -] [arguments]`, in the bytes of the
// process. No arguments: the console, or the program that standard input has.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

// The application's command line, read once. A wrong one has set the exit code to 2. Main thread.
const CommandLine& ReadCommandLine();

// The name by which the application speaks of itself, without its folder.
std::string ProgramName();

// The main routine of the command-line application: runs what the command line asks for. Any
// other application has nothing to do here. The exit code goes to the application.
bool RunApplication();

}  // namespace qlx

#endif
