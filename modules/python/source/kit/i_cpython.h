// Everything that differs between the interpreter versions. Nothing else tests the version.
#ifndef KIT_I_CPYTHON_H
#define KIT_I_CPYTHON_H

#include <Python.h>

#include <string>
#include <vector>

namespace qlx {

// What the interpreter is started with; the names follow the options of `python`.
struct StartSettings {
  bool useEnvironment = true;         // not -E
  bool userSite = true;               // not -s
  bool importSite = true;             // not -S
  bool writeBytecode = true;          // not -B
  bool isolated = false;              // -I
  bool unbuffered = false;            // -u
  bool quiet = false;                 // -q
  bool inspect = false;               // -i
  int optimize = 0;                   // -O, -OO
  int verbose = 0;                    // -v
  int bytesWarning = 0;               // -b, -bb
  bool debugParser = false;           // -d
  bool signalHandlers = false;        // SIGINT becomes KeyboardInterrupt
  std::string program;                // the interpreter's executable, from which it finds its home
  std::vector<std::string> warnings;  // -W
  std::vector<std::string> extended;  // -X
};

// Starts the interpreter; the calling thread holds the lock afterwards. On failure the text
// says why, no script can run in this process, and the process goes on.
std::string StartInterpreter(const StartSettings& settings);

// Sets `sys.argv` in the bytes of the process; `sys.path` is left alone.
bool SetArguments(const std::vector<std::string>& arguments);

// Whether a statement of the console is complete: 1, 0 when another line must come, -1 when it
// is wrong. Lock held; no error is pending afterwards.
int TestCompleteness(const char* source);

// Whether the line that a SyntaxError shows may lack its line end.
bool FaultLinesMayLackEnd();

// Whether an uncaught KeyboardInterrupt ends the process by the signal, as `python` does.
bool InterruptEndsBySignal();

// The path by which a script file knows itself and tracebacks show it.
std::string ScriptFileName(const std::string& path);

// The version of the running library, from its own words.
struct InterpreterVersion {
  unsigned major, minor, micro;
};
InterpreterVersion GetInterpreterVersion();

// The int that `__int__` of an object makes of it, as a new reference, or null with an exception. All
// conversions of 3.7 do this to what is no int; later versions refuse or ask `__index__`.
PyObject* ToInteger(PyObject* object);

}  // namespace qlx

#endif
