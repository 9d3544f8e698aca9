// The command line of the application.

#include "interpreter/lib_python_commandline.h"

#include <string_view>

#include "interpreter/lib_python_flags.h"
#include "kelvar/text.h"
#include "tavor/application.h"
#include "tavor/virtualmachine.h"

namespace qlx {
namespace {

struct Letter {
  char letter;
  uint32_t set, clear;
};

constexpr Letter kLetters[] = {
    {'i', kFlagInteractive | kFlagInspect, 0},
    {'u', kFlagUnbuffered, 0},
    {'q', kFlagQuiet, 0},
    {'v', kFlagVerbose, 0},
    {'d', kFlagDebugParser, 0},
    {'B', 0, kFlagWriteBytecode},
    {'E', 0, kFlagUseEnvironment},
    {'s', 0, kFlagUserSite},
    {'S', 0, kFlagImportSite},
    {'I', kFlagIsolated, kFlagUseEnvironment | kFlagUserSite},
};

// The letters that count: the second one means more.
struct Counted {
  char letter;
  uint32_t once, twice;
};

constexpr Counted kCounted[] = {
    {'O', kFlagOptimize, kFlagOptimizeMore},
    {'b', kFlagBytesWarning, kFlagBytesError},
};

bool ApplyLetter(char letter, uint32_t& flags) {
  for (const Letter& known : kLetters) {
    if (known.letter != letter) continue;
    flags = (flags | known.set) & ~known.clear;
    return true;
  }
  for (const Counted& known : kCounted) {
    if (known.letter != letter) continue;
    flags |= flags & known.once ? known.twice : known.once;
    return true;
  }
  return false;
}

// Walks over the arguments; each step takes one option.
class Reader {
 public:
  explicit Reader(const std::vector<std::string>& arguments) : arguments_(arguments) {
    line_.flags = kInterpreterFlags;
  }

  CommandLine Read() {
    while (next_ < arguments_.size() && !done_ && !line_.fault) Step(arguments_[next_++]);
    if (line_.operation == PYSTARTOPERATION_NONE && !done_) {
      line_.arguments = {""};
      line_.flags |= kFlagInteractive;
    }
    while (next_ < arguments_.size()) line_.arguments.push_back(arguments_[next_++]);
    return std::move(line_);
  }

 private:
  void Step(const std::string& argument) {
    if (argument == "-nogui") return;
    if (argument == "-") return Program(PYSTARTOPERATION_NONE, "", "-");
    if (argument == "--") return File();
    if (argument == "--version") return Finish(PYSTARTOPERATION_VERSION);
    if (argument == "--help") return Help();
    if (argument.empty() || argument[0] != '-')
      return Program(PYSTARTOPERATION_EXECUTE_FILE, argument, argument);
    if (argument[1] == '-') return Fault("unknown option " + argument);
    for (size_t i = 1; i < argument.size() && !done_ && !line_.fault; ++i) {
      if (!LetterAt(argument, i)) continue;
      return;
    }
  }

  // True when the letter has taken the rest of the argument.
  bool LetterAt(const std::string& argument, size_t place) {
    const char letter = argument[place];
    const std::string rest = argument.substr(place + 1);
    switch (letter) {
      case 'V':
        Finish(PYSTARTOPERATION_VERSION);
        return true;
      case 'h':
      case '?':
        Help();
        return true;
      case 'c':
      case 'm': {
        const std::string option = std::string("-") + letter;
        std::string value;
        if (!Value(option, rest, value)) return true;
        Program(letter == 'c' ? PYSTARTOPERATION_EXECUTE_CODE : PYSTARTOPERATION_EXECUTE_MODULE, value, option);
        return true;
      }
      case 'W':
      case 'X': {
        std::string value;
        if (!Value(std::string("-") + letter, rest, value)) return true;
        std::string& list = letter == 'W' ? line_.warnings : line_.extended;
        list += (list.empty() ? "" : "\n") + value;
        return true;
      }
      default:
        if (!ApplyLetter(letter, line_.flags)) Fault(std::string("unknown option -") + letter);
        return false;
    }
  }

  // The value of an option: the rest of its argument, or the next one.
  bool Value(const std::string& option, const std::string& rest, std::string& value) {
    if (!rest.empty()) {
      value = rest;
    } else if (next_ < arguments_.size()) {
      value = arguments_[next_++];
    } else {
      Fault("argument expected for the " + option + " option");
      return false;
    }
    return true;
  }

  void Program(int32_t operation, const std::string& argument, const std::string& name) {
    line_.argument = argument;
    line_.arguments = {name};
    if (operation == PYSTARTOPERATION_NONE) line_.flags |= kFlagInteractive;
    Finish(operation);
  }

  void File() {
    if (next_ == arguments_.size()) return;
    const std::string& file = arguments_[next_++];
    Program(PYSTARTOPERATION_EXECUTE_FILE, file, file);
  }

  void Help() {
    line_.help = true;
    done_ = true;
  }

  void Finish(int32_t operation) {
    line_.operation = operation;
    done_ = true;
  }

  void Fault(const std::string& text) { line_.fault = tavor::Error(text, HOST_RESULT_ILLEGAL_ARGUMENT); }

  const std::vector<std::string>& arguments_;
  size_t next_ = 1;
  bool done_ = false;
  CommandLine line_;
};

CommandLine ReadOnce() {
  std::vector<std::string> arguments;
  const int32_t count = tavor::application::GetArgumentCount();
  arguments.reserve(size_t(count));
  for (int32_t i = 0; i < count; ++i) arguments.emplace_back(kelvar::View(tavor::application::GetArgument(i)));
  CommandLine line = ParseCommandLine(arguments);
  if (line.fault) {
    line.fault = tavor::Error(ProgramName() + ": " + line.fault.Text(), HOST_RESULT_ILLEGAL_ARGUMENT);
    tavor::application::SetExitCode(2);
  }
  return line;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) { return Reader(arguments).Read(); }

std::string ProgramName() {
  const std::string path(kelvar::View(tavor::application::GetArgument(0)));
  return path.substr(path.rfind('/') + 1);
}

const CommandLine& ReadCommandLine() {
  static const auto* line = new CommandLine(ReadOnce());
  return *line;
}

}  // namespace qlx
