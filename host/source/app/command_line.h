// The options of the command line that are the host's own.
#ifndef HOST_APP_COMMAND_LINE_H
#define HOST_APP_COMMAND_LINE_H

#include <string>
#include <utility>
#include <vector>

namespace host {

struct HostOptions {
  std::vector<std::string> arguments;             // what is left for the module, the program's name first
  std::string home;                               // --home DIR
  std::vector<std::string> plugins;               // --plugins DIR, in order
  std::string open;                               // --open FILE
  std::vector<std::pair<std::string, bool>> set;  // --set NAME=VALUE
};

// Takes the host's options out of the arguments, up to what is to run: that and what follows
// it belong to the script. Throws std::invalid_argument that names a wrong option.
HostOptions TakeHostOptions(std::vector<std::string> arguments);

}  // namespace host

#endif
