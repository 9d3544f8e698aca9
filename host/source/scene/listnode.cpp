#include "boundary/host.h"
#include "scene/kinds.h"
#include "scene/tree.h"
#include "tables/values.h"

namespace host {

BaseDocument* DocumentAround(const GeListNode* node) {
  for (const GeListNode* at = node; at;) {
    if (at->kind == Kind::kDocument && !IsHead(*at))
      return static_cast<BaseDocument*>(const_cast<GeListNode*>(at));
    at = IsHead(*at) ? OwnerOf(static_cast<const GeListHead&>(*at)) : ParentOf(*at);
  }
  return nullptr;
}

}  // namespace host

namespace host::listnode {
namespace {

constexpr int kBits = 64;

}  // namespace

GeListNode* GetNext(const GeListNode* self) noexcept {
  const ReadScene reads;
  return self ? self->next : nullptr;
}

GeListNode* GetPred(const GeListNode* self) noexcept {
  const ReadScene reads;
  return self ? self->pred : nullptr;
}

GeListNode* GetUp(const GeListNode* self) noexcept {
  const ReadScene reads;
  return self ? self->up : nullptr;
}

GeListNode* GetDown(const GeListNode* self) noexcept {
  const ReadScene reads;
  return self ? self->down : nullptr;
}

GeListNode* GetDownLast(const GeListNode* self) noexcept {
  const ReadScene reads;
  return self ? self->downLast : nullptr;
}

HostBool InsertBefore(GeListNode* self, GeListNode* next) {
  return self && next && PlaceBeside(*self, *next, true);
}

HostBool InsertAfter(GeListNode* self, GeListNode* pred) {
  return self && pred && PlaceBeside(*self, *pred, false);
}

HostBool InsertUnder(GeListNode* self, GeListNode* parent) {
  return self && parent && Place(*self, *parent, nullptr);
}

HostBool InsertUnderLast(GeListNode* self, GeListNode* parent) {
  return self && parent && Place(*self, *parent, parent->downLast);
}

void Remove(GeListNode* self) {
  if (self && !IsKept(*self)) TakeOut(*self);
}

GeListHead* GetListHead(const GeListNode* self) { return self ? HeadOf(*self) : nullptr; }

BaseDocument* GetDocument(const GeListNode* self) {
  if (!self) return nullptr;
  const NodeRecord* plugin = PluginOf(*self);
  if (!plugin || !plugin->GetDocument) return DocumentAround(self);
  const Hold hold(const_cast<GeListNode&>(*self));
  if (BaseDocument* document = plugin->GetDocument(PluginData(*self), self)) return document;
  return hold.IsAlive() ? DocumentAround(self) : nullptr;
}

int32_t GetNBit(const GeListNode* self, int32_t bit) {
  return self && self->extras && bit >= 0 && bit < kBits && (self->extras->nbits >> bit & 1);
}

HostBool ChangeNBit(GeListNode* self, int32_t bit, int32_t mode) {
  if (!self || bit < 0 || bit >= kBits || mode < NBITCONTROL_SET || mode > NBITCONTROL_TOGGLE) return 0;
  uint64_t& bits = self->Extra().nbits;
  const uint64_t one = uint64_t(1) << bit;
  bits = mode == NBITCONTROL_SET ? bits | one : mode == NBITCONTROL_CLEAR ? bits & ~one : bits ^ one;
  return 1;
}

HostBool IsDocumentRelated(const GeListNode* self) { return self && self->BelongsToDocuments(); }

int32_t GetBranchInfo(const GeListNode* self, HostBranch* branches, int32_t count, int32_t flags) {
  if (!self || !branches) return 0;
  const bool onlyFilled = flags & GETBRANCHINFO_ONLYWITHCHILDREN;
  // The tags of an object are always told, so that there is a list to put the first one into.
  if (self->kind == Kind::kObject && !IsHead(*self) && !onlyFilled)
    Branch(const_cast<GeListNode&>(*self), kTypeTag);
  if (!self->extras) return 0;
  int32_t filled = 0;
  for (GeListHead* head : self->extras->branches) {
    if (filled >= count) break;
    if (head->branch < 0) continue;  // the host's own
    if (onlyFilled && !head->down) continue;
    const KindInfo& info = InfoOf(head->kind);
    branches[filled++] = {head, MakeString(info.branch ? info.branch : "Motion Layers"), head->branch,
                          info.branchFlags};
  }
  return filled;
}

}  // namespace host::listnode
