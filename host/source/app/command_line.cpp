#include "app/command_line.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string_view>

namespace host {
namespace {

constexpr std::string_view kOwn[] = {"--home", "--plugins", "--open", "--set"};

// How many arguments an option of the interpreter takes up; 0: it ends the options.
size_t Length(std::string_view argument) {
  if (argument == "-nogui") return 1;
  if (argument.size() < 2 || argument[0] != '-' || argument == "--") return 0;
  if (argument[1] == '-') return 1;
  for (size_t i = 1; i < argument.size(); ++i) {
    if (argument[i] == 'c' || argument[i] == 'm') return 0;
    // The rest of the argument is the value, or the next argument is.
    if (argument[i] == 'W' || argument[i] == 'X') return i + 1 < argument.size() ? 1 : 2;
  }
  return 1;
}

bool ParseBool(const std::string& option, std::string_view value) {
  if (value == "1" || value == "true") return true;
  if (value == "0" || value == "false") return false;
  throw std::invalid_argument(fmt::format("--set {}: the value is neither true nor false", option));
}

void Apply(HostOptions& options, std::string_view name, const std::string& value) {
  if (value.empty()) throw std::invalid_argument(fmt::format("the value of the {} option is empty", name));
  if (name == "--home") options.home = value;
  if (name == "--plugins") options.plugins.push_back(value);
  if (name == "--open") options.open = value;
  if (name != "--set") return;
  const size_t equals = value.find('=');
  if (equals == value.npos || equals == 0)
    throw std::invalid_argument(fmt::format("--set {}: NAME=VALUE is expected", value));
  options.set.emplace_back(value.substr(0, equals),
                           ParseBool(value, std::string_view(value).substr(equals + 1)));
}

}  // namespace

HostOptions TakeHostOptions(std::vector<std::string> arguments) {
  HostOptions options;
  size_t next = 0;
  const auto keep = [&](size_t count) {
    for (; count > 0 && next < arguments.size(); --count)
      options.arguments.push_back(std::move(arguments[next++]));
  };
  keep(1);
  while (next < arguments.size()) {
    const std::string argument = arguments[next];
    const std::string_view name = std::string_view(argument).substr(0, argument.find('='));
    bool own = false;
    for (const std::string_view known : kOwn) own = own || name == known;
    if (own && name.size() < argument.size()) {
      Apply(options, name, argument.substr(name.size() + 1));
      ++next;
    } else if (own) {
      if (next + 1 == arguments.size())
        throw std::invalid_argument(fmt::format("argument expected for the {} option", name));
      Apply(options, name, arguments[next + 1]);
      next += 2;
    } else if (const size_t length = Length(argument)) {
      keep(length);
    } else {
      break;
    }
  }
  keep(arguments.size());
  return options;
}

}  // namespace host
