// What is selected in a document. The bit is the element's own; the order is that of the calls here.

#include <algorithm>
#include <atomic>
#include <vector>

#include "boundary/host.h"
#include "documents/documents.h"
#include "scene/object.h"

namespace host {
namespace {

bool IsActive(const QLXAtom& atom) { return atom.bits & kBitActive; }

// The elements of a kind that can be selected, in the order of the scene.
template <class Visit>
void WalkKind(const BaseDocument& document, Kind kind, Visit visit) {
  const auto walkList = [&](GeListHead* head) {
    const auto pass = [&](GeListNode& node) {
      if (!IsHead(node) && node.kind == kind) visit(static_cast<BaseList2D&>(node));
    };
    if (head) Walk(*head, pass, true, false);
  };
  if (kind != Kind::kTag) return walkList(FindBranch(document, InfoOf(kind).base));
  WalkObjects(document, [&](BaseObject& object) { walkList(FindBranch(object, kTypeTag)); });
}

constexpr Kind kSelectable[] = {Kind::kObject, Kind::kTag, Kind::kMaterial};

std::vector<BaseList2D*> SelectedOf(const BaseDocument* document, Kind kind) {
  std::vector<BaseList2D*> selected;
  if (!As<BaseDocument>(document)) return selected;
  WalkKind(*document, kind, [&](BaseList2D& element) {
    if (IsActive(element)) selected.push_back(&element);
  });
  return selected;
}

BaseList2D* OnlyOne(const std::vector<BaseList2D*>& selected) {
  return selected.size() == 1 ? selected.front() : nullptr;
}

bool IsBelowSelected(const GeListNode& node) {
  for (const GeListNode* up = node.up; up; up = up->up)
    if (IsActive(*up)) return true;
  return false;
}

void SortBySelection(std::vector<BaseList2D*>& elements) {
  const auto place = [](const BaseList2D* element) { return element->extras ? element->extras->selected : 0; };
  std::stable_sort(elements.begin(), elements.end(),
                   [&](const BaseList2D* a, const BaseList2D* b) { return place(a) < place(b); });
}

void Put(AtomArray* array, const std::vector<BaseList2D*>& elements) {
  for (BaseList2D* element : elements) atomarray::Append(array, element);
}

void SetSelected(BaseList2D& element, bool isSelected) {
  static std::atomic<uint64_t> latest{0};
  if (isSelected) element.Extra().selected = ++latest;
  isSelected ? baselist::SetBit(&element, kBitActive) : baselist::DelBit(&element, kBitActive);
}

void ClearKind(const BaseDocument& document, Kind kind) {
  for (BaseList2D* element : SelectedOf(&document, kind)) SetSelected(*element, false);
}

// Caches are nobody's to select, and the document is what is selected in.
bool MaySelect(const BaseList2D& element, const BaseDocument& document) {
  if (&element == &document) return false;
  for (const GeListNode* node = &element; node && node != &document;) {
    const GeListHead* head = HeadOf(*node);
    if (!head || head->branch == kCacheBranch || head->branch == kDeformBranch) return false;
    node = OwnerOf(*head);
  }
  return IsInside(element, document);
}

void Select(BaseDocument* document, BaseList2D* element, Kind kind, int32_t mode) {
  if (!As<BaseDocument>(document)) return;
  if (element && (element->kind != kind || !MaySelect(*element, *document))) return;
  if (mode == SELECTION_NEW) ClearKind(*document, kind);
  if (element) SetSelected(*element, mode != SELECTION_SUB);
}

}  // namespace
}  // namespace host

