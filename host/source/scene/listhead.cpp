#include "boundary/host.h"
#include "scene/tree.h"

namespace host::listhead {

GeListHead* Alloc() { return new GeListHead; }

void Free(GeListHead* self) {
  if (self && !self->isFixed) DestroyNow(self);
}

HostBool InsertFirst(GeListHead* self, GeListNode* node) {
  return self && node && Place(*node, *self, nullptr);
}

HostBool InsertLast(GeListHead* self, GeListNode* node) {
  return self && node && Place(*node, *self, self->downLast);
}

HostBool Insert(GeListHead* self, GeListNode* node, GeListNode* parent, GeListNode* pred) {
  if (!self || !node || node == parent || node == pred) return 0;
  if (parent && HeadOf(*parent) != self) return 0;
  if (!pred) return parent ? Place(*node, *parent, nullptr) : InsertFirst(self, node);
  if (parent ? pred->up != parent : HeadOf(*pred) != self) return 0;
  return Place(*node, *ParentOf(*pred), pred);
}

HostBool SetParent(GeListHead* self, GeListNode* parent) {
  const ChangeScene changes;
  if (!self || self->isFixed || (parent && IsInside(*parent, *self))) return 0;
  HostLink link{};
  if (parent) {
    parent->Link(link);
    parent->hasFreeHeads = true;
  }
  self->parent = link;
  return 1;
}

GeListNode* GetParent(const GeListHead* self) { return self ? OwnerOf(*self) : nullptr; }

GeListNode* GetFirst(const GeListHead* self) noexcept { return self ? self->down : nullptr; }

GeListNode* GetLast(const GeListHead* self) noexcept { return self ? self->downLast : nullptr; }

// What the host made, and what belongs to its owner for good, stays.
void FlushAll(GeListHead* self) {
  if (!self || self->branch < 0 || (self->owner && IsMade(*self->owner))) return;
  const Hold hold(*self);
  for (GeListNode* node = FirstLoose(*self); node && !node->isEnding; node = FirstLoose(*self))
    DestroyNow(node);
}

}  // namespace host::listhead
