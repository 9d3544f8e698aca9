/* Group 26: the parameters that a user added to an object.
 * group     HOST_GROUP_DYNAMIC_DESCRIPTION
 * class     DynamicDescription */
#ifndef KELVAR_T_DYNAMICDESCRIPTION_H
#define KELVAR_T_DYNAMICDESCRIPTION_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DynamicBrowse DynamicBrowse;

typedef struct HostDynamicDescriptionGroup {
  uint32_t size;
  uint32_t reserved;

  /* Adds a parameter with these settings, whose DESC_DATATYPE tells its type; `id` is its full id from then on.
   * 0 for a type that is not known, and a default of another type.
   * owner   the description, of the levels
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Alloc)(DynamicDescription* self, const BaseContainer* settings, HostDescID* id);

  /* Replaces the settings of a parameter, or adds one under that id. `node`, which may be null, is the object
   * whose value of it is reset when the type changes.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Set)(DynamicDescription* self, const HostDescID* id, const BaseContainer* settings,
                  BaseList2D* node);

  /* Removes a parameter, with its value; 0 when there is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Remove)(DynamicDescription* self, const HostDescID* id);

  /* The settings of a parameter. Valid until the description changes.
   * owner   the description
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const BaseContainer* (*Find)(const DynamicDescription* self, const HostDescID* id);

  /* Begins a walk along the parameters, in their order. A change of the description meanwhile does not disturb
   * it.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  DynamicBrowse* (*BrowseInit)(DynamicDescription* self);

  /* The next parameter; 0 behind the last one. Valid until the next call with that walk.
   * owner   the walk
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetNext)(DynamicDescription* self, DynamicBrowse* browse, HostDescID* id,
                      const BaseContainer** settings);

  /* Ends a walk.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*BrowseFree)(DynamicDescription* self, DynamicBrowse* browse);
} HostDynamicDescriptionGroup;

#ifdef __cplusplus
}
#endif
#endif
