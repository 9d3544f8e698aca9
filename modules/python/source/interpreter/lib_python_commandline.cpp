// The command line of the application, and its main routine.

#include "interpreter/lib_python_commandline.h"

#include <unistd.h>

#include <ctime>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_flags.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_threads.h"
#include "interpreter/main.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "tavor/application.h"
#include "tavor/logger.h"

namespace qlx {
namespace {

std::string Argument(int32_t index) {
  return std::string(kelvar::View(tavor::application::GetArgument(index)));
}

struct Option {
  std::string_view name;
  uint32_t set;
  uint32_t clear;
};

constexpr Option kOptions[] = {
    {"-i", kFlagInteractive | kFlagInspect, 0},
    {"-u", kFlagUnbuffered, 0},
    {"-q", kFlagQuiet, 0},
    {"-v", kFlagVerbose, 0},
    {"-b", kFlagBytesWarning, 0},
    {"-bb", kFlagBytesError, 0},
    {"-d", kFlagDebugParser, 0},
    {"-O", kFlagOptimize, 0},
    {"-OO", kFlagOptimizeMore, 0},
    {"-B", 0, kFlagWriteBytecode},
    {"-E", 0, kFlagUseEnvironment},
    {"-s", 0, kFlagUserSite},
    {"-S", 0, kFlagImportSite},
    {"-I", kFlagIsolated, kFlagUseEnvironment | kFlagUserSite},
    {"-nogui", 0, 0},
};

const Option* FindOption(std::string_view name) {
  for (const Option& option : kOptions)
    if (option.name == name) return &option;
  return nullptr;
}

int32_t OperationOf(std::string_view option) {
  if (option == "-c") return PYSTARTOPERATION_EXECUTE_CODE;
  if (option == "-m") return PYSTARTOPERATION_EXECUTE_MODULE;
  if (option == "-V" || option == "--version") return PYSTARTOPERATION_VERSION;
  return PYSTARTOPERATION_NONE;
}

Filename CurrentFolder() {
  char* folder = get_current_dir_name();
  const Filename result = folder ? Filename::FromString(kelvar::Text(folder)) : Filename();
  std::free(folder);
  return result;
}

// The first entry of `sys.path` and `sys.argv`, ahead of a run.
tavor::Error PrepareRun(const Filename& folder, const std::vector<std::string>& arguments) {
  GilScope lock;
  if (!SetArguments(arguments)) {
    PyErr_Clear();
    return tavor::Error("sys.argv can't be set");
  }
  return folder.Content() ? LibraryRef()->CPySys_SetPath(folder.Word(), 1, PATHHANDLE_INSERT_AT_BEGINNING)
                          : tavor::Error();
}

void PrintLine(const std::string& text, HostConsole stream) {
  kelvar::ConsoleWrite(stream, kelvar::Text(text + "\n"));
}

tavor::Error CantOpen(const std::string& file, const char* reason) {
  PrintLine(Argument(0) + ": can't open file '" + file + "': " + reason, HOST_CONSOLE_ERROR);
  tavor::application::SetExitCode(2);
  return tavor::Error(reason);
}

tavor::Error RunScript(const CommandLine& commandLine) {
  const Filename file = Filename::FromString(kelvar::Text(commandLine.argument));
  if (kelvar::HostFileExists(file, true)) return CantOpen(commandLine.argument, "is a directory");
  if (!kelvar::HostFileExists(file, false)) return CantOpen(commandLine.argument, "no such file or directory");
  const bool bare = commandLine.argument.find('/') == std::string::npos;
  const Filename folder = bare ? CurrentFolder() : file.GetDirectory();
  if (tavor::Error error = PrepareRun(folder, commandLine.arguments)) return error;
  return MachineRef()->ExecuteFile(file);
}

tavor::Error RunOperation(const CommandLine& commandLine) {
  switch (commandLine.operation) {
    case PYSTARTOPERATION_EXECUTE_CODE:
      if (tavor::Error error = PrepareRun(Filename(), commandLine.arguments)) return error;
      return MachineRef()->ExecuteCode(kelvar::Text(commandLine.argument));
    case PYSTARTOPERATION_EXECUTE_MODULE:
      if (tavor::Error error = PrepareRun(CurrentFolder(), commandLine.arguments)) return error;
      return MachineRef()->ExecuteModule(kelvar::Text(commandLine.argument));
    case PYSTARTOPERATION_EXECUTE_FILE:
      return RunScript(commandLine);
    default:
      return PrepareRun(Filename(), commandLine.arguments);
  }
}

std::string Year() {
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  localtime_r(&now, &fields);
  return std::to_string(fields.tm_year + 1900);
}

tavor::Error RunConsole() {
  if (isatty(STDIN_FILENO)) {
    const std::string name(kelvar::View(MachineRef()->GetName()));
    const std::string version(kelvar::View(MachineRef()->GetVersion()));
    PrintLine("Welcome to the world of QLX and " + name + " " + version + " (c) " + Year(), HOST_CONSOLE_OUT);
  }
  return MachineRef()->EnterInteractiveMode();
}

bool RunCommandLine() {
  CommandLine commandLine;
  uint32_t flags = kInterpreterFlags;
  if (tavor::Error error = ParseCommandLine(commandLine, flags)) return false;
  if (commandLine.operation == PYSTARTOPERATION_VERSION) {
    const CPythonDll* dll = LibraryRef()->GetDll();
    PrintLine("Python " + std::to_string(dll->major) + "." + std::to_string(dll->minor) + "." +
                  std::to_string(dll->micro),
              HOST_CONSOLE_OUT);
    return false;
  }
  tavor::Error error = RunOperation(commandLine);
  if (flags & kFlagInteractive) error = RunConsole();
  JoinPythonThreads();
  return !error;
}

}  // namespace

tavor::Error ParseCommandLine(CommandLine& commandLine, uint32_t& flags) {
  const int32_t count = tavor::application::GetArgumentCount();
  int32_t next = 1;
  for (; next < count; ++next) {
    const std::string argument = Argument(next);
    if (argument.empty() || argument[0] != '-') {
      commandLine.operation = PYSTARTOPERATION_EXECUTE_FILE;
      commandLine.argument = argument;
      commandLine.arguments = {argument};
      ++next;
      break;
    }
    if (const Option* option = FindOption(argument)) {
      flags = (flags | option->set) & ~option->clear;
      continue;
    }
    commandLine.operation = OperationOf(argument);
    if (commandLine.operation == PYSTARTOPERATION_NONE) {
      tavor::application::SetExitCode(2);
      return tavor::Error("unknown option " + argument, HOST_RESULT_ILLEGAL_ARGUMENT);
    }
    if (commandLine.operation == PYSTARTOPERATION_VERSION) return {};
    if (++next == count) {
      tavor::application::SetExitCode(2);
      return tavor::Error("argument expected for the " + argument + " option", HOST_RESULT_ILLEGAL_ARGUMENT);
    }
    commandLine.argument = Argument(next++);
    commandLine.arguments = {argument};
    break;
  }
  if (commandLine.operation == PYSTARTOPERATION_NONE) {
    commandLine.arguments = {""};
    flags |= kFlagInteractive;
  }
  for (; next < count; ++next) commandLine.arguments.push_back(Argument(next));
  return {};
}

bool RunApplication() {
  if (!HasHostTables()) return false;
  if (!MachineRef() || !LibraryRef()) {
    tavor::logger::Write(tavor::logger::GetDefault(), LOGGER_TARGET_USER, LOGGER_LEVEL_CRITICAL,
                         kelvar::Text("no python vm found\n"), nullptr, 0);
    if (IsCommandLineApplication()) tavor::application::SetExitCode(2);
    return false;
  }
  if (!IsCommandLineApplication()) return true;
  constexpr const char* kDisable = "g_disableConsoleOutput";
  const bool disabled = tavor::application::GetConfigurationBool(kDisable, 0);
  if (disabled) tavor::application::SetConfigurationBool(kDisable, 0);
  const bool result = RunCommandLine();
  if (disabled) tavor::application::SetConfigurationBool(kDisable, 1);
  return result;
}

}  // namespace qlx
