/* Group 42: who takes part in an evaluation, and when.
 * group     HOST_GROUP_PRIORITY_LIST
 * class     PriorityList */
#ifndef KELVAR_T_PRIORITYLIST_H
#define KELVAR_T_PRIORITYLIST_H

#include "t_listnode.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Valid in the call of AddToExecution that it was given to. */
typedef struct PriorityList PriorityList;

typedef struct HostPriorityListGroup {
  uint32_t size;
  uint32_t reserved;

  /* Lets the node be executed, among all those of the document in the order of the priorities; several
   * times for several calls. `flags` are given to Execute.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Add)(PriorityList* self, GeListNode* node, int32_t priority, int32_t flags);
} HostPriorityListGroup;

#ifdef __cplusplus
}
#endif
#endif
