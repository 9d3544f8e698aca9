// The module qlx.documents.

#include "kit/i_row.h"
#include "scene/documents.h"
#include "scene/scene.h"

namespace qlx {

PyMethodDef g_documentsFunctions[] = {
    Function<&BaseDocument::GetActiveDocument>(
        "GetActiveDocument",
        "GetActiveDocument() -> qlx.documents.BaseDocument or None\n\nThe active document."),
    {},
};

// No script can ask for calls of the host yet.
void AllocDocumentCallbacks() {}
void FreeDocumentCallbacks() {}

}  // namespace qlx
