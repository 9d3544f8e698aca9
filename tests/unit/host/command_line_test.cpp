#include "app/command_line.h"

#include <stdexcept>

#include "support.h"

namespace {

// What was taken, each by its option, and after a bar what is left; or the words of the fault.
std::string Describe(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "qlxpy");
  try {
    const host::HostOptions options = host::TakeHostOptions(arguments);
    EXPECT_EQ(options.arguments.at(0), "qlxpy");
    std::string text;
    if (!options.home.empty()) text += "home:" + options.home + " ";
    for (const std::string& folder : options.plugins) text += "plugins:" + folder + " ";
    if (!options.open.empty()) text += "open:" + options.open + " ";
    for (const auto& [name, value] : options.set) text += name + (value ? ":1 " : ":0 ");
    text += "|";
    for (size_t i = 1; i < options.arguments.size(); ++i) text += " " + options.arguments[i];
    return text;
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
}

TEST(CommandLine, HostOptionsAheadOfWhatRuns) {
  const struct {
    std::vector<std::string> arguments;
    std::string meaning;
  } cases[] = {
      {{}, "|"},
      {{"--home", "x"}, "home:x |"},
      {{"--home=x"}, "home:x |"},
      {{"--home=a=b"}, "home:a=b |"},
      {{"--home", "a", "--home", "b"}, "home:b |"},
      {{"--home", "--set"}, "home:--set |"},
      {{"--plugins", "a", "-B", "--plugins=b", "s.py"}, "plugins:a plugins:b | -B s.py"},
      {{"--open", "scene", "-c", "pass"}, "open:scene | -c pass"},
      {{"--set", "a=true", "--set=b=false", "--set", "c=1", "--set", "d=0"}, "a:1 b:0 c:1 d:0 |"},
      // What runs, and what follows it, belongs to the script.
      {{"s.py", "--home", "x"}, "| s.py --home x"},
      {{"-c", "--home", "--home=x"}, "| -c --home --home=x"},
      {{"-cpass", "--home"}, "| -cpass --home"},
      {{"-Bsc", "pass", "--home=x"}, "| -Bsc pass --home=x"},
      {{"-m", "m", "--set", "x"}, "| -m m --set x"},
      {{"--", "--home", "x"}, "| -- --home x"},
      {{"-", "--home", "x"}, "| - --home x"},
      {{"", "--home", "x"}, "|  --home x"},
      // The value of an option is no script.
      {{"-W", "error", "--home=x", "s.py"}, "home:x | -W error s.py"},
      {{"-W", "-c", "--home=x"}, "home:x | -W -c"},
      {{"-W", "--home=y", "--home=x"}, "home:x | -W --home=y"},
      {{"-Wc", "--home=x"}, "home:x | -Wc"},
      {{"-BX", "s.py", "--home=x"}, "home:x | -BX s.py"},
      {{"-nogui", "--home", "x", "-i"}, "home:x | -nogui -i"},
      {{"-nogui", "-m", "m", "-nogui"}, "| -nogui -m m -nogui"},
      {{"-W"}, "| -W"},
      {{"--homes=x", "--verbose", "--home", "y"}, "home:y | --homes=x --verbose"},
      {{"--home"}, "argument expected for the --home option"},
      {{"--home="}, "the value of the --home option is empty"},
      {{"--plugins", ""}, "the value of the --plugins option is empty"},
      {{"--open"}, "argument expected for the --open option"},
      {{"--set", "a"}, "--set a: NAME=VALUE is expected"},
      {{"--set", "=1"}, "--set =1: NAME=VALUE is expected"},
      {{"--set", "a="}, "--set a=: the value is neither true nor false"},
      {{"--set=a=yes"}, "--set a=yes: the value is neither true nor false"},
  };
  for (const auto& c : cases) EXPECT_EQ(Describe(c.arguments), c.meaning);
  EXPECT_TRUE(host::TakeHostOptions({}).arguments.empty());
}

}  // namespace
