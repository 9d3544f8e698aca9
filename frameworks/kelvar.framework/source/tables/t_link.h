/* Group 17: weak references to the host's objects.
 * group     HOST_GROUP_LINK
 * functions kelvar */
#ifndef KELVAR_T_LINK_H
#define KELVAR_T_LINK_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Where a host keeps what links are made of, for a module that reads it in place of calls. Offsets in
 * bytes. In every object that can be linked a word points to its slot, null until the first SetLink. In
 * the slot a word points to the object, null when it was destroyed, and a 64-bit word holds the generation,
 * which changes at the destruction. A link is the slot and its generation at the time; it needs no FreeLink.
 * The words are read at any time, with acquire semantics: slots stay where they are.
 * A word in every atom, which may be lacking, is one for all of its type and for no other, as long as the
 * module is loaded. */
typedef struct HostLinkLayout {
  uint32_t size;
  uint32_t slotInObject;
  uint32_t objectInSlot;
  uint32_t generationInSlot;
  uint32_t typeInAtom; /* 0: there is none */
} HostLinkLayout;

/* Take and give back the calling thread's turn, in which no other thread's call of the module touches a scene;
 * turns may be nested. What `HostTakeTurn` answers goes to `HostGiveTurn`. */
typedef int32_t (*HostTakeTurn)(void);
typedef void (*HostGiveTurn)(int32_t turn);

/* Waits until no call of the module holds an object that it looked up before. */
typedef void (*HostQuiet)(void);

typedef struct HostLinkGroup {
  uint32_t size;
  uint32_t reserved;

  /* A HostLinkLayout, or null: the module calls the entries. */
  void* layout;

  /* The object that the link points at, or null when it was destroyed or the link is empty. Its memory
   * stays while the caller holds the interpreter's lock. Quick.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*GetLink)(HostLink link);

  /* Ends the link and clears it. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*FreeLink)(HostLink* link);

  /* As GetLink; the object's memory stays until UnpinLink, also when the object is destroyed meanwhile and
   * without the interpreter's lock. Every answer but null wants an UnpinLink. Quick.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*PinLink)(HostLink link);

  /* Ends what PinLink began.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*UnpinLink)(HostLink link);

  /* Tells the host how it waits for the module: it calls `quiet` without holding a lock of its own, after it
   * destroyed objects by itself and before it frees their memory. Null: the module has gone.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetQuiet)(HostQuiet quiet);

  /* Tells the host how it takes its turn where it works on a scene in a call that came without the
   * interpreter's lock. Whoever waits for a turn holds no lock that a call under the interpreter's lock could
   * want. Null: the module has gone.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetTurn)(HostTakeTurn take, HostGiveTurn give);
} HostLinkGroup;

#ifdef __cplusplus
}
#endif
#endif
