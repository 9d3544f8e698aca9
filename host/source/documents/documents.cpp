// The list of open documents. They are a chain without a head: what stands there can neither be moved nor be
// freed by others, and nothing else comes to stand among them.

#include "documents/documents.h"

#include "boundary/host.h"
#include "tables/tables.h"

namespace host {
namespace {

struct OpenDocuments {
  BaseDocument *first = nullptr, *last = nullptr, *active = nullptr;
  bool isEnded = false;
};

OpenDocuments& Open() { return Lasting<OpenDocuments>(); }

// Out of wherever it stands.
void Detach(BaseDocument& document) {
  OpenDocuments& open = Open();
  if (open.first == &document) open.first = static_cast<BaseDocument*>(document.next);
  if (open.last == &document) open.last = static_cast<BaseDocument*>(document.pred);
  TakeOut(document);
}

void Attach(BaseDocument& document) {
  Detach(document);
  const ChangeScene changes;
  OpenDocuments& open = Open();
  document.isFixed = true;
  document.pred = open.last;
  if (open.last)
    open.last->next = &document;
  else
    open.first = &document;
  open.last = &document;
}

// The document is on its own then, and nobody's.
void Close(BaseDocument& document) {
  OpenDocuments& open = Open();
  if (open.active == &document)
    open.active = static_cast<BaseDocument*>(document.next ? document.next : document.pred);
  Detach(document);
}

}  // namespace

BaseDocument* MakeDocument() { return static_cast<BaseDocument*>(NewNode(*FindType(kTypeDocument))); }

void OpenDocument(BaseDocument& document) {
  if (Open().isEnded) return DestroyNow(&document);
  Attach(document);
  Open().active = &document;
}

void CloseDocuments() {
  OpenDocuments& open = Open();
  open.isEnded = true;
  while (BaseDocument* document = open.first) {
    Close(*document);
    DestroyLater(document);
  }
  ReclaimDestroyed();
}

}  // namespace host

namespace host::document {

BaseDocument* Alloc() { return MakeDocument(); }

// Made when it is first asked for, so that the start doesn't wait for it.
BaseDocument* GetActiveDocument() {
  OpenDocuments& open = Open();
  if (open.active || open.isEnded) return open.active;
  if (!open.first) Attach(*MakeDocument());
  return open.active = open.first;
}

BaseDocument* GetFirstDocument() {
  GetActiveDocument();
  return Open().first;
}

void SetActiveDocument(BaseDocument* self) {
  for (GeListNode* node = Open().first; node; node = node->next)
    if (node == self) Open().active = self;
}

void InsertBaseDocument(BaseDocument* self) {
  if (!As<BaseDocument>(self) || self->isEnding || self->IsDead()) return;
  GetActiveDocument();
  if (!Open().isEnded) Attach(*self);
}

void KillDocument(BaseDocument* self) {
  if (!As<BaseDocument>(self)) return;
  Close(*self);
  DestroyNow(self);
}

HostBool CloseAllDocuments() {
  while (Open().first) KillDocument(Open().first);
  return 1;
}

ParticleMasterSystem* GetParticleMasterSystem(BaseDocument*) { return nullptr; }

}  // namespace host::document

namespace host::atomarray {

AtomArray* Alloc() { return new AtomArray; }

void Free(AtomArray* self) { delete self; }

int32_t GetCount(const AtomArray* self) { return self ? int32_t(self->links.size()) : 0; }

QLXAtom* GetIndex(const AtomArray* self, int32_t index) {
  if (index < 0 || index >= GetCount(self)) return nullptr;
  return static_cast<QLXAtom*>(link::GetLink(self->links[size_t(index)]));
}

HostBool Append(AtomArray* self, QLXAtom* atom) {
  if (!self || !atom) return 0;
  HostLink link{};
  atom->Link(link);
  self->links.push_back(link);
  return 1;
}

}  // namespace host::atomarray
