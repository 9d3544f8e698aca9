/* Group 40: selections of points, polygons or edges.
 * group     HOST_GROUP_SELECT
 * class     BaseSelect */
#ifndef KELVAR_T_SELECT_H
#define KELVAR_T_SELECT_H

#include "t_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The selected elements, by their numbers from 0. */
typedef struct BaseSelect BaseSelect;

typedef struct HostSelectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new empty selection.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*Alloc)(void);

  /* Ends a selection that is not part of an object.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseSelect* self);

  /* How many elements are selected.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCount)(const BaseSelect* self);

  /* How many runs of elements side by side they make.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSegments)(const BaseSelect* self);

  /* Selects an element. 0 below 0.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Select)(BaseSelect* self, int32_t num);

  /* Selects the elements from `min` to `max`, both included, and no others.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SelectAll)(BaseSelect* self, int32_t min, int32_t max);

  /* Deselects an element.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Deselect)(BaseSelect* self, int32_t num);

  /* Deselects all.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*DeselectAll)(BaseSelect* self);

  /* Turns an element over.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Toggle)(BaseSelect* self, int32_t num);

  /* Turns the elements from `min` to `max` over.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ToggleAll)(BaseSelect* self, int32_t min, int32_t max);

  /* The first and last element of a run, neither above `maxElements` - 1 when that is not negative; 0 for
   * no such run.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetRange)(const BaseSelect* self, int32_t segment, int32_t maxElements, int32_t* a, int32_t* b);

  /* Whether an element is selected.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsSelected)(const BaseSelect* self, int32_t num);

  /* Copies into another.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CopyTo)(const BaseSelect* self, BaseSelect* dst);

  /* A copy.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseSelect* (*GetClone)(const BaseSelect* self);

  /* Selects what `src` selects too.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Merge)(BaseSelect* self, const BaseSelect* src);

  /* Deselects what `src` selects.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*DeselectOf)(BaseSelect* self, const BaseSelect* src);

  /* Keeps what `src` selects too.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Cross)(BaseSelect* self, const BaseSelect* src);

  /* Selects the elements whose byte is not zero, and no others.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*FromArray)(BaseSelect* self, const uint8_t* selected, int32_t count);

  /* Writes 1 for each element that is selected, else 0.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*ToArray)(const BaseSelect* self, uint8_t* selected, int32_t count);

  /* How often it has changed.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetDirty)(const BaseSelect* self);

  /* The last selected element; -1 without one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*GetLastElement)(const BaseSelect* self);
} HostSelectGroup;

#ifdef __cplusplus
}
#endif
#endif
