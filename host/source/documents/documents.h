// The open documents, what documents hold, and what is selected of it.
#ifndef HOST_DOCUMENTS_DOCUMENTS_H
#define HOST_DOCUMENTS_DOCUMENTS_H

#include <filesystem>
#include <vector>

#include "kelvar.framework/source/tables/t_document.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"

// A list of atoms that others hand over. An atom that ends meanwhile is null in it.
struct AtomArray {
  std::vector<HostLink> links;
};

namespace host {

constexpr int32_t kBitActive = 1 << 1;

BaseDocument* MakeDocument();

// Puts a document behind the open ones, and makes it the active one.
void OpenDocument(BaseDocument& document);

// Ends the open documents; there is none from here on. Main thread, when no script runs any more.
void CloseDocuments();

// Opens the scene of a file and makes it the active document. Throws std::exception with the file and the
// reason. Main thread, while nobody else uses a scene.
void OpenScene(const std::filesystem::path& file);

// The first node of a list that is one of that class, from that node on.
template <class Element>
Element* FirstOf(GeListNode* node) {
  for (; node; node = node->next)
    if (auto* element = As<Element>(node)) return element;
  return nullptr;
}
template <class Element>
Element* FirstIn(const BaseDocument* document, int32_t branch) {
  const GeListHead* head = As<BaseDocument>(document) ? FindBranch(*document, branch) : nullptr;
  return head ? FirstOf<Element>(head->down) : nullptr;
}

// Calls `visit` for all objects of the document, those above ahead of those below them.
template <class Visit>
void WalkObjects(const BaseDocument& document, Visit visit) {
  GeListHead* objects = FindBranch(document, kTypeObject);
  if (!objects) return;
  const auto pass = [&](GeListNode& node) {
    if (auto* object = As<BaseObject>(&node)) visit(*object);
  };
  Walk(*objects, pass, true, false);
}

// Whether the node stands in one of the document's lists of that branch.
bool IsIn(const GeListNode& node, const BaseDocument& document, int32_t branch);

}  // namespace host

#endif
