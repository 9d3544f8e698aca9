// Everything that differs between the interpreter versions.

#include "kit/i_cpython.h"

#if PY_VERSION_HEX < 0x03080000
#include <errcode.h>
#include <grammar.h>
#include <node.h>
#include <parsetok.h>

extern "C" grammar _PyParser_Grammar;  // the library has it, its headers don't
#endif

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "kit/i_errors.h"

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
std::vector<std::string> WarningsOfEnvironment() {
  const char* variable = std::getenv("PYTHONWARNINGS");
  std::vector<std::string> words;
  for (std::string rest = variable ? variable : ""; !rest.empty();) {
    const size_t end = rest.find(',');
    if (end != 0) words.push_back(rest.substr(0, end));
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
  }
  return words;
}

bool IsDevelopmentMode(const StartSettings& settings) {
  for (const std::string& option : settings.extended)
    if (option == "dev") return true;
  const char* variable = settings.useEnvironment && !settings.isolated ? std::getenv("PYTHONDEVMODE") : nullptr;
  return variable && *variable;
}

// Options as the interpreter takes them: it keeps the pointers.
class WordList {
 public:
  void Add(const std::vector<std::string>& words) {
    for (const std::string& word : words) texts_.push_back(Decode(word));
  }
  wchar_t** Words(int& count) {
    for (std::wstring& text : texts_) words_.push_back(text.data());
    count = int(words_.size());
    return words_.data();
  }

 private:
  std::vector<std::wstring> texts_;
  std::vector<wchar_t*> words_;
};

}  // namespace

std::string StartInterpreter(const StartSettings& settings) {
  Py_IgnoreEnvironmentFlag = !settings.useEnvironment;
  Py_NoUserSiteDirectory = !settings.userSite;
  Py_NoSiteFlag = !settings.importSite;
  Py_DontWriteBytecodeFlag = !settings.writeBytecode;
  Py_IsolatedFlag = settings.isolated;
  Py_UnbufferedStdioFlag = settings.unbuffered;
  Py_QuietFlag = settings.quiet;
  Py_InspectFlag = Py_InteractiveFlag = settings.inspect;
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
  static WordList warnings, extended;
  // Only this version's own command line turns some options into filters.
  if (IsDevelopmentMode(settings)) warnings.Add({"default"});
  if (settings.useEnvironment && !settings.isolated) warnings.Add(WarningsOfEnvironment());
  warnings.Add(settings.warnings);
  if (settings.bytesWarning)
    warnings.Add({settings.bytesWarning > 1 ? "error::BytesWarning" : "default::BytesWarning"});
  extended.Add(settings.extended);
  config.warnoptions = warnings.Words(config.nwarnoption);
  config.xoptions = extended.Words(config.nxoption);
  const _PyInitError error = _Py_InitializeFromConfig(&config);
  return _Py_INIT_FAILED(error) ? (error.msg ? error.msg : "unknown reason") : "";
}

int TestCompleteness(const char* source) {
  perrdetail error = {};
  node* tree = PyParser_ParseString(source, &_PyParser_Grammar, Py_single_input, &error);
  Py_CLEAR(error.filename);
  PyObject_FREE(error.text);
  PyErr_Clear();
  if (tree) {
    PyNode_Free(tree);
    return 1;
  }
  return error.error == E_EOF ? 0 : -1;
}

bool FaultLinesMayLackEnd() { return false; }

bool InterruptEndsBySignal() { return false; }

