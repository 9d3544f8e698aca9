// The Python graph node. It is not registered yet.

#include "nodes/nodes.h"

namespace qlx {

void RegisterPythonGraphNode() {}

}  // namespace qlx
