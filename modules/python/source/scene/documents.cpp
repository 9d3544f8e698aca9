// What the host calls back when documents change. No script can ask for it yet.

#include "scene/documents.h"

namespace qlx {

void AllocDocumentCallbacks() {}
void FreeDocumentCallbacks() {}

}  // namespace qlx
