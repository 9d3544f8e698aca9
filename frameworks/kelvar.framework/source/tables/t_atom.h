/* Group 20: what all elements of a scene have in common.
 * group     HOST_GROUP_ATOM
 * class     QLXAtom */
#ifndef KELVAR_T_ATOM_H
#define KELVAR_T_ATOM_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QLXAtom QLXAtom;

typedef struct HostAtomGroup {
  uint32_t size;
  uint32_t reserved;

  /* Points a link at the object; what the link held before is not looked at. 1, or 0 when memory lacks.
   * owner   the caller, of the link
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLink)(QLXAtom* self, HostLink* link);

  /* The id of the object's type. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetType)(const QLXAtom* self);

  /* The id of the type that the object has beneath what it stands for, such as that of the generator that
   * shows itself as another object. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetRealType)(const QLXAtom* self);

  /* Whether the object is of that type or of one that derives from it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsInstanceOf)(const QLXAtom* self, int32_t id);
} HostAtomGroup;

#ifdef __cplusplus
}
#endif
#endif
