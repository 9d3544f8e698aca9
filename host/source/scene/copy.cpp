// Copies of elements, with what is below them and in their branches.

#include <algorithm>

#include "boundary/host.h"
#include "scene/aliastrans.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"

namespace host {
namespace {

// An original and its copy that a plug-in takes part in.
struct PluginPair {
  HostLink from, to;
};

bool CopiesBranch(int32_t branch, int32_t flags) {
  if (branch == kCacheBranch || branch == kDeformBranch) return false;
  if (flags & COPYFLAGS_NO_BRANCHES) return false;
  return !(flags & COPYFLAGS_NO_ANIMATION && (branch == kTypeTrack || branch == kTypeNLA));
}

// Elements are, but neither heads nor plug-ins, whose type nobody else can have.
bool IsCopied(const QLXAtom& atom) { return !IsHead(atom) && FindType(atom.type.id) == &atom.type; }

// The node of the list that stands for one which belongs to its owner for good; null where there is none.
BaseList2D* FixedTwin(const GeListNode& node, const GeListNode& list) {
  for (GeListNode* other = list.down; other; other = other->next)
    if (other->isFixed && &other->type == &node.type) return static_cast<BaseList2D*>(other);
  return nullptr;
}

class Copier {
 public:
  Copier(int32_t flags, AliasTrans* trans) : flags_(flags), trans_(trans) {}

  // Puts copies of what is below `from` and in its branches into `to`, which is of the same type and in no
  // list. Runs no code of others.
  void CopyBelow(const BaseList2D& from, BaseList2D& to) {
    const ReadScene reads;
    std::vector<std::pair<const BaseList2D*, BaseList2D*>> pending{{&from, &to}};
    while (!pending.empty()) {
      const auto [source, target] = pending.back();
      pending.pop_back();
      const auto copyList = [&](const GeListNode& list, GeListNode& into) {
        for (const GeListNode* node = list.down; node; node = node->next) {
          BaseList2D* made = node->isFixed ? FixedTwin(*node, into) : nullptr;
          if (!made) Append(*(made = static_cast<BaseList2D*>(NewNode(node->type))), into);
          pending.emplace_back(static_cast<const BaseList2D*>(node), made);
          CopyOwn(*pending.back().first, *made);
        }
      };
      if (!(flags_ & COPYFLAGS_NO_HIERARCHY)) copyList(*source, *target);
      if (!source->extras) continue;
      for (const GeListHead* head : source->extras->branches)
        if (head->down && CopiesBranch(head->branch, flags_)) copyList(*head, *Branch(*target, head->branch));
    }
  }

  // Copies what the element itself has, but for the part of a plug-in: that is for Finish.
  void CopyOwn(const BaseList2D& from, BaseList2D& to) {
    to.name = from.name;
    to.data = from.data;
    to.dynamic = from.dynamic ? from.dynamic->Clone() : nullptr;
    if (!(flags_ & COPYFLAGS_NO_BITS)) to.bits = from.bits;
    from.CopyOwn(to);
    if (from.extras || to.extras) CopyExtras(from, to);
    if (trans_) trans_->Record(from, to);
    if (!from.isPlugin) return;
    PluginPair& pair = plugins_.emplace_back();
    const_cast<BaseList2D&>(from).Link(pair.from);
    to.Link(pair.to);
  }

  // Lets the plug-ins make their parts of the copies. Runs their code; false when one refuses.
  bool Finish() {
    for (const PluginPair& pair : plugins_) {
      const Hold fromHold(pair.from), toHold(pair.to);
      auto* from = static_cast<GeListNode*>(fromHold.Object());
      auto* to = static_cast<GeListNode*>(toHold.Object());
      if (!to) continue;
      if (!to->isPlugin && !MakeReady(*to)) return false;
      const NodeRecord* plugin = PluginOf(*to);
      if (!from || !fromHold.IsAlive() || !PluginOf(*from) || !plugin || !plugin->CopyTo) continue;
      if (!plugin->CopyTo(PluginData(*from), PluginData(*to), from, to, flags_, trans_)) return false;
    }
    return true;
  }

 private:
  void CopyExtras(const QLXAtom& from, QLXAtom& to) const {
    static const Extras kNone;
    const Extras& source = from.extras ? *from.extras : kNone;
    Extras& target = to.Extra();
    target.layer = source.layer;
    if (!(flags_ & COPYFLAGS_NO_BITS)) target.nbits = source.nbits;
    if (!(flags_ & COPYFLAGS_NO_ANIMATION)) target.keyframes = source.keyframes;
  }

