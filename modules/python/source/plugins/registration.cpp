// Classes that plug-ins registered with the host. None can register yet.

#include "plugins/plugins.h"

namespace qlx {

void DropRegisteredClasses() {}

}  // namespace qlx
