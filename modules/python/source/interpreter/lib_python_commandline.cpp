// The command line of the application, and its main routine.

#include "interpreter/lib_python_commandline.h"

#include <unistd.h>

#include <cstdlib>
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

tavor::Error Wrong(const std::string& what) {
  tavor::application::SetExitCode(2);
  return tavor::Error(what, HOST_RESULT_ILLEGAL_ARGUMENT);
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
  Filename result = folder ? Filename::FromString(kelvar::Bytes(folder)) : Filename();
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
  kelvar::ConsoleWrite(stream, kelvar::Bytes(text + "\n"));
}

tavor::Error CantOpen(std::string_view file, const char* reason) {
  PrintLine(Argument(0) + ": can't open file '" + std::string(file) + "': " + reason, HOST_CONSOLE_ERROR);
  tavor::application::SetExitCode(2);
  return tavor::Error(reason);
}

tavor::Error RunScript(const CommandLine& commandLine) {
  const std::string_view path = kelvar::View(commandLine.argument);
  const Filename file = Filename::FromString(commandLine.argument);
  if (kelvar::HostFileExists(file, true)) return CantOpen(path, "is a directory");
  if (!kelvar::HostFileExists(file, false)) return CantOpen(path, "no such file or directory");
  const bool bare = path.find('/') == std::string_view::npos;
  const Filename folder = bare ? CurrentFolder() : file.GetDirectory();
  if (tavor::Error error = PrepareRun(folder, commandLine.arguments)) return error;
  return MachineRef()->ExecuteFile(file);
}

tavor::Error RunOperation(const CommandLine& commandLine) {
  switch (commandLine.operation) {
    case PYSTARTOPERATION_EXECUTE_CODE:
      if (tavor::Error error = PrepareRun(Filename(), commandLine.arguments)) return error;
      return MachineRef()->ExecuteCode(commandLine.argument);
    case PYSTARTOPERATION_EXECUTE_MODULE:
      if (tavor::Error error = PrepareRun(CurrentFolder(), commandLine.arguments)) return error;
      return MachineRef()->ExecuteModule(commandLine.argument);
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
  const CommandLine& commandLine = ReadCommandLine();
  if (commandLine.operation == PYSTARTOPERATION_VERSION) {
    const CPythonDll* dll = LibraryRef()->GetDll();
    PrintLine("Python " + std::to_string(dll->major) + "." + std::to_string(dll->minor) + "." +
                  std::to_string(dll->micro),
              HOST_CONSOLE_OUT);
    return false;
  }
  tavor::Error error = RunOperation(commandLine);
  if (commandLine.flags & kFlagInteractive) error = RunConsole();
  JoinPythonThreads();
  return !error;
}

CommandLine ParseCommandLine() {
  CommandLine line;
  line.flags = kInterpreterFlags;
  const int32_t count = tavor::application::GetArgumentCount();
  int32_t next = 1;
  for (; next < count && line.operation == PYSTARTOPERATION_NONE; ++next) {
    const std::string argument = Argument(next);
    if (const Option* option = FindOption(argument)) {
      line.flags = (line.flags | option->set) & ~option->clear;
      continue;
    }
    const bool isFile = argument.empty() || argument[0] != '-';
    line.operation = isFile ? int32_t(PYSTARTOPERATION_EXECUTE_FILE) : OperationOf(argument);
    if (line.operation == PYSTARTOPERATION_VERSION) return line;
    if (line.operation == PYSTARTOPERATION_NONE) {
      line.fault = Wrong("unknown option " + argument);
      return line;
    }
    if (!isFile && ++next == count) {
      line.fault = Wrong("argument expected for the " + argument + " option");
      return line;
    }
    line.argument = tavor::application::GetArgument(next);
    line.arguments = {argument};
  }
  if (line.operation == PYSTARTOPERATION_NONE) {
    line.arguments = {""};
    line.flags |= kFlagInteractive;
  }
  for (; next < count; ++next) line.arguments.push_back(Argument(next));
  return line;
}

}  // namespace

const CommandLine& ReadCommandLine() {
  static const auto* line = new CommandLine(ParseCommandLine());
  return *line;
}

bool RunApplication() {
  if (!HasHostTables()) return false;
  // The bring-up has told the reason.
  if (IsCommandLineApplication() && ReadCommandLine().fault) return false;
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