std::string ScriptFileName(const std::string& path) { return path; }

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
  config.inspect = config.interactive = settings.inspect;
  config.optimization_level = settings.optimize;
  config.verbose = settings.verbose;
  config.bytes_warning = settings.bytesWarning;
  config.parser_debug = settings.debugParser;
  config.install_signal_handlers = settings.signalHandlers;
  config.parse_argv = 0;
  const auto append = [](PyWideStringList& list, const std::vector<std::string>& words) {
    for (const std::string& word : words) PyWideStringList_Append(&list, Decode(word).c_str());
  };
  PyPreConfig early;
  PyPreConfig_InitPythonConfig(&early);
  early.use_environment = settings.useEnvironment;
  early.isolated = settings.isolated;
  // Read before all other options, and so not by the configuration.
  for (const std::string& option : settings.extended) {
    if (option == "utf8" || option == "utf8=1") early.utf8_mode = 1;
    if (option == "utf8=0") early.utf8_mode = 0;
    if (option == "dev") early.dev_mode = 1;
  }
  PyStatus status = Py_PreInitialize(&early);
  const std::wstring program = PyStatus_Exception(status) ? std::wstring() : Decode(settings.program);
  if (!PyStatus_Exception(status)) status = PyConfig_SetString(&config, &config.program_name, program.c_str());
  if (!PyStatus_Exception(status)) {
    append(config.warnoptions, settings.warnings);
    append(config.xoptions, settings.extended);
    status = Py_InitializeFromConfig(&config);
  }
  PyConfig_Clear(&config);
  if (!PyStatus_Exception(status)) return "";
  return status.err_msg ? status.err_msg : "unknown reason";
}

namespace {

constexpr const char* kNoSyntaxError = "no syntax error";

// What is wrong with a text, and which bytes of it are blamed; no message where nothing is wrong.
struct Fault {
  std::string message;
  size_t begin = 0, end = 0;
};

// The byte where a place of an error is: lines and bytes, both counted from 1.
size_t ByteAt(const std::string& source, int line, int column) {
  size_t at = 0;
  for (; line > 1 && at < source.size(); ++at) line -= source[at] == '\n';
  return std::min(source.size(), at + size_t(std::max(column, 1)) - 1);
}

// The pending error, taken away. The message is kNoSyntaxError for what isn't a SyntaxError.
Fault TakeFault(const std::string& source) {
  PyObject *type, *value, *traceback;
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  const bool syntax = type && PyErr_GivenExceptionMatches(type, PyExc_SyntaxError);
  PyObject* details = syntax ? PyObject_GetAttrString(value, "args") : nullptr;
  PyObject* ignored;
  const char* message;
  int line, column, endLine, endColumn;
  Fault fault{kNoSyntaxError};
  if (details && PyArg_ParseTuple(details, "s(OiiOii)", &message, &ignored, &line, &column, &ignored, &endLine,
                                  &endColumn))
    fault = {message, ByteAt(source, line, column), ByteAt(source, endLine, endColumn)};
  fault.end = std::max(fault.begin, fault.end);
  PyErr_Clear();
  Py_XDECREF(details);
  Py_XDECREF(type);
  Py_XDECREF(value);
  Py_XDECREF(traceback);
  return fault;
}

// Parsing warns in this version; a test says nothing, whatever the filters are. The rule goes into the
// list itself: `catch_warnings` would make the interpreter forget which warnings were given already.
class IgnoredWarnings {
 public:
  IgnoredWarnings() {
    PyObject* module = PyImport_ImportModule("warnings");
    filters_ = module ? PyObject_GetAttrString(module, "filters") : nullptr;
    rule_ = Py_BuildValue("(sOOOi)", "ignore", Py_None, PyExc_Warning, Py_None, 0);
    if (!filters_ || !PyList_Check(filters_) || !rule_ || PyList_Insert(filters_, 0, rule_) < 0)
      Py_CLEAR(rule_);
    Py_XDECREF(module);
    PyErr_Clear();
  }
  ~IgnoredWarnings() {
    if (rule_) Py_XDECREF(PyObject_CallMethod(filters_, "remove", "(O)", rule_));
    PyErr_Clear();
    Py_XDECREF(rule_);
    Py_XDECREF(filters_);
  }
  IgnoredWarnings(const IgnoredWarnings&) = delete;
  IgnoredWarnings& operator=(const IgnoredWarnings&) = delete;

