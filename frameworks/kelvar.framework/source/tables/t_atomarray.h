/* Group 43: arrays of atoms.
 * group     HOST_GROUP_ATOM_ARRAY
 * class     AtomArray */
#ifndef KELVAR_T_ATOMARRAY_H
#define KELVAR_T_ATOMARRAY_H

#include "t_atom.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Lists of atoms that go in or out of other calls. It doesn't own what is in it. */
typedef struct AtomArray AtomArray;

typedef struct HostAtomArrayGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new, empty array.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  AtomArray* (*Alloc)(void);

  /* Destroys it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(AtomArray* self);

  /* How many atoms were put into it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCount)(const AtomArray* self);

  /* The atom at that place, from 0; null for one that was destroyed since, and for a place that isn't
   * there.
   * owner   whoever owned it
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  QLXAtom* (*GetIndex)(const AtomArray* self, int32_t index);

  /* Puts an atom behind the others; 0 for null.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Append)(AtomArray* self, QLXAtom* atom);
} HostAtomArrayGroup;

#ifdef __cplusplus
}
#endif
#endif
