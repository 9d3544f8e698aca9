// The source protector. It is not registered yet.

#include "plugins/plugins.h"

namespace qlx {

void RegisterSourceProtector() {}

}  // namespace qlx
