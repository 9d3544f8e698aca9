/* Group 18: atoms in lists.
 * group     HOST_GROUP_LIST_NODE
 * class     GeListNode : QLXAtom */
#ifndef KELVAR_T_LISTNODE_H
#define KELVAR_T_LISTNODE_H

#include "t_atom.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GeListNode GeListNode;
typedef struct GeListHead GeListHead;
typedef struct BaseDocument BaseDocument;

/* A list that a node has beside its children. */
typedef struct HostBranch {
  GeListHead* head;
  HostString name; /* the receiver's */
  int32_t id;      /* the base type of what the list is for */
  int32_t flags;   /* BRANCHINFOFLAGS */
} HostBranch;

enum { BRANCHINFOFLAGS_ANIMATE = 1 << 0, BRANCHINFOFLAGS_HIDEINTIMELINE = 1 << 4 };

/* What an argument of GetBranchInfo asks for. */
enum { GETBRANCHINFO_ONLYWITHCHILDREN = 1 << 1 };

enum { NBITCONTROL_SET = 1, NBITCONTROL_CLEAR = 2, NBITCONTROL_TOGGLE = 3 };

typedef struct HostListNodeGroup {
  uint32_t size;
  uint32_t reserved;

  /* The next node of the list. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetNext)(const GeListNode* self);

  /* The node before it. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetPred)(const GeListNode* self);

  /* The node that it is a child of. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetUp)(const GeListNode* self);

  /* The first child. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetDown)(const GeListNode* self);

  /* The last child. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetDownLast)(const GeListNode* self);

  /* Puts the node with all below it before `next`, out of where it was; the scene owns it then, but for a chain
   * of nodes that are in no list, whose creators own them. 0, and nothing happens, when `next` is the node
   * itself, below it or a document in no list, and for a node that the host keeps: a head, a plug-in, an open
   * document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertBefore)(GeListNode* self, GeListNode* next);

  /* As InsertBefore, behind `pred`.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertAfter)(GeListNode* self, GeListNode* pred);

  /* As InsertBefore, as the first child of `parent`, or the first of the list for a head.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertUnder)(GeListNode* self, GeListNode* parent);

  /* As InsertUnder, last.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertUnderLast)(GeListNode* self, GeListNode* parent);

  /* Takes the node with all below it out of its list; the caller owns it then. What the host keeps stays the
   * host's: Free does nothing to it either.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Remove)(GeListNode* self);

  /* The head of the list that the node is in, at any depth.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListHead* (*GetListHead)(const GeListNode* self);

  /* The document that the node belongs to, itself for a document.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*GetDocument)(const GeListNode* self);

  /* Whether a bit of the node is set, as 0 or 1; 0 for a bit that is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetNBit)(const GeListNode* self, int32_t bit);

  /* Sets, clears or toggles a bit (NBITCONTROL); 0 for a bit or mode that is none. Bits are 0 to 63.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ChangeNBit)(GeListNode* self, int32_t bit, int32_t mode);

  /* Whether the node is of a kind that belongs into documents; 0 for what belongs to the application, such as
   * a plug-in.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsDocumentRelated)(const GeListNode* self);

  /* Fills in the node's branches, at most `count` of them, and answers how many were filled in. Lists that
   * come into being on demand, such as those of tracks and shaders, are told from then on.
   * owner   the node, of the heads
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetBranchInfo)(const GeListNode* self, HostBranch* branches, int32_t count, int32_t flags);
} HostListNodeGroup;

#ifdef __cplusplus
}
#endif
#endif
