// Everything that differs between the interpreter versions.

#include "kit/i_cpython.h"

#include <cstdio>
#include <cstdlib>

namespace qlx {
namespace {

std::wstring Decode(const std::string& bytes) {
  size_t size = 0;
  wchar_t* wide = Py_DecodeLocale(bytes.c_str(), &size);
  if (!wide) return {};
  std::wstring text(wide, size);
  PyMem_RawFree(wide);
  return text;
}

}  // namespace

#if PY_VERSION_HEX < 0x03080000

namespace {

// Only this version's own command line reads the variable.
std::vector<std::wstring> WarningsOfEnvironment() {
  const char* variable = std::getenv("PYTHONWARNINGS");
  std::vector<std::wstring> words;
  for (std::string rest = variable ? variable : ""; !rest.empty();) {
    const size_t end = rest.find(',');
    if (end != 0) words.push_back(Decode(rest.substr(0, end)));
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
  }
  return words;
}

}  // namespace

std::string StartInterpreter(const StartSettings& settings) {
  Py_IgnoreEnvironmentFlag = !settings.useEnvironment;
  Py_NoUserSiteDirectory = !settings.userSite;
  Py_NoSiteFlag = !settings.importSite;
  Py_DontWriteBytecodeFlag = !settings.writeBytecode;
  Py_IsolatedFlag = settings.isolated;
  Py_UnbufferedStdioFlag = settings.unbuffered;
  Py_QuietFlag = settings.quiet;
  Py_InspectFlag = settings.inspect;
  Py_OptimizeFlag = settings.optimize;
  Py_VerboseFlag = settings.verbose;
  Py_BytesWarningFlag = settings.bytesWarning;
  Py_DebugFlag = settings.debugParser;
  // The interpreter keeps the pointer.
  static std::wstring program;
  program = Decode(settings.program);
  Py_SetProgramName(program.data());

  // Unlike Py_InitializeEx this returns its failures.
  _PyCoreConfig config = {};
  config.install_signal_handlers = settings.signalHandlers;
  config.ignore_environment = !settings.useEnvironment;
  config.use_hash_seed = -1;
  config.coerce_c_locale = -1;
  config.faulthandler = -1;
  config.tracemalloc = -1;
  config.utf8_mode = -1;
  config.argc = -1;
  config.nmodule_search_path = -1;
  static std::vector<std::wstring> warnings;
  static std::vector<wchar_t*> warningWords;
  if (settings.useEnvironment && !settings.isolated) warnings = WarningsOfEnvironment();
  for (std::wstring& warning : warnings) warningWords.push_back(warning.data());
  config.warnoptions = warningWords.data();
  config.nwarnoption = int(warningWords.size());
  const _PyInitError error = _Py_InitializeFromConfig(&config);
  return _Py_INIT_FAILED(error) ? (error.msg ? error.msg : "unknown reason") : "";
}

#else

std::string StartInterpreter(const StartSettings& settings) {
  PyConfig config;
  PyConfig_InitPythonConfig(&config);
  config.use_environment = settings.useEnvironment;
  config.user_site_directory = settings.userSite;
  config.site_import = settings.importSite;
  config.write_bytecode = settings.writeBytecode;
  config.isolated = settings.isolated;
  config.buffered_stdio = !settings.unbuffered;
  config.quiet = settings.quiet;
  config.inspect = settings.inspect;
  config.optimization_level = settings.optimize;
  config.verbose = settings.verbose;
  config.bytes_warning = settings.bytesWarning;
  config.parser_debug = settings.debugParser;
  config.install_signal_handlers = settings.signalHandlers;
  config.parse_argv = 0;
  PyPreConfig early;
  PyPreConfig_InitPythonConfig(&early);
  early.use_environment = settings.useEnvironment;
  early.isolated = settings.isolated;
  PyStatus status = Py_PreInitialize(&early);
  const std::wstring program = PyStatus_Exception(status) ? std::wstring() : Decode(settings.program);
  if (!PyStatus_Exception(status)) status = PyConfig_SetString(&config, &config.program_name, program.c_str());
  if (!PyStatus_Exception(status)) status = Py_InitializeFromConfig(&config);
  PyConfig_Clear(&config);
  if (!PyStatus_Exception(status)) return "";
  return status.err_msg ? status.err_msg : "unknown reason";
}

#endif

bool SetArguments(const std::vector<std::string>& arguments) {
  PyObject* list = PyList_New(0);
  bool ok = list != nullptr;
  for (size_t i = 0; ok && i < arguments.size(); ++i) {
    PyObject* text = PyUnicode_DecodeFSDefaultAndSize(arguments[i].data(), Py_ssize_t(arguments[i].size()));
    ok = text && PyList_Append(list, text) == 0;
    Py_XDECREF(text);
  }
  ok = ok && PySys_SetObject("argv", list) == 0;
  Py_XDECREF(list);
  return ok;
}

InterpreterVersion GetInterpreterVersion() {
  InterpreterVersion version{};
  std::sscanf(Py_GetVersion(), "%u.%u.%u", &version.major, &version.minor, &version.micro);
  return version;
}

}  // namespace qlx
