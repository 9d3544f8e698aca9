// What the host calls back when documents change.
#ifndef SCENE_DOCUMENTS_H
#define SCENE_DOCUMENTS_H

namespace qlx {

void AllocDocumentCallbacks();
void FreeDocumentCallbacks();

}  // namespace qlx

#endif
