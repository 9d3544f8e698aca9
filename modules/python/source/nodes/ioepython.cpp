// The Python effector. It is not registered yet.

#include "nodes/nodes.h"

namespace qlx {

void RegisterPythonEffector() {}

}  // namespace qlx
