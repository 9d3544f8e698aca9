#include "scene/tree.h"

#include <atomic>

#include "boundary/host.h"
#include "scene/kinds.h"
#include "scene/object.h"

namespace host {
namespace {

std::atomic<uint64_t> g_clock{0};
std::atomic<uint64_t> g_moves{0};
std::atomic<int64_t> g_pluginNodes{0};

constexpr int32_t kAllKinds = 0xff;

// A node came or went below `parent`.
void CountMove(GeListNode& parent, const GeListNode& moved) {
  ++g_moves;
  ++parent.dirty[4];  // DIRTYFLAGS_CHILDREN
  int32_t mask = HDIRTYFLAGS_OBJECT_HIERARCHY | InfoOf(moved.kind).hdirty;
  if (moved.kind == Kind::kObject) mask |= HDIRTYFLAGS_OBJECT_MATRIX;
  // What is below it is not looked at: anything may be there.
  if (moved.down || moved.extras) mask = kAllKinds;
  Stamp(parent, mask);
}

void LinkIn(GeListNode& node, GeListNode& parent, GeListNode* pred) {
  node.pred = pred;
  node.next = pred ? pred->next : parent.down;
  (pred ? pred->next : parent.down) = &node;
  (node.next ? node.next->pred : parent.downLast) = &node;
  if (IsHead(parent)) {
    node.list = static_cast<GeListHead*>(&parent);
  } else {
    node.up = &parent;
  }
}

// Tells the plug-ins of all that ends with the node; whether it is there still.
bool TellEnd(GeListNode& root) {
  const Hold hold(root);
  for (;;) {
    std::vector<HostLink> told;
    const auto note = [&](GeListNode& node) {
      if (node.isPlugin) node.Link(told.emplace_back());
    };
    Walk(root, note, true, true, true);
    if (told.empty()) return true;
    const uint64_t moves = CountMoves();
    for (const HostLink& link : told) {
      const Hold one(link);
      auto* node = static_cast<GeListNode*>(one.Object());
      const bool stays = node && CountMoves() != moves && !IsInside(*node, root);
      if (!node || stays || !node->isPlugin) continue;
      EndPlugin(*node);
      if (node->type.record->Free) node->type.record->Free(PluginData(*node), node);
      if (!hold.IsAlive()) return false;
    }
  }
}

}  // namespace

GeListNode* OwnerOf(const GeListHead& head) {
  return head.owner ? head.owner : static_cast<GeListNode*>(link::GetLink(head.parent));
}

GeListHead* HeadOf(const GeListNode& node) {
  const GeListNode* at = &node;
  while (at->up) at = at->up;
  return at->list;
}

bool IsInside(const GeListNode& node, const GeListNode& outer) {
  for (const GeListNode* at = &node; at;) {
    if (at == &outer) return true;
    at = IsHead(*at) ? OwnerOf(static_cast<const GeListHead&>(*at)) : ParentOf(*at);
  }
  return false;
}

bool IsMade(const GeListNode& node) {
  if (node.isFixed && node.kind == Kind::kObject) return true;
  return node.list && node.list->owner && node.list->owner->isFixed && node.list->owner->kind == Kind::kObject;
}

bool IsKept(const GeListNode& node) { return node.isFixed || IsMade(node); }

bool MayStand(const NodeType& type, const GeListNode& parent) {
  if (parent.IsDead()) return false;
  const Kind kind = KindOf(type);
  if (!IsHead(parent)) {
    const bool isMade = parent.isFixed || (parent.list && parent.list->branch < 0);
    return !isMade && kind != Kind::kDocument && parent.kind != Kind::kDocument;
  }
  const auto& head = static_cast<const GeListHead&>(parent);
  if (!head.owner) return true;
  if (head.branch < 0 || IsMade(*head.owner) || kind == Kind::kDocument) return false;
  if (head.kind != Kind::kNone && head.kind != kind) return false;
  return kind != Kind::kTag || !HasFixedBlock(*head.owner, type.id);
}

bool Place(GeListNode& node, GeListNode& parent, GeListNode* pred) {
  return MayStand(node.type, parent) && PutIn(node, parent, pred);
}

bool PutIn(GeListNode& node, GeListNode& parent, GeListNode* pred) {
  const ChangeScene changes;
  if (IsKept(node) || node.IsDead() || parent.IsDead() || IsHead(node) || &node == &parent) return false;
  const bool isLeaf = !node.down && !node.hasFreeHeads && (!node.extras || node.extras->branches.empty());
  if (!isLeaf && IsInside(parent, node)) return false;
  if (pred == &node) return true;  // it stands there
  TakeOut(node);
  LinkIn(node, parent, pred);
  CountMove(parent, node);
  return true;
}

bool PlaceBeside(GeListNode& node, GeListNode& other, bool before) {
  if (&node == &other) return false;
  if (GeListNode* parent = ParentOf(other)) return Place(node, *parent, before ? other.pred : &other);
  // A chain that is in no list. Nothing that stands in `node` is in one. Beside a document nobody would own the
  // node: not its creator, because it has a document there, nor that.
  const ChangeScene changes;
  for (const GeListNode* one : {&node, &other})
    if (one->isFixed || one->IsDead() || IsHead(*one) || one->kind == Kind::kDocument) return false;
  TakeOut(node);
  node.pred = before ? other.pred : &other;
  node.next = before ? &other : other.next;
  if (node.pred) node.pred->next = &node;
  if (node.next) node.next->pred = &node;
  ++g_moves;
  return true;
}

void Append(GeListNode& made, GeListNode& parent) { LinkIn(made, parent, parent.downLast); }

void TakeOut(GeListNode& node) {
  const ChangeScene changes;
  GeListNode* parent = ParentOf(node);
  if (parent && !node.pred) parent->down = node.next;
  if (parent && !node.next) parent->downLast = node.pred;
  if (node.pred) node.pred->next = node.next;
  if (node.next) node.next->pred = node.pred;
  node.next = node.pred = node.up = nullptr;
  node.list = nullptr;
  if (parent) CountMove(*parent, node);
}

GeListNode* FirstLoose(const GeListNode& list) {
  GeListNode* node = list.down;
  while (node && node->isFixed) node = node->next;
  return node;
}

uint64_t CountMoves() { return g_moves; }
uint64_t CountStamps() { return g_clock; }

GeListHead* FindBranch(const GeListNode& node, int32_t id) {
  if (node.extras)
    for (GeListHead* head : node.extras->branches)
      if (head->branch == id) return head;
  return nullptr;
}

GeListHead* Branch(GeListNode& node, int32_t id) {
  if (GeListHead* head = FindBranch(node, id)) return head;
  if (node.IsDead()) return nullptr;
  auto head = std::make_unique<GeListHead>(node, id);
  node.Extra().branches.push_back(head.get());
  return head.release();
}

void Stamp(QLXAtom& atom, int32_t mask) {
  const uint64_t now = ++g_clock;
  const int32_t own = InfoOf(atom.kind).hdirty;
  if (mask & own) atom.changed = now;
  if (mask & HDIRTYFLAGS_OBJECT_MATRIX) atom.changedMatrix = now;
  if (mask & HDIRTYFLAGS_OBJECT_HIERARCHY) atom.changedHierarchy = now;
  mask &= kAllKinds & ~(own | HDIRTYFLAGS_OBJECT_MATRIX | HDIRTYFLAGS_OBJECT_HIERARCHY);
  if (!mask) return;
  try {
    for (int bit = 0; mask >> bit; ++bit)
      if (mask >> bit & 1) atom.Extra().changed[bit] = now;
  } catch (const std::bad_alloc&) {
    // Nobody is told; what changed is worth more.
  }
}

bool HavePluginNodes() { return g_pluginNodes > 0; }

void BeginPlugin(QLXAtom& atom) {
  atom.isPlugin = true;
  ++g_pluginNodes;
}

void EndPlugin(QLXAtom& atom) {
  if (!atom.isPlugin) return;
  atom.isPlugin = false;
  --g_pluginNodes;
}

}  // namespace host

// A chain of the whole subtree needs no memory: what stands below a node is one already, and comes to its end.
bool GeListNode::Leave() {
  if (isEnding) return false;
  isEnding = true;
  if (host::HavePluginNodes() && !host::TellEnd(*this)) return false;
  host::TakeOut(*this);
  const host::ChangeScene changes;
  GeListNode* last = this;
  for (GeListNode* node = this; node; node = node->next) {
    if (node->down) {
      last->next = node->down;
      last = node->downLast;
    }
    node->up = node->pred = node->down = node->downLast = nullptr;
    node->list = nullptr;
    if (!node->extras) continue;
    for (GeListHead* head : node->extras->branches) last = last->next = head;
    node->extras->branches.clear();
  }
  return true;
}
