// The Python generator. It is not registered yet.

#include "nodes/nodes.h"

namespace qlx {

void RegisterPythonGenerator() {}

}  // namespace qlx
