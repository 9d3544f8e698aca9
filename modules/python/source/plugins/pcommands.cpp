// The script commands. None is registered yet.

#include "plugins/plugins.h"

namespace qlx {

void RegisterScriptCommands() {}

}  // namespace qlx
