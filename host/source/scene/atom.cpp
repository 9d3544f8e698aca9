#include "scene/atom.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "boundary/host.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"

namespace host {
namespace {

constexpr int kFirstFlag = 1;  // the bit of DIRTYFLAGS_MATRIX
constexpr int kFlags = 6;

Mark* FindMark(const QLXAtom* atom, int32_t application) {
  if (!atom || !atom->extras) return nullptr;
  for (Mark& mark : atom->extras->marks)
    if (mark.application == application) return &mark;
  return nullptr;
}

void* Tell(const Mark& mark, int64_t* bytes) {
  if (bytes) *bytes = mark.bytes;
  return mark.memory.get();
}

// Changes through the view of a container are found when somebody looks.
void StampContainer(GeListNode& node) {
  if (IsHead(node)) return;
  auto& element = static_cast<BaseList2D&>(node);
  if (element.seenData == element.data.dirty) return;
  element.seenData = element.data.dirty;
  Stamp(element, InfoOf(element.kind).hdirty);
}

}  // namespace

void Touch(QLXAtom& atom, int32_t dirtyFlags) {
  for (int i = 0; i < kFlags; ++i)
    if (dirtyFlags >> (i + kFirstFlag) & 1) ++atom.dirty[i];
  int32_t mask = 0;
  if (dirtyFlags & DIRTYFLAGS_MATRIX) mask |= HDIRTYFLAGS_OBJECT_MATRIX;
  if (dirtyFlags & DIRTYFLAGS_CHILDREN) mask |= HDIRTYFLAGS_OBJECT_HIERARCHY;
  if (dirtyFlags & ~(DIRTYFLAGS_MATRIX | DIRTYFLAGS_CHILDREN)) mask |= InfoOf(atom.kind).hdirty;
  Stamp(atom, mask);
}

}  // namespace host

namespace host::atom {

HostBool SetLink(QLXAtom* self, HostLink* link) {
  if (!self || !link) return 0;
  self->Link(*link);
  return 1;
}

int32_t GetType(const QLXAtom* self) noexcept { return self ? self->type.id : 0; }

int32_t GetRealType(const QLXAtom* self) noexcept { return self ? self->type.id : 0; }

HostBool IsInstanceOf(const QLXAtom* self, int32_t id) {
  if (!self) return 0;
  if (NodeTypes::Derives(self->type, id)) return 1;
  const NodeRecord* plugin = PluginOf(*self);
  if (!plugin || !plugin->IsInstanceOf) return 0;
  const Hold hold(const_cast<QLXAtom&>(*self));
  return plugin->IsInstanceOf(PluginData(*self), &NodeOf(*self), id);
}

int32_t GetClassification(const QLXAtom* self) { return self && !IsHead(*self) ? InfoOf(self->kind).base : 0; }

uint32_t GetDirty(const QLXAtom* self, int32_t flags) noexcept {
  if (!self) return 0;
  uint32_t sum = 0;
  for (int i = 0; i < kFlags; ++i)
    if (flags >> (i + kFirstFlag) & 1) sum += self->dirty[i];
  if (flags & DIRTYFLAGS_DATA && !IsHead(*self)) sum += static_cast<const BaseList2D*>(self)->data.dirty;
  if (flags & DIRTYFLAGS_SELECT && self->kind == Kind::kObject && !IsHead(*self))
    sum += static_cast<const BaseObject*>(self)->SelectionChanges();
  return sum;
}

void SetDirty(QLXAtom* self, int32_t flags) {
  if (self) Touch(*self, flags);
}

uint32_t GetHDirty(const QLXAtom* self, int32_t mask) {
  if (!self) return 0;
  uint64_t latest = 0;
  Walk(NodeOf(const_cast<QLXAtom&>(*self)), [&](GeListNode& node) {
    StampContainer(node);
    if (mask & InfoOf(node.kind).hdirty) latest = std::max(latest, node.changed);
    if (mask & HDIRTYFLAGS_OBJECT_MATRIX) latest = std::max(latest, node.changedMatrix);
    if (mask & HDIRTYFLAGS_OBJECT_HIERARCHY) latest = std::max(latest, node.changedHierarchy);
    if (!node.extras) return;
    for (int bit = 0; bit < 8; ++bit)
      if (mask >> bit & 1) latest = std::max(latest, node.extras->changed[bit]);
  });
  return uint32_t(latest);
}

void SetHDirty(QLXAtom* self, int32_t mask) {
  if (self) Stamp(*self, mask);
}

void* FindUniqueID(const QLXAtom* self, int32_t appid, int64_t* bytes) {
  const Mark* mark = FindMark(self, appid);
  return mark ? Tell(*mark, bytes) : nullptr;
}

HostBool AddUniqueID(QLXAtom* self, int32_t appid, const void* mem, int64_t bytes) {
  if (!self || bytes < 0 || (!mem && bytes)) return 0;
  Mark made{appid, bytes, std::make_unique<char[]>(size_t(bytes) + 1)};  // never null
  if (bytes) std::memcpy(made.memory.get(), mem, size_t(bytes));
  if (Mark* mark = FindMark(self, appid)) {
    *mark = std::move(made);
  } else {
    self->Extra().marks.push_back(std::move(made));
  }
  return 1;
}

int32_t GetUniqueIDCount(const QLXAtom* self) {
  return self && self->extras ? int32_t(self->extras->marks.size()) : 0;
}

const void* GetUniqueIDIndex(const QLXAtom* self, int32_t index, int32_t* appid, int64_t* bytes) {
  if (index < 0 || index >= GetUniqueIDCount(self)) return nullptr;
  const Mark& mark = self->extras->marks[size_t(index)];
  if (appid) *appid = mark.application;
  return Tell(mark, bytes);
}

}  // namespace host::atom
