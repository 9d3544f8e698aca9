// The Python tag. It is not registered yet.

#include "nodes/nodes.h"

namespace qlx {

void RegisterPythonTag() {}

}  // namespace qlx
