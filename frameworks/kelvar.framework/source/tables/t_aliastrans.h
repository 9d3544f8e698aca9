/* Group 27: the translation of links while objects are copied.
 * group     HOST_GROUP_ALIAS_TRANS
 * class     AliasTrans */
#ifndef KELVAR_T_ALIASTRANS_H
#define KELVAR_T_ALIASTRANS_H

#include "t_listnode.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostAliasTransGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new translation.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  AliasTrans* (*Alloc)(void);

  /* Ends a translation that the caller owns.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(AliasTrans* self);

  /* Makes it ready for copies of objects of that document, which may be null. Call ahead of the copies.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Init)(AliasTrans* self, BaseDocument* document);

  /* Points the links of all copies at the copies of what the originals link. A link to what was not copied
   * stays when `connectOutside` is 1, and is cleared when not. Call behind the copies, once.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Translate)(AliasTrans* self, HostBool connectOutside);
} HostAliasTransGroup;

#ifdef __cplusplus
}
#endif
#endif
