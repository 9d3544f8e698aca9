// The Python field and the Python field layer.
#ifndef CXGFX_FIELDS_H
#define CXGFX_FIELDS_H

namespace qlx {

void RegisterPythonField();
void RegisterPythonFieldLayer();

}  // namespace qlx

#endif
