// The Python field layer. It is not registered yet.

#include "cxgfx/fields.h"

namespace qlx {

void RegisterPythonFieldLayer() {}

}  // namespace qlx
