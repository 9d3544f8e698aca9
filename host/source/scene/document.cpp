#include "scene/document.h"

#include "boundary/host.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"
#include "tables/tables.h"

namespace host {
namespace {

constexpr int32_t kBitActive = 1 << 1;

struct OpenDocument {
  BaseDocument* document = nullptr;
  bool isClosed = false;
};

OpenDocument& Open() { return Lasting<OpenDocument>(); }

}  // namespace

void CloseDocuments() {
  BaseDocument* document = std::exchange(Open().document, nullptr);
  Open().isClosed = true;
  DestroyLater(document);
  ReclaimDestroyed();
}

}  // namespace host

namespace host::document {

// Made when it is first asked for, so that the start doesn't wait for it.
BaseDocument* GetActiveDocument() {
  OpenDocument& open = Open();
  if (!open.document && !open.isClosed) {
    open.document = As<BaseDocument>(NewNode(*FindType(kTypeDocument)));
    if (open.document) open.document->isFixed = true;
  }
  return open.document;
}

BaseObject* GetActiveObject(BaseDocument* self) {
  GeListHead* objects = As<BaseDocument>(self) ? FindBranch(*self, kTypeObject) : nullptr;
  if (!objects) return nullptr;
  BaseObject* active = nullptr;
  int count = 0;
  const auto visit = [&](GeListNode& node) {
    if (!(node.bits & kBitActive)) return;
    active = As<BaseObject>(&node);
    ++count;
  };
  Walk(*objects, visit, true, false);
  return count == 1 ? active : nullptr;
}

ParticleMasterSystem* GetParticleMasterSystem(BaseDocument*) { return nullptr; }

}  // namespace host::document
