// Lists, branches, and what is below a node.
#ifndef HOST_SCENE_TREE_H
#define HOST_SCENE_TREE_H

#include <vector>

#include "scene/access.h"
#include "scene/extras.h"

namespace host {

inline GeListNode& NodeOf(QLXAtom& atom) { return static_cast<GeListNode&>(atom); }  // there are no others
inline const GeListNode& NodeOf(const QLXAtom& atom) { return static_cast<const GeListNode&>(atom); }

// The node that it is a child of, or the head of its list; null for a node that is in no list.
inline GeListNode* ParentOf(const GeListNode& node) { return node.up ? node.up : node.list; }

// The node that the list of a head belongs to; null when there is none.
GeListNode* OwnerOf(const GeListHead& head);

GeListHead* HeadOf(const GeListNode& node);

// Whether `node` is `outer`, or stands somewhere below it, in its branches or in those below it.
bool IsInside(const GeListNode& node, const GeListNode& outer);

// The document that the node stands in, or is; null for none. A plug-in may tell another one of its elements.
BaseDocument* DocumentAround(const GeListNode* node);

// Whether evaluation made it, or the object in whose list it stands: what is in caches is the host's.
bool IsMade(const GeListNode& node);

// Whether others may neither move nor free it.
bool IsKept(const GeListNode& node);

// Whether others may put a node of that type below `parent`. Branches take elements of their own kind, and no
// second block of those that stay with the object; what the host made takes nothing. Documents stand in free
// heads only, and nothing stands below them beside their branches.
bool MayStand(const NodeType& type, const GeListNode& parent);

// Puts the node with all below it behind `pred`, a child of `parent`, or first for null. Nothing happens and
// the answer is false where that can't be, or where the node may not stand.
bool Place(GeListNode& node, GeListNode& parent, GeListNode* pred);

// The same in the host's own lists too.
bool PutIn(GeListNode& node, GeListNode& parent, GeListNode* pred);

// The same before or behind `other`, which may be in no list: both are a chain then, and owned as they were.
bool PlaceBeside(GeListNode& node, GeListNode& other, bool before);

// As PutIn, for a node that was just made, is in no list, and whose place needs no check.
void Append(GeListNode& made, GeListNode& parent);

// Takes a node out of its list.
void TakeOut(GeListNode& node);

// The first node below `list` that does not belong to it for good.
GeListNode* FirstLoose(const GeListNode& list);

// Makes `to` what `from`, of the same type and in no list, is, with its marks; and with `below` all that stands
// there, in place of what it had. Runs the code of plug-ins whose elements go.
void TakeOver(BaseList2D& from, BaseList2D& to, bool below);

// All moves of nodes, and all changes that were stamped, so far.
uint64_t CountMoves();
uint64_t CountStamps();

// The list of the node with that id; null when it has none yet.
GeListHead* FindBranch(const GeListNode& node, int32_t id);
// The same, made where it is missing; null for a node that is dead.
GeListHead* Branch(GeListNode& node, int32_t id);

// Calls `visit` for the node, for its children or not, for what is in its branches or not, and for all below
// those. `visit` moves nothing.
// The host's own branches, of what evaluation made, are entered with `own` only.
template <class Visit>
void Walk(GeListNode& root, Visit visit, bool children = true, bool branches = true, bool own = false) {
  const ReadScene reads;
  std::vector<GeListNode*> pending{&root};
  while (!pending.empty()) {
    GeListNode* node = pending.back();
    pending.pop_back();
    visit(*node);
    if (node != &root && node->next) pending.push_back(node->next);
    if (branches && node->extras)
      for (size_t i = node->extras->branches.size(); i-- > 0;)
        if (GeListHead* head = node->extras->branches[i]; own || head->branch >= 0) pending.push_back(head);
    if (node->down && (node != &root || children)) pending.push_back(node->down);
  }
}

// Stamps a change of those kinds (HDIRTYFLAGS).
void Stamp(QLXAtom& atom, int32_t mask);

// The callbacks of the atom's plug-in can be called from here on, or no longer.
void BeginPlugin(QLXAtom& atom);
void EndPlugin(QLXAtom& atom);
bool HavePluginNodes();

}  // namespace host

#endif