 private:
  PyObject* filters_ = nullptr;
  PyObject* rule_ = nullptr;
};

// The text parsed as one statement of a console.
Fault ParseSingle(const std::string& source, int options) {
  PyCompilerFlags flags = {options | PyCF_ONLY_AST, PY_MINOR_VERSION};
  PyObject* tree = Py_CompileStringExFlags(source.c_str(), "<console>", Py_single_input, &flags, -1);
  if (!tree) return TakeFault(source);
  Py_DECREF(tree);
  return {};
}

bool IsOneOf(std::string_view letters, char letter) { return letters.find(letter) != std::string_view::npos; }

bool Contains(const std::string& text, const char* words) { return text.find(words) != std::string::npos; }

// How long the prefix of a format or of bytes is that starts at that byte; 0 where none does.
size_t TextPrefixAt(const std::string& source, size_t at) {
  const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
  if (at > 0 && isWord(source[at - 1])) return 0;
  const char first = source[at], second = at + 1 < source.size() ? source[at + 1] : '\0';
  if (IsOneOf("FfBb", first) && IsOneOf("'\"", second)) return 1;
  const bool pair =
      (IsOneOf("FfBb", first) && IsOneOf("Rr", second)) || (IsOneOf("Rr", first) && IsOneOf("FfBb", second));
  return pair && at + 2 < source.size() && IsOneOf("'\"", source[at + 2]) ? 2 : 0;
}

// 3.7 looks into texts only after parsing: here none is a format, bytes or badly escaped any more,
// and each begins and ends where it did.
std::string WithHarmlessTexts(const std::string& source) {
  std::string result;
  for (size_t at = 0; at < source.size();) {
    if (source[at] == '\\' && at + 1 < source.size() && IsOneOf("NUux", source[at + 1])) {
      result += "\\n";
      at += 2;
    } else if (const size_t length = TextPrefixAt(source, at)) {
      result += 'r';
      at += length;
    } else {
      result += source[at++];
    }
  }
  return result;
}

enum class Mend { kReplace, kReplaceArguments, kInsert };

// What 3.7 finds wrong only after parsing, or not at all, and what to write there so that this
// version parses on. A number is followed by a name there without a space.
constexpr struct {
  const char* message;
  Mend how;
  const char* text;
} kMends[] = {
    {"cannot assign to ", Mend::kReplace, "x"},
    {"expression cannot contain assignment", Mend::kReplace, "x"},
    {"illegal expression for augmented assignment", Mend::kReplace, "x"},
    {"illegal target for annotation", Mend::kReplace, "x"},
    {"only single target", Mend::kReplace, "x"},
    {"cannot delete ", Mend::kReplace, "x"},
    {"cannot use starred expression here", Mend::kReplace, "x"},
    {"Generator expression must be parenthesized", Mend::kReplace, "x"},
    {"iterable argument unpacking follows", Mend::kReplace, "x"},
    {"iterable unpacking cannot be used in comprehension", Mend::kReplace, "x"},
    {"dict unpacking cannot be used in dict comprehension", Mend::kReplace, "x:"},
    {"non-default argument follows", Mend::kReplace, "x=x"},
    {"positional argument follows keyword argument", Mend::kReplaceArguments, "x"},
    {"named arguments must follow bare *", Mend::kInsert, "x"},
    {"trailing comma not allowed", Mend::kInsert, "x"},
    {"invalid decimal literal", Mend::kInsert, " "},
    {"invalid hexadecimal literal", Mend::kInsert, " "},
    {"invalid imaginary literal", Mend::kInsert, " "},
};

// Whether the fault is one of those and the source is without it now.
bool MendFault(std::string& source, const Fault& fault) {
  for (const auto& mend : kMends) {
    if (!Contains(fault.message, mend.message) || fault.begin >= source.size()) continue;
    if (mend.how == Mend::kInsert) {
      // Ahead of what ends a list, behind a digit, a star or a comma.
      source.insert(fault.begin + !IsOneOf("):;\n", source[fault.begin]), mend.text);
    } else if (mend.how == Mend::kReplaceArguments) {
      // The place is behind all arguments that are well-formed but for their order.
      size_t begin = fault.begin;
      int depth = 0;
      for (; begin > 0 && depth >= 0; --begin)
        depth += IsOneOf(")]}", source[begin - 1]) - IsOneOf("([{", source[begin - 1]);
      if (depth >= 0) return false;
      source.replace(begin + 1, fault.begin - begin - 1, mend.text);
    } else {
      const bool keyword = fault.end > fault.begin && source[fault.end - 1] == '=';
      const size_t end = fault.end - keyword;
      const auto isWord = [&](size_t at) {
        return at < source.size() && (std::isalnum(uint8_t(source[at])) || source[at] == '_');
      };
      // A text may stand beside a word without a space, which a name may not.
      source.replace(fault.begin, end - fault.begin,
                     (isWord(fault.begin - 1) ? " " : "") + std::string(mend.text) + (isWord(end) ? " " : ""));
    }
    return true;
  }
  return false;
}

// A bracket or a word that the parser stumbles over may hide such a fault ahead of it. It shows when
// something ordinary follows instead.
bool MendAhead(std::string& source, const Fault& fault) {
  const size_t cut = Contains(fault.message, "invalid syntax") ? fault.end : fault.begin;
  std::string head = source.substr(0, cut) + " x";
  const Fault hidden = ParseSingle(head, 0);
  if (hidden.message.empty() || hidden.end > cut || !MendFault(head, hidden)) return false;
  source.replace(0, cut, head, 0, head.size() - 2);
  return true;
}

}  // namespace

