// The main routine of the command-line application.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_threads.h"
#include "interpreter/main.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "tavor/application.h"
#include "tavor/logger.h"

namespace qlx {
namespace {

constexpr const char* kHelp = R"(usage: qlxpy [options] [-c CODE | -m MODULE | FILE | -] [arguments]

What runs, with the package qlx ready:
  FILE            a script
  -c CODE         a text
  -m MODULE       a module of the library as a script
  -               the program that standard input has
  nothing         the console; without a terminal, the program that standard input has

Options of the interpreter:
  -V, --version   print the version and end
  -h, --help      print this text and end
  -i              the console after the run
  -q              no greeting at the console
  -u              standard output and standard error without buffers
  -W ARGUMENT     warning control, as module warnings has it
  -X OPTION       an option of the interpreter's implementation
  -I              isolated: neither the environment nor the user's site packages
  -E, -s, -S      without the environment, the user's site packages, module site
  -B, -O, -OO, -b, -bb, -d, -v   as for python

Options of the application, ahead of what runs:
  --home DIR      the folder of the user's files, instead of QLX_HOME
  --plugins DIR   one more folder of plug-ins; may be repeated
  --open FILE     a scene to open ahead of the script
  --set NAME=VALUE   a configuration variable, true or false
  -nogui          accepted and without effect here: there is no window
)";

Filename CurrentFolder() {
  char* folder = get_current_dir_name();
  Filename result = folder ? Filename::FromString(kelvar::Bytes(folder)) : Filename();
  std::free(folder);
  return result;
}

// `sys.argv` and the first entry of `sys.path`, ahead of a run. An empty folder is the entry "",
// the current folder at each import.
tavor::Error PrepareRun(const Filename& folder, const CommandLine& commandLine) {
  GilScope lock;
  if (!SetArguments(commandLine.arguments)) return tavor::Error("sys.argv: " + TakePendingErrorText());
  // An isolated script imports nothing from beside itself.
  if (commandLine.flags & kFlagIsolated) return {};
  return LibraryRef()->CPySys_SetPath(folder.Word(), 1, PATHHANDLE_INSERT_AT_BEGINNING);
}

void Print(std::string_view text, HostConsole stream) {
  while (!text.empty()) {
    const int64_t written = kelvar::ConsoleWrite(stream, kelvar::Bytes(text));
    if (written == -EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(std::min(size_t(written), text.size()));
  }
}

void PrintLine(const std::string& text, HostConsole stream) { Print(text + "\n", stream); }

// The folder of a script, where a link leads to it.
Filename FolderOf(const std::string& path) {
  char* resolved = realpath(path.c_str(), nullptr);
  Filename file = Filename::FromString(kelvar::Bytes(resolved ? resolved : path));
  std::free(resolved);
  return file.GetDirectory();
}

tavor::Error CantOpen(const std::string& file, const char* reason) {
  PrintLine(ProgramName() + ": can't open file '" + file + "': " + reason, HOST_CONSOLE_ERROR);
  tavor::application::SetExitCode(2);
  return tavor::Error(reason);
}

tavor::Error RunScript(const CommandLine& commandLine) {
  const std::string& path = commandLine.argument;
  const Filename file = Filename::FromString(kelvar::Bytes(path));
  if (kelvar::HostFileExists(file, true)) return CantOpen(path, "is a directory");
  if (!kelvar::HostFileExists(file, false)) return CantOpen(path, "no such file or directory");
  if (access(path.c_str(), R_OK) != 0) return CantOpen(path, "permission denied");
  if (tavor::Error error = PrepareRun(FolderOf(path), commandLine)) return error;
  return MachineRef()->ExecuteFile(file);
}

tavor::Error RunOperation(const CommandLine& commandLine) {
  switch (commandLine.operation) {
    case PYSTARTOPERATION_EXECUTE_CODE:
      if (tavor::Error error = PrepareRun(Filename(), commandLine)) return error;
      return MachineRef()->ExecuteCode(kelvar::Bytes(commandLine.argument));
    case PYSTARTOPERATION_EXECUTE_MODULE:
      if (tavor::Error error = PrepareRun(CurrentFolder(), commandLine)) return error;
      return MachineRef()->ExecuteModule(kelvar::Bytes(commandLine.argument));
    case PYSTARTOPERATION_EXECUTE_FILE:
      return RunScript(commandLine);
    default:
      return PrepareRun(Filename(), commandLine);
  }
}

// The conversation at the console, with a greeting where a person is there to read it.
tavor::Error RunConsole(const CommandLine& commandLine) {
  const bool program = commandLine.operation == PYSTARTOPERATION_NONE && !isatty(STDIN_FILENO) &&
                       !(commandLine.flags & kFlagInspect);
  if (!program && !(commandLine.flags & kFlagQuiet)) {
    {
      GilScope lock;
      FlushStreams();
    }
    const std::string name(kelvar::View(MachineRef()->GetName()));
    const std::string version(kelvar::View(MachineRef()->GetVersion()));
    PrintLine("Welcome to the world of QLX and " + name + " " + version + " (c) " +
                  std::to_string(tavor::application::GetCurrentYear()),
              HOST_CONSOLE_OUT);
  }
  if (!tavor::application::ConsoleIsAvailable()) {
    Log("Missing configuration: g_console=true because subsystem is an application and no console is available",
        LOGGER_LEVEL_CRITICAL);
    return tavor::Error("no console is available");
  }
  return MachineRef()->EnterInteractiveMode();
}

// An interpreter of that generation reached the console only with this module.
bool ImportStreamsOfGeneration2() {
  if (LibraryRef()->GetDll()->major != 2) return true;
  LibraryGilScope lock(LibraryRef());
  CPyObject* module = LibraryRef()->CPyImport_ImportModule("_qlx_init");
  LibraryRef()->CPy_DecRef(module);
  if (module) return true;
  LibraryRef()->CPyErr_Print();
  Log("ImportError: No module named _qlx_init. Check for an outdated Python framework!", LOGGER_LEVEL_FATAL);
  return false;
}

bool RunCommandLine() {
  const CommandLine& commandLine = ReadCommandLine();
  if (commandLine.help) {
    Print(kHelp, HOST_CONSOLE_OUT);
    return false;
  }
  if (commandLine.operation == PYSTARTOPERATION_VERSION) {
    const CPythonDll* dll = LibraryRef()->GetDll();
    PrintLine("Python " + std::to_string(dll->major) + "." + std::to_string(dll->minor) + "." +
                  std::to_string(dll->micro),
              HOST_CONSOLE_OUT);
    return false;
  }
  tavor::Error error = RunOperation(commandLine);
  if (commandLine.flags & kFlagInteractive) error = RunConsole(commandLine);
  JoinPythonThreads();
  return !error;
}

bool RunMainRoutine() {
  // The bring-up has told the reason.
  if (IsCommandLineApplication() && ReadCommandLine().fault) return false;
  if (!MachineRef() || !LibraryRef()) {
    tavor::logger::Write(tavor::logger::GetDefault(), LOGGER_TARGET_USER, LOGGER_LEVEL_CRITICAL,
                         kelvar::Text("no python vm found\n"), nullptr, 0);
    if (IsCommandLineApplication()) tavor::application::SetExitCode(2);
    return false;
  }
  if (!ImportStreamsOfGeneration2()) return false;
  return !IsCommandLineApplication() || RunCommandLine();
}

}  // namespace

bool RunApplication() {
  if (!HasHostTables()) return false;
  constexpr const char* kDisable = "g_disableConsoleOutput";
  const bool disabled = tavor::application::GetConfigurationBool(kDisable, 0);
  if (disabled) tavor::application::SetConfigurationBool(kDisable, 0);
  const bool result = RunMainRoutine();
  if (disabled) tavor::application::SetConfigurationBool(kDisable, 1);
  return result;
}

}  // namespace qlx
