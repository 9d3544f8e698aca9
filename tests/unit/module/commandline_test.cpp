#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_flags.h"
#include "support.h"

namespace {

// What a command line became, in one line: what runs, `sys.argv`, the flags that differ from
// those of an empty line by their letters, and the values of -W and -X.
std::string Describe(const qlx::CommandLine& line) {
  if (line.fault) return "fault: " + line.fault.Text();
  if (line.help) return "help";
  const char* const operations[] = {"console", "code", "module", "file", "version"};
  std::string text = operations[line.operation];
  if (!line.argument.empty()) text += " '" + line.argument + "'";
  text += " [";
  for (size_t i = 0; i < line.arguments.size(); ++i) text += (i ? "," : "") + line.arguments[i];
  text += "] ";
  const std::pair<uint32_t, const char*> letters[] = {
      {qlx::kFlagInteractive, "i"},   {qlx::kFlagInspect, "+"},        {qlx::kFlagUnbuffered, "u"},
      {qlx::kFlagQuiet, "q"},         {qlx::kFlagVerbose, "v"},        {qlx::kFlagDebugParser, "d"},
      {qlx::kFlagWriteBytecode, "B"}, {qlx::kFlagUseEnvironment, "E"}, {qlx::kFlagUserSite, "s"},
      {qlx::kFlagImportSite, "S"},    {qlx::kFlagIsolated, "I"},       {qlx::kFlagOptimize, "O"},
      {qlx::kFlagOptimizeMore, "O"},  {qlx::kFlagBytesWarning, "b"},   {qlx::kFlagBytesError, "b"},
  };
  uint32_t rest = line.flags ^ qlx::kInterpreterFlags;
  for (const auto& [flag, letter] : letters) {
    if (rest & flag) text += letter;
    rest &= ~flag;
  }
  EXPECT_EQ(rest, 0u);
  if (!line.warnings.empty()) text += " W:" + line.warnings;
  if (!line.extended.empty()) text += " X:" + line.extended;
  return text;
}

TEST(CommandLine, Reads) {
  const struct {
    std::vector<std::string> arguments;
    std::string meaning;
  } cases[] = {
      {{}, "console [] i"},
      {{"-c", "pass", "-c", "-x"}, "code 'pass' [-c,-c,-x] "},
      {{"-cpass", "a"}, "code 'pass' [-c,a] "},
      {{"-c", "-x"}, "code '-x' [-c] "},
      {{"-c", "--", "--"}, "code '--' [-c,--] "},
      {{"-c", ""}, "code [-c] "},
      {{"-m", "json.tool", "-h"}, "module 'json.tool' [-m,-h] "},
      {{"-mjson"}, "module 'json' [-m] "},
      {{"s.py", "-i", "--help"}, "file 's.py' [s.py,-i,--help] "},
      {{"", "a"}, "file [,a] "},
      {{"--", "-s.py", "a"}, "file '-s.py' [-s.py,a] "},
      {{"--"}, "console [] i"},
      {{"-", "a", "-i"}, "console [-,a,-i] i"},
      {{"-i"}, "console [] i+"},
      {{"-i", "s.py"}, "file 's.py' [s.py] i+"},
      {{"-q", "-u", "-v", "-d", "s.py"}, "file 's.py' [s.py] uqvd"},
      {{"-Bsc", "pass"}, "code 'pass' [-c] Bs"},
      {{"-BSc1", "a"}, "code '1' [-c,a] BS"},
      {{"-E", "-I", "s.py"}, "file 's.py' [s.py] EsI"},
      {{"-O", "s.py"}, "file 's.py' [s.py] O"},
      {{"-OO", "s.py"}, "file 's.py' [s.py] OO"},
      {{"-O", "-bOb", "s.py"}, "file 's.py' [s.py] OObb"},
      {{"-OOO", "s.py"}, "file 's.py' [s.py] OO"},
      {{"-Wx", "-W", "y", "-W-c", "s.py"}, "file 's.py' [s.py]  W:x\ny\n-c"},
      {{"-W", "-c", "s.py"}, "file 's.py' [s.py]  W:-c"},
      {{"-BWx", "-Xutf8", "-X", "a=b", "s.py"}, "file 's.py' [s.py] B W:x X:utf8\na=b"},
      {{"-nogui", "s.py", "-nogui"}, "file 's.py' [s.py,-nogui] "},
      {{"-nogui"}, "console [] i"},
      {{"-B", "-nogui", "-c", "-nogui", "-nogui"}, "code '-nogui' [-c,-nogui] B"},
      {{"-V"}, "version [] "},
      {{"--version"}, "version [] "},
      {{"-BV", "s.py"}, "version [s.py] B"},
      {{"-h"}, "help"},
      {{"-?"}, "help"},
      {{"-Bh", "-z"}, "help"},
      {{"--help"}, "help"},
      {{"-c"}, "fault: argument expected for the -c option"},
      {{"-Bm"}, "fault: argument expected for the -m option"},
      {{"-W"}, "fault: argument expected for the -W option"},
      {{"-OX"}, "fault: argument expected for the -X option"},
      {{"-z", "s.py"}, "fault: unknown option -z"},
      {{"-Bzc", "pass"}, "fault: unknown option -z"},
      {{"--verbose"}, "fault: unknown option --verbose"},
      {{"--help=x"}, "fault: unknown option --help=x"},
      {{"---"}, "fault: unknown option ---"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> arguments = c.arguments;
    arguments.insert(arguments.begin(), "qlxpy");
    EXPECT_EQ(Describe(qlx::ParseCommandLine(arguments)), c.meaning);
  }
  EXPECT_EQ(Describe(qlx::ParseCommandLine({})), "console [] i");
}

}  // namespace