// The answers are those of the parser of 3.7: an open text is wrong, a bracket too many at the
// very end may still be mended, and a statement that only a backslash prolongs is complete. What
// that parser lets pass is mended until this one gets as far; what only one of the two languages
// has is judged by the own one, and so is depth of nesting.
int TestCompleteness(const char* text) {
  const IgnoredWarnings ignored;
  std::string source = text;
  while (source.size() > 2 && source.ends_with("\\\n")) source.resize(source.size() - 2);
  if (ParseSingle(source, 0).message.empty()) return 1;
  source = WithHarmlessTexts(source);
  for (int mends = 0; mends < 30; ++mends) {
    const Fault fault = ParseSingle(source, 0);
    if (fault.message.empty()) return 1;
    for (const char* wrong : {kNoSyntaxError, "unterminated ", "starred expression in a dictionary value"})
      if (Contains(fault.message, wrong)) return -1;
    if (MendFault(source, fault) || MendAhead(source, fault)) continue;
    const bool bracket =
        Contains(fault.message, "unmatched ") || Contains(fault.message, "closing parenthesis ");
    if (!bracket || !IsOneOf(")]}", source.back()))
      return ParseSingle(source, PyCF_ALLOW_INCOMPLETE_INPUT).message == "incomplete input" ? 0 : -1;
    // No statement has this either, but it stops the parser and not the tokenizer, which reads ahead.
    source.back() = '?';
  }
  return -1;
}

bool FaultLinesMayLackEnd() { return true; }

bool InterruptEndsBySignal() { return true; }

std::string ScriptFileName(const std::string& path) {
  std::error_code gone;
  const std::filesystem::path absolute = std::filesystem::absolute(path, gone);
  return gone ? path : absolute.string();
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

PyObject* ToInteger(PyObject* object) {
  const PyNumberMethods* methods = Py_TYPE(object)->tp_as_number;
  if (PyLong_Check(object)) {
    Py_INCREF(object);
    return object;
  }
  if (!methods || !methods->nb_int)
    return RaiseFormatted(PyExc_TypeError, "an integer is required (got type %.200s)",
                          Py_TYPE(object)->tp_name);
  PyObject* integer = methods->nb_int(object);
  if (!integer || PyLong_CheckExact(integer)) return integer;
  const char* name = Py_TYPE(integer)->tp_name;
  if (!PyLong_Check(integer))
    RaiseFormatted(PyExc_TypeError, "__int__ returned non-int (type %.200s)", name);
  else if (PyErr_WarnFormat(
               PyExc_DeprecationWarning, 1,
               "__int__ returned non-int (type %.200s).  The ability to return an instance of a "
               "strict subclass of int is deprecated, and may not be supported in a future version "
               "of Python.",
               name) == 0)
    return integer;
  Py_DECREF(integer);
  return nullptr;
}

}  // namespace qlx
