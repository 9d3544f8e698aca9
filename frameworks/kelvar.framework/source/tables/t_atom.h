/* Group 20: what all elements of a scene have in common.
 * group     HOST_GROUP_ATOM
 * class     QLXAtom */
#ifndef KELVAR_T_ATOM_H
#define KELVAR_T_ATOM_H

#include "t_host.h"
#include "t_values.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QLXAtom QLXAtom;

typedef struct AliasTrans AliasTrans;
typedef struct Description Description;
typedef struct HyperFile HyperFile;

/* What changed, for GetDirty and SetDirty. */
enum {
  DIRTYFLAGS_MATRIX = 1 << 1,
  DIRTYFLAGS_DATA = 1 << 2,
  DIRTYFLAGS_SELECT = 1 << 3,
  DIRTYFLAGS_CACHE = 1 << 4,
  DIRTYFLAGS_CHILDREN = 1 << 5,
  DIRTYFLAGS_DESCRIPTION = 1 << 6
};

/* What of the hierarchy changed, for GetHDirty and SetHDirty. */
enum {
  HDIRTYFLAGS_ANIMATION = 1 << 0,
  HDIRTYFLAGS_OBJECT = 1 << 1,
  HDIRTYFLAGS_OBJECT_MATRIX = 1 << 2,
  HDIRTYFLAGS_OBJECT_HIERARCHY = 1 << 3,
  HDIRTYFLAGS_TAG = 1 << 4,
  HDIRTYFLAGS_MATERIAL = 1 << 5,
  HDIRTYFLAGS_SHADER = 1 << 6,
  HDIRTYFLAGS_RENDERSETTINGS = 1 << 7
};

/* What a copy leaves out. */
enum {
  COPYFLAGS_NO_HIERARCHY = 1 << 2,
  COPYFLAGS_NO_ANIMATION = 1 << 3,
  COPYFLAGS_NO_BITS = 1 << 4,
  COPYFLAGS_NO_MATERIALPREVIEW = 1 << 5,
  COPYFLAGS_NO_BRANCHES = 1 << 7
};

/* Where a message goes beside the object. */
enum { MULTIMSG_UP = 1, MULTIMSG_DOWN = 2, MULTIMSG_BRANCHES = 4 };

/* How a parameter is set: by a script or a user, with all that follows from it. */
enum { DESCFLAGS_SET_USERINTERACTION = 256 };

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

  /* What kind of element it is, one of the ids of the base types: 5155 of objects, 5694 of tags, 5702 of
   * materials and so on; 0 for other atoms.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetClassification)(const QLXAtom* self);

  /* How often what `flags` (DIRTYFLAGS) name has changed: the sum of their counts. Grows only, and wraps.
   * Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  uint32_t (*GetDirty)(const QLXAtom* self, int32_t flags);

  /* Counts a change of what `flags` name.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDirty)(QLXAtom* self, int32_t flags);

  /* A number that grows with each change of what `mask` (HDIRTYFLAGS) names in the object, all below it and
   * all branches. Of a subtree that comes or goes everything counts as changed.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  uint32_t (*GetHDirty)(const QLXAtom* self, int32_t mask);

  /* Counts a change of what `mask` names, here and in all above.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetHDirty)(QLXAtom* self, int32_t mask);

  /* Makes `dst`, of the same type, a copy: parameters, name, bits, and what `flags` (COPYFLAGS) do not leave
   * out, in place of what it had. Marks are not copied. With `trn` links between copied objects are
   * translated. `trn` may be null. Heads and plug-ins have no copies.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CopyTo)(const QLXAtom* self, QLXAtom* dst, int32_t flags, AliasTrans* trn);

  /* A new object that is a copy, as CopyTo makes it, in no list.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  QLXAtom* (*GetClone)(const QLXAtom* self, int32_t flags, AliasTrans* trn);

  /* The description of the object's parameters as it is now. It stays as it is when the object changes or is
   * destroyed.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  Description* (*GetDescription)(const QLXAtom* self, int32_t flags);

  /* Reads a parameter. The types of the levels are not looked at. `data` is overwritten; on 0 it is no value.
   * owner   the caller, of `data`
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetParameter)(const QLXAtom* self, const HostDescID* id, HostGeData* data, int32_t flags);

  /* Sets a parameter; `data` of no value resets it to its default, and removes what only the container holds. A
   * number out of the parameter's range is brought to its end; an integer serves as a float, and as an integer
   * of the other width. A value that is there already is no change. 0 for a parameter that the object lacks,
   * and a value of another type.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetParameter)(QLXAtom* self, const HostDescID* id, const HostGeData* data, int32_t flags);

  /* Sends a message to the object; what `data` is, the id tells (t_messages.h). Whether it was answered. The
   * object may be destroyed behind the call.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Message)(QLXAtom* self, int32_t type, void* data);

  /* As Message, to the objects that `flags` (MULTIMSG) name too: 1 all above, 2 all below, 3 both, 4 all
   * branches, with all below them. Whether one answered.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*MultiMessage)(QLXAtom* self, int32_t flags, int32_t type, void* data);

  /* The unique id that an application has marked the object with; null when it has none. Valid until the
   * object's marks change.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*FindUniqueID)(const QLXAtom* self, int32_t appid, int64_t* bytes);

  /* Marks the object with a copy of the bytes, in place of an earlier mark of that application.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*AddUniqueID)(QLXAtom* self, int32_t appid, const void* mem, int64_t bytes);

  /* The number of marks.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetUniqueIDCount)(const QLXAtom* self);

  /* The mark at a position; null when there is none.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const void* (*GetUniqueIDIndex)(const QLXAtom* self, int32_t index, int32_t* appid, int64_t* bytes);

  /* Reads what Write wrote into an object of the same type, in place of what it had. `id` and `level` are those
   * of the chunk that the caller has entered; one that is still ahead is entered and left. `id` 0 stands for
   * any. On 0 the object stays as it is, unless its plug-in was what failed. Without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk, other threads' calls on the file, the plug-in
   * since   23100
   * fails   0 */
  HostBool (*Read)(QLXAtom* self, HyperFile* file, int32_t id, int32_t level);

  /* Writes the object, without what is below it and in its branches, as a chunk with the type for its id.
   * Without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk, other threads' calls on the file, the plug-in
   * since   23100
   * fails   0 */
  HostBool (*Write)(const QLXAtom* self, HyperFile* file);

  /* Reads what WriteObject wrote: the object becomes what the written one was, with all that was below it and
   * in its branches; links among these lead to each other again. Elements of a type that is not there are left
   * out, with what is in them. With `readHeader` the chunk is entered and left; without, the caller has entered
   * it, and leaves it. On 0 the object stays as it is, unless a plug-in was what failed. Without the
   * interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk, other threads' calls on the file, plug-ins
   * since   23100
   * fails   0 */
  HostBool (*ReadObject)(QLXAtom* self, HyperFile* file, HostBool readHeader);

  /* Writes the object with all below it and in its branches, as a chunk with the type for its id. Without the
   * interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk, other threads' calls on the file, plug-ins
   * since   23100
   * fails   0 */
  HostBool (*WriteObject)(const QLXAtom* self, HyperFile* file);
} HostAtomGroup;

#ifdef __cplusplus
}
#endif
#endif
