// What a document holds.

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <set>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "documents/documents.h"

namespace host {
namespace {

// In words of GetEditorMode and GetRenderMode.
constexpr int32_t kHidden = 1, kAsParent = 2;

bool IsShown(const BaseObject* object, bool inEditor) {
  for (; object; object = As<BaseObject>(object->up)) {
    const int32_t mode = inEditor ? object::GetEditorMode(object) : object::GetRenderMode(object);
    if (mode != kAsParent) return mode != kHidden;
  }
  return true;
}

template <class Element>
Element* FindNamed(GeListHead* head, std::string_view name) {
  Element* found = nullptr;
  const auto look = [&](GeListNode& node) {
    auto* element = found ? nullptr : As<Element>(&node);
    if (element && std::string_view(element->name) == name) found = element;
  };
  if (head) Walk(*head, look, true, false);
  return found;
}

// A name that no other element of the list has: a number is put behind it.
void MakeNameUnique(BaseList2D& element, GeListHead& head) {
  const std::string_view name = element.name;
  bool isTaken = false;
  std::vector<int> numbers;  // behind the same name
  const auto note = [&](GeListNode& node) {
    if (&node == &element || IsHead(node)) return;
    std::string_view other = static_cast<BaseList2D&>(node).name;
    if (!other.starts_with(name)) return;
    other.remove_prefix(name.size());
    if (other.empty()) isTaken = true;
    int number = 0;
    if (!other.starts_with('.') || other.substr(1, 1) < "1") return;
    const auto [end, error] = std::from_chars(other.data() + 1, other.data() + other.size(), number);
    if (error == std::errc() && end == other.data() + other.size()) numbers.push_back(number);
  };
  Walk(head, note, true, false);
  if (!isTaken) return;
  std::ranges::sort(numbers);
  int free = 1;
  for (const int number : numbers) free += number == free;
  element.name = Text(fmt::format("{}.{}", name, free));
  Touch(element, DIRTYFLAGS_DATA);
}

HostBool InsertInto(BaseDocument* document, int32_t branch, BaseList2D* element, BaseList2D* parent,
                    BaseList2D* pred, bool checkName) {
  GeListHead* head = As<BaseDocument>(document) ? Branch(*document, branch) : nullptr;
  if (!head || !element || element->kind != head->kind) return 0;
  if (!listhead::Insert(head, element, parent, pred)) return 0;
  if (checkName) MakeNameUnique(*element, *head);
  return 1;
}

// The elements that hold pictures.
bool IsPainted(const QLXAtom& atom) { return atom.kind == Kind::kMaterial || atom.kind == Kind::kShader; }

void AddPictures(GeListNode& root, std::set<std::string>& known, BaseContainer& files) {
  Walk(root, [&](GeListNode& node) {
    if (IsHead(node) || !IsPainted(node)) return;
    const BaseContainer& data = static_cast<BaseList2D&>(node).data;
    for (int32_t i = 0; i < container::GetCount(&data); ++i) {
      const HostGeData* value = container::GetIndexData(&data, i);
      if (!value || value->type != HOST_DATA_FILENAME) continue;
      const std::string_view path = View(&value->value.filename);
      if (!path.empty() && known.emplace(path).second)
        container::SetData(&files, container::GetCount(&files), value);
    }
  });
}

}  // namespace

bool IsIn(const GeListNode& node, const BaseDocument& document, int32_t branch) {
  const GeListHead* head = HeadOf(node);
  return head && head == FindBranch(document, branch);
}

}  // namespace host

namespace host::document {

BaseObject* GetFirstObject(const BaseDocument* self) { return FirstIn<BaseObject>(self, kTypeObject); }

BaseMaterial* GetFirstMaterial(const BaseDocument* self) { return FirstIn<BaseMaterial>(self, kTypeMaterial); }

BaseList2D* GetFirstRenderData(const BaseDocument* self) { return FirstIn<BaseList2D>(self, kTypeRenderData); }

HostBool InsertObject(BaseDocument* self, BaseObject* op, BaseObject* parent, BaseObject* pred,
                      HostBool checknames) {
  return InsertInto(self, kTypeObject, op, parent, pred, checknames);
}

HostBool InsertMaterial(BaseDocument* self, BaseMaterial* mat, BaseMaterial* pred, HostBool checknames) {
  return InsertInto(self, kTypeMaterial, mat, nullptr, pred, checknames);
}

HostBool InsertRenderData(BaseDocument* self, BaseList2D* rd, BaseList2D* parent, BaseList2D* pred) {
  return InsertInto(self, kTypeRenderData, rd, parent, pred, false);
}

HostBool InsertRenderDataLast(BaseDocument* self, BaseList2D* rd) {
  GeListHead* head = As<BaseDocument>(self) ? Branch(*self, kTypeRenderData) : nullptr;
  if (!head || !rd || rd->kind != Kind::kRenderData) return 0;
  return listhead::InsertLast(head, rd);
}

// The code of what ends may destroy the document, or fill it anew.
void Flush(BaseDocument* self) {
  if (!As<BaseDocument>(self)) return;
  const Hold hold(*self);
  for (const int32_t branch : {kTypeObject, kTypeMaterial, kTypeLayer, kTypeRenderData})
    if (GeListHead* head = hold.IsAlive() ? FindBranch(*self, branch) : nullptr) listhead::FlushAll(head);
}

BaseObject* GetHighest(const BaseDocument* self, int32_t type, HostBool editor) {
  if (!As<BaseDocument>(self)) return nullptr;
  BaseObject* found = nullptr;
  WalkObjects(*self, [&](BaseObject& object) {
    if (found || !NodeTypes::Derives(object.type, type)) return;
    if (object::GetDeformMode(&object) && IsShown(&object, editor)) found = &object;
  });
  return found;
}

BaseMaterial* SearchMaterial(const BaseDocument* self, const HostString* name) {
  return As<BaseDocument>(self) ? FindNamed<BaseMaterial>(FindBranch(*self, kTypeMaterial), View(name))
                                : nullptr;
}

BaseObject* SearchObject(const BaseDocument* self, const HostString* name) {
  return As<BaseDocument>(self) ? FindNamed<BaseObject>(FindBranch(*self, kTypeObject), View(name)) : nullptr;
}

BaseContainer* GetAllTextures(const BaseDocument* self, HostBool /*isNet*/, const AtomArray* nodes) {
  if (!As<BaseDocument>(self)) return nullptr;
  auto files = std::make_unique<BaseContainer>();
  std::set<std::string> known;
  if (!nodes) {
    AddPictures(const_cast<BaseDocument&>(*self), known, *files);
  } else {
    for (int32_t i = 0; i < atomarray::GetCount(nodes); ++i)
      if (auto* node = As<GeListNode>(atomarray::GetIndex(nodes, i))) AddPictures(*node, known, *files);
  }
  return files.release();
}

GeListHead* GetLayerObjectRoot(BaseDocument* self) {
  return As<BaseDocument>(self) ? Branch(*self, kTypeLayer) : nullptr;
}

}  // namespace host::document
