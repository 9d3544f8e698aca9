// The script manager. It is not registered yet.

#include "plugins/plugins.h"

namespace qlx {

void RegisterScriptManager() {}

}  // namespace qlx
