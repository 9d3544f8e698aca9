/* Group 23: containers of settings.
 * group     HOST_GROUP_CONTAINER
 * class     BaseContainer */
#ifndef KELVAR_T_CONTAINER_H
#define KELVAR_T_CONTAINER_H

#include "t_host.h"
#include "t_values.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseContainer BaseContainer;

typedef struct HostContainerGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new, empty container.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*Alloc)(int32_t id);

  /* Destroys a container that the caller owns.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseContainer* self);

  /* A copy with all entries.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetClone)(const BaseContainer* self);

  /* Whether both have the same id and the same entries.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsEqual)(const BaseContainer* self, const BaseContainer* other);

  /* The container's own id. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetId)(const BaseContainer* self);

  /* Sets the container's own id. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetId)(BaseContainer* self, int32_t id);

  /* The number of entries. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCount)(const BaseContainer* self);

  /* The value of an entry, which the container keeps; null when it has no such entry. Valid until the container
   * changes. Quick.
   * owner   the container
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const HostGeData* (*FindData)(const BaseContainer* self, int32_t id);

  /* Stores a copy of the value: in the entry of that id, or in a new one at the end. 0 when memory lacks.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetData)(BaseContainer* self, int32_t id, const HostGeData* data);

  /* Appends a new entry, also where one of that id is there; the first one is found. 0 when memory lacks.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsData)(BaseContainer* self, int32_t id, const HostGeData* data);

  /* Inserts a new entry behind the one at `index`; -1 stands for the front.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsDataAfter)(BaseContainer* self, int32_t id, const HostGeData* data, int32_t index);

  /* Removes the first entry of that id; 0 when there is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*RemoveData)(BaseContainer* self, int32_t id);

  /* Removes the entry at a position; 0 when there is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*RemoveIndex)(BaseContainer* self, int32_t index);

  /* The position of the first entry of that id.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*FindIndex)(const BaseContainer* self, int32_t id);

  /* The id of the entry at a position; -1 when there is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*GetIndexId)(const BaseContainer* self, int32_t index);

  /* As FindData, by position. Quick.
   * owner   the container
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const HostGeData* (*GetIndexData)(const BaseContainer* self, int32_t index);

  /* Replaces the value of the entry at a position by a copy; 0 when there is none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetIndexData)(BaseContainer* self, int32_t index, const HostGeData* data);

  /* Removes all entries.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*FlushAll)(BaseContainer* self);

  /* A count that grows with each change.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  uint32_t (*GetDirty)(const BaseContainer* self);

  /* Makes another container a copy of this one, its id with it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CopyTo)(const BaseContainer* self, BaseContainer* dst, int32_t flags);

  /* Takes over every entry of another container: into the entry of the same id, or as a new one at the end.
   * Containers in entries are merged in turn.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*MergeContainer)(BaseContainer* self, const BaseContainer* src);

  /* Puts the entries into the order of their ids; entries of one id keep theirs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Sort)(BaseContainer* self);

  /* The container in the entry of that id, to be changed in place.
   * owner   the container
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetContainerInstance)(BaseContainer* self, int32_t id);

  /* A count, of all containers together, that is never 0 and grows at the latest when a container that
   * GetContainerInstance answered goes, or when it would answer another one for the same entry. Pointers
   * from it are valid while the count is the same; with 0 they are looked up for each use. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  uint64_t (*GetInstanceEpoch)(void);
} HostContainerGroup;

#ifdef __cplusplus
}
#endif
#endif
