/* Group 16: elements of the scene's lists.
 * group     HOST_GROUP_BASE_LIST
 * class     BaseList2D : QLXAtom */
#ifndef KELVAR_T_BASELIST_H
#define KELVAR_T_BASELIST_H

#include "t_atom.h"
#include "t_container.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseList2D BaseList2D;

typedef struct HostBaseListGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new element of that type; null when no such type can be created.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*Alloc)(int32_t id);

  /* Destroys an element that the caller owns. Its links are dead at once. Only with the interpreter's lock
   * held, where Python runs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseList2D* self);

  /* The name.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetName)(const BaseList2D* self);

  /* Sets the name.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetName)(BaseList2D* self, const HostString* name);

  /* The container of the element's parameters.
   * owner   the element
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetDataInstance)(BaseList2D* self);
} HostBaseListGroup;

#ifdef __cplusplus
}
#endif
#endif