namespace host::document {

BaseObject* GetActiveObject(BaseDocument* self) {
  return As<BaseObject>(OnlyOne(SelectedOf(self, Kind::kObject)));
}

BaseMaterial* GetActiveMaterial(const BaseDocument* self) {
  return As<BaseMaterial>(OnlyOne(SelectedOf(self, Kind::kMaterial)));
}

BaseTag* GetActiveTag(const BaseDocument* self) { return As<BaseTag>(OnlyOne(SelectedOf(self, Kind::kTag))); }

BaseList2D* GetActiveRenderData(const BaseDocument* self) {
  const std::vector<BaseList2D*> selected = SelectedOf(self, Kind::kRenderData);
  return selected.empty() ? GetFirstRenderData(self) : selected.front();
}

void GetActiveObjects(const BaseDocument* self, AtomArray* array, int32_t flags) {
  std::vector<BaseList2D*> selected = SelectedOf(self, Kind::kObject);
  if (!(flags & GETACTIVEOBJECTFLAGS_CHILDREN))
    std::erase_if(selected, [](const BaseList2D* object) { return IsBelowSelected(*object); });
  if (flags & GETACTIVEOBJECTFLAGS_SELECTIONORDER) SortBySelection(selected);
  Put(array, selected);
}

void GetOrderedActiveObjects(const BaseDocument* self, AtomArray* array) {
  GetActiveObjects(self, array, GETACTIVEOBJECTFLAGS_CHILDREN | GETACTIVEOBJECTFLAGS_SELECTIONORDER);
}

void GetActiveTags(const BaseDocument* self, AtomArray* array) { Put(array, SelectedOf(self, Kind::kTag)); }

void GetActiveMaterials(const BaseDocument* self, AtomArray* array) {
  Put(array, SelectedOf(self, Kind::kMaterial));
}

void GetSelection(const BaseDocument* self, AtomArray* array) {
  for (const Kind kind : kSelectable) Put(array, SelectedOf(self, kind));
}

void GetActiveObjectsFilter(const BaseDocument* self, AtomArray* array, HostBool children, int32_t type,
                            HostBool instanceof) {
  std::vector<BaseList2D*> selected = SelectedOf(self, Kind::kObject);
  std::erase_if(selected, [&](const BaseList2D* object) {
    if (!children && IsBelowSelected(*object)) return true;
    return type != -1 && !(instanceof ? NodeTypes::Derives(object->type, type) : object->type.id == type);
  });
  Put(array, selected);
}

BaseObject* GetRealActiveObject(const BaseDocument* self, const AtomArray* help, HostBool* multi) {
  if (multi) *multi = 0;
  if (!As<BaseDocument>(self)) return nullptr;
  std::vector<BaseList2D*> objects;
  if (help) {
    for (int32_t i = 0; i < atomarray::GetCount(help); ++i)
      if (auto* object = As<BaseObject>(atomarray::GetIndex(help, i)); object && IsInside(*object, *self))
        objects.push_back(object);
  } else {
    objects = SelectedOf(self, Kind::kObject);
  }
  if (objects.empty()) return nullptr;
  if (multi) *multi = objects.size() > 1;
  return As<BaseObject>(objects.front());
}

void SetActiveObject(BaseDocument* self, BaseObject* op, int32_t mode) {
  Select(self, op, Kind::kObject, mode);
}

void SetActiveTag(BaseDocument* self, BaseTag* tag, int32_t mode) { Select(self, tag, Kind::kTag, mode); }

void SetActiveMaterial(BaseDocument* self, BaseMaterial* mat, int32_t mode) {
  Select(self, mat, Kind::kMaterial, mode);
}

void SetActiveRenderData(BaseDocument* self, BaseList2D* rd) {
  if (rd) Select(self, rd, Kind::kRenderData, SELECTION_NEW);
}

void SetSelection(BaseDocument* self, BaseList2D* bl, int32_t mode) {
  if (!As<BaseDocument>(self) || !bl || !MaySelect(*bl, *self)) return;
  if (bl->kind == Kind::kRenderData) return SetActiveRenderData(self, bl);
  if (mode == SELECTION_NEW)
    for (const Kind kind : kSelectable) ClearKind(*self, kind);
  SetSelected(*bl, mode != SELECTION_SUB);
}

}  // namespace host::document
