// The module qlx.documents, and what the host calls back when documents change.
#ifndef SCENE_DOCUMENTS_H
#define SCENE_DOCUMENTS_H

#include <Python.h>

namespace qlx {

extern PyMethodDef g_documentsFunctions[];

void AllocDocumentCallbacks();
void FreeDocumentCallbacks();

}  // namespace qlx

#endif
