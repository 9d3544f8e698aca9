/* Group 19: heads of lists.
 * group     HOST_GROUP_LIST_HEAD
 * class     GeListHead : GeListNode */
#ifndef KELVAR_T_LISTHEAD_H
#define KELVAR_T_LISTHEAD_H

#include "t_listnode.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostListHeadGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new head of an empty list.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListHead* (*Alloc)(void);

  /* Destroys a head that the caller owns, and all nodes of its list; nothing happens to a branch of a node.
   * Only with the interpreter's lock held, where Python runs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(GeListHead* self);

  /* Puts the node first, out of where it was; the scene owns it then. 0, and nothing happens, when the head is
   * below the node, and for a node that the host keeps.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertFirst)(GeListHead* self, GeListNode* node);

  /* As InsertFirst, last.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertLast)(GeListHead* self, GeListNode* node);

  /* Puts the node behind `pred`, else as the first child of `parent`, else first of the list. As InsertFirst;
   * what isn't in this list, and a parent that `pred` isn't a child of, is refused too.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Insert)(GeListHead* self, GeListNode* node, GeListNode* parent, GeListNode* pred);

  /* Tells which node the list belongs to, until that is destroyed; null for none. 0, and nothing happens, for
   * a node of the list itself, and when the list is a branch of a node.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetParent)(GeListHead* self, GeListNode* parent);

  /* The node that the list belongs to.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetParent)(const GeListHead* self);

  /* The first node. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetFirst)(const GeListHead* self);

  /* The last node. Quick.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListNode* (*GetLast)(const GeListHead* self);

  /* Destroys all nodes of the list. As Free.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*FlushAll)(GeListHead* self);
} HostListHeadGroup;

#ifdef __cplusplus
}
#endif
#endif