  int32_t flags_;
  AliasTrans* trans_;
  std::vector<PluginPair> plugins_;
};

// An element that ends with the scope, unless it was released.
struct End {
  void operator()(BaseList2D* element) const { DestroyNow(element); }
};
using OwnedElement = std::unique_ptr<BaseList2D, End>;

// The ids of the branches of both, in the order of the first.
std::vector<int32_t> BranchesOf(const BaseList2D& first, const BaseList2D& second) {
  std::vector<int32_t> ids;
  for (const BaseList2D* element : {&first, &second}) {
    if (!element->extras) continue;
    for (const GeListHead* head : element->extras->branches)
      if (std::find(ids.begin(), ids.end(), head->branch) == ids.end()) ids.push_back(head->branch);
  }
  return ids;
}

// What belongs to its owner for good becomes a copy of its twin.
void CopyFixed(const GeListNode& from, const GeListNode& to) {
  for (const GeListNode* node = from.down; node; node = node->next)
    if (BaseList2D* twin = node->isFixed ? FixedTwin(*node, to) : nullptr)
      static_cast<const BaseList2D*>(node)->CopyOwn(*twin);
}

// Moves the nodes of a list to where others were, but for what belongs to its owner for good: that is copied.
// Those that were there may run the code of others when they go.
void Replace(GeListNode& from, GeListNode& to) {
  const Hold hold(to);
  for (GeListNode* node = FirstLoose(to); node && !node->isEnding; node = FirstLoose(to)) DestroyNow(node);
  if (to.IsDead()) return;
  CopyFixed(from, to);
  for (GeListNode* node = FirstLoose(from); node && PutIn(*node, to, to.downLast); node = FirstLoose(from)) {
  }
}

}  // namespace

void TakeOver(BaseList2D& from, BaseList2D& to, bool below) {
  const Hold hold(to);
  Copier(0, nullptr).CopyOwn(from, to);
  if (from.extras || to.extras) to.Extra().marks = std::move(from.Extra().marks);
  Touch(to, DIRTYFLAGS_DATA | DIRTYFLAGS_SELECT | DIRTYFLAGS_DESCRIPTION);
  if (below) Replace(from, to);
  for (const int32_t branch : BranchesOf(from, to)) {
    if (!hold.IsAlive()) return;
    below ? Replace(*Branch(from, branch), *Branch(to, branch))
          : CopyFixed(*Branch(from, branch), *Branch(to, branch));
  }
}

}  // namespace host

namespace host::atom {

// Everything is copied before anything goes, because one may stand below the other.
HostBool CopyTo(const QLXAtom* self, QLXAtom* dst, int32_t flags, AliasTrans* trn) {
  if (!self || !dst || &self->type != &dst->type || !IsCopied(*self)) return 0;
  if (self == dst) return 1;
  if (IsMade(static_cast<const GeListNode&>(*dst))) return 0;
  // The blocks of an object are as long as it says.
  const auto* block = dst->isFixed ? As<VariableTag>(dst) : nullptr;
  if (block && block->Count() != As<VariableTag>(self)->Count()) return 0;
  const Hold hold(const_cast<QLXAtom&>(*self)), dstHold(*dst);
  const auto& from = static_cast<const BaseList2D&>(*self);
  auto& to = static_cast<BaseList2D&>(*dst);
  const OwnedElement below(static_cast<BaseList2D*>(NewNode(to.type)));
  Copier copier(flags, trn);
  copier.CopyBelow(from, *below);
  copier.CopyOwn(from, to);
  Touch(to, DIRTYFLAGS_DATA | DIRTYFLAGS_SELECT | DIRTYFLAGS_DESCRIPTION);
  if (!(flags & COPYFLAGS_NO_HIERARCHY)) Replace(*below, to);
  for (const int32_t branch : BranchesOf(*below, to))
    if (dstHold.IsAlive() && CopiesBranch(branch, flags)) Replace(*Branch(*below, branch), *Branch(to, branch));
  return copier.Finish() && dstHold.IsAlive();
}

QLXAtom* GetClone(const QLXAtom* self, int32_t flags, AliasTrans* trn) {
  if (!self || !IsCopied(*self)) return nullptr;
  const Hold hold(const_cast<QLXAtom&>(*self));
  const auto& from = static_cast<const BaseList2D&>(*self);
  OwnedElement made(static_cast<BaseList2D*>(NewNode(from.type)));
  Copier copier(flags, trn);
  copier.CopyOwn(from, *made);
  copier.CopyBelow(from, *made);
  const Hold madeHold(*made);
  const bool isFinished = copier.Finish();
  // A plug-in may have destroyed it, or taken it for its own.
  if (!madeHold.IsAlive()) made.release();
  return isFinished ? made.release() : nullptr;
}

}  // namespace host::atom
