// The Python field. It is not registered yet.

#include "cxgfx/fields.h"

namespace qlx {

void RegisterPythonField() {}

}  // namespace qlx
