// Command lines of any content, an argument a line: what belongs to the script reaches it whole.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "interpreter/lib_python_commandline.h"
#include "tavor/virtualmachine.h"

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> arguments{"qlxpy"};
  std::string text(reinterpret_cast<const char*>(data), size);
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    arguments.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  host::HostOptions options;
  try {
    options = host::TakeHostOptions(arguments);
  } catch (const std::invalid_argument& fault) {
    Require(*fault.what() != 0);
    return 0;
  }
  Require(options.arguments.size() <= arguments.size());
  const qlx::CommandLine line = qlx::ParseCommandLine(options.arguments);
  if (line.fault || line.help || line.operation == PYSTARTOPERATION_VERSION) return 0;

  // `sys.argv` behind its first entry is the end of the command line, and what runs stands ahead.
  Require(!line.arguments.empty());
  const size_t count = line.arguments.size() - 1;
  Require(count < arguments.size());
  const size_t first = arguments.size() - count;
  Require(std::equal(line.arguments.begin() + 1, line.arguments.end(), arguments.begin() + ptrdiff_t(first)));
  const std::string& ahead = arguments[first - 1];
  switch (line.operation) {
    case PYSTARTOPERATION_EXECUTE_CODE:
    case PYSTARTOPERATION_EXECUTE_MODULE:
      Require(ahead.ends_with(line.argument));
      break;
    case PYSTARTOPERATION_EXECUTE_FILE:
      Require(ahead == line.argument && line.arguments[0] == line.argument);
      break;
    default:
      Require(line.arguments[0] == (count ? "-" : line.arguments[0]));
      Require(line.arguments[0].empty() || ahead == "-");
  }
  return 0;
}
