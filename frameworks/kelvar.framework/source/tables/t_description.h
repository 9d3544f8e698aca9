/* Group 22: descriptions of an object's parameters.
 * group     HOST_GROUP_DESCRIPTION
 * class     Description */
#ifndef KELVAR_T_DESCRIPTION_H
#define KELVAR_T_DESCRIPTION_H

#include "t_atom.h"
#include "t_container.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostDescriptionGroup {
  uint32_t size;
  uint32_t reserved;

  /* Ends a description that the caller owns.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(Description* self);

  /* The number of its parameters and groups.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCount)(const Description* self);

  /* The full id of the parameter or group at a position, and that of the group that it stands in, of no level
   * for none. Parents come ahead of what is in them.
   * owner   the description
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetIndex)(const Description* self, int32_t index, HostDescID* id, HostDescID* group);

  /* How the parameter at a position is to be shown: by the ids DESC_NAME, DESC_UNIT, DESC_MIN and so on.
   * owner   the description
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const BaseContainer* (*GetSettings)(const Description* self, int32_t index);

  /* The position of a parameter by the numbers of its levels; -1 when there is none. A level below that of the
   * parameter, such as one component of a vector, finds the parameter.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*Find)(const Description* self, const HostDescID* id);
} HostDescriptionGroup;

#ifdef __cplusplus
}
#endif
#endif
