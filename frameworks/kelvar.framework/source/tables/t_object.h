/* Group 28: objects.
 * group     HOST_GROUP_OBJECT
 * class     BaseObject : BaseList2D */
#ifndef KELVAR_T_OBJECT_H
#define KELVAR_T_OBJECT_H

#include "t_tag.h"
#include "t_track.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseObject BaseObject;

/* What makes sense in some calls of a generator only; opaque. */
typedef struct HierarchyHelp HierarchyHelp;

/* How GetHierarchyClone makes its copies: as they are, as the first spline that they are or made, or as what
 * they show. A host without lines of polygons takes ASLINE as ASPOLY. */
enum {
  HIERARCHYCLONEFLAGS_ASIS = 1 << 0,
  HIERARCHYCLONEFLAGS_ASPOLY = 1 << 1,
  HIERARCHYCLONEFLAGS_ASLINE = 1 << 2,
  HIERARCHYCLONEFLAGS_ASSPLINE = 1 << 3
};

typedef struct BaseDraw BaseDraw;
typedef struct LineObject LineObject;
typedef struct SplineObject SplineObject;

typedef struct HostObjectGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new object of that type; null when it is none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*Alloc)(int32_t type);

  /* The place in the system of the parent, the frozen part included.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetAbsPos)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetAbsPos)(BaseObject* self, const Vector* value);

  /* The lengths of the axes of the local matrix.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetAbsScale)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetAbsScale)(BaseObject* self, const Vector* value);

  /* The rotation of the local matrix, as angles in radians in the order of the object.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetAbsRot)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetAbsRot)(BaseObject* self, const Vector* value);

  /* The frozen part of the place.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetFrozenPos)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetFrozenPos)(BaseObject* self, const Vector* value);

  /* The frozen part of the scale.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetFrozenScale)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetFrozenScale)(BaseObject* self, const Vector* value);

  /* The frozen part of the rotation.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetFrozenRot)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetFrozenRot)(BaseObject* self, const Vector* value);

  /* The place in the frozen system.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetRelPos)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRelPos)(BaseObject* self, const Vector* value);

  /* The scale in the frozen system.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetRelScale)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRelScale)(BaseObject* self, const Vector* value);

  /* The rotation in the frozen system.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetRelRot)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRelRot)(BaseObject* self, const Vector* value);

  /* The local matrix: from the object to its parent.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetMl)(const BaseObject* self);

  /* Sets it; the frozen part stays, and the relative one follows. A matrix with shear is kept as it is
   * until the scale or the rotation is set, the absolute or the relative one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetMl)(BaseObject* self, const Matrix* value);

  /* The local matrix without its frozen part.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetRelMl)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRelMl)(BaseObject* self, const Matrix* value);

  /* The global matrix: from the object to the world.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetMg)(const BaseObject* self);

  /* Sets it, where the object stands now.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetMg)(BaseObject* self, const Matrix* value);

  /* The frozen part of the local matrix, its axes of length 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetFrozenMln)(const BaseObject* self);

  /* The relative part of the local matrix, its axes of length 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetRelMln)(const BaseObject* self);

  /* The local matrix, its axes of length 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetMln)(const BaseObject* self);

  /* The global matrix, its axes of length 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetMgn)(const BaseObject* self);

  /* The global matrix of the parent; the identity without one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetUpMg)(const BaseObject* self);

  /* The middle of the bounding box of the object's own geometry, of splines of the curve, as it was evaluated
   * last, in the object's system.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetMp)(const BaseObject* self);

  /* Half of the sides of that box.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*GetRad)(const BaseObject* self);

  /* How visible the object is, 0 to 1, where that of its parent is as given.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  double (*GetVisibility)(const BaseObject* self, double parent);

  /* Gives another object the same place, rotation and scale, the frozen part and the order of the rotation.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*CopyMatrixTo)(const BaseObject* self, BaseObject* dst);

  /* Whether the editor shows it: 0 yes, 1 no, 2 as its parent.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetEditorMode)(const BaseObject* self);

  /* Sets it; other numbers count as 2.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetEditorMode)(BaseObject* self, int32_t mode);

  /* Whether renderings show it, as GetEditorMode.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetRenderMode)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRenderMode)(BaseObject* self, int32_t mode);

  /* Whether the generator or deformer is enabled.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetDeformMode)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDeformMode)(BaseObject* self, HostBool mode);

  /* The number by which a generator knows an object of its cache.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetUniqueIP)(const BaseObject* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetUniqueIP)(BaseObject* self, int32_t ip);

  /* The first tag.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*GetFirstTag)(const BaseObject* self);

  /* The last tag.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*GetLastTag)(const BaseObject* self);

  /* The tag of that type, or of a type that derives from it, that is number `nr` of them, from 0.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*GetTag)(const BaseObject* self, int32_t type, int32_t nr);

  /* How many elements the object's block of that data type has; 0 where it has none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetTagDataCount)(const BaseObject* self, int32_t type);

  /* The elements of that block, to be read: Vector for 5600, CPolygon for 5604, HostSegment for 5672,
   * Tangent for 5617, float for 5682, and so on. Valid until the block changes its size. Null for an empty
   * block.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const void* (*GetTagDataR)(const BaseObject* self, int32_t type);

  /* The same, to be written; counts as a change of the object's data.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*GetTagDataW)(BaseObject* self, int32_t type);

  /* A new tag of that type on the object, behind `pred`, or first.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*MakeTag)(BaseObject* self, int32_t type, BaseTag* pred);

  /* A new variable tag with that many elements, all zero, on the object, behind `pred`, or first.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*MakeVariableTag)(BaseObject* self, int32_t type, int32_t count, BaseTag* pred);

  /* Puts a tag onto the object, behind `pred`, or first; out of where it was. The object owns it. 0, and
   * nothing happens, when `pred` is no tag of the object.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertTag)(BaseObject* self, BaseTag* tag, BaseTag* pred);

  /* Destroys what GetTag finds, unless the object can't be without it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*KillTag)(BaseObject* self, int32_t type, int32_t nr);

  /* What the generator made when it was evaluated last.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetCache)(const BaseObject* self, HierarchyHelp* hh);

  /* The object as deformers changed it last.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetDeformCache)(const BaseObject* self);

  /* The object whose cache it stands in.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetCacheParent)(const BaseObject* self);

  /* Whether the cache is that of the object as it is now.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CheckCache)(BaseObject* self, HierarchyHelp* hh);

  /* The lines that stand for the object in views.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  LineObject* (*GetIsoparm)(const BaseObject* self);

  /* Gives it those lines, a copy of them; null for none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetIsoparm)(BaseObject* self, LineObject* lines);

  /* Copies tags to another object: those that users see by `visible`, the others, with data for each point or
   * polygon, by `variable`: 0 for none of them, 2 for those of whose type the other object has none, any other
   * number for all. Tags of a host that act on what is below their object go by `hierarchical` in the same way.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CopyTagsTo)(const BaseObject* self, BaseObject* dest, int32_t visible, int32_t variable,
                         int32_t hierarchical);

  /* Gives it a phong tag with that limit in radians, or takes it away.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetPhong)(BaseObject* self, HostBool on, HostBool anglelimit, double angle);

  /* Whether anything that those DIRTYFLAGS name has changed since the caches were built.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsDirty)(BaseObject* self, int32_t flags);

  /* Drops the caches: they are built anew at the next evaluation.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Touch)(BaseObject* self);

  /* The spline that the object is, or that it made when it was evaluated last, as deformers left it then.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  SplineObject* (*GetRealSpline)(const BaseObject* self);

  /* The number of the handle under the pointer in that view; -1 without one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*GetHighlightHandle)(const BaseObject* self, BaseDraw* bd);

  /* For a generator `self`: a clone of what `op` and those below it make, with HIERARCHYCLONEFLAGS, in the
   * system of `op`'s parent, and `*dirty` set to 1 when any of them changed since the last call, by those
   * DIRTYFLAGS; where `dirty` is 1 on entry they are cloned in any case, else only when they changed. Originals
   * below the generator of a plug-in count as used by it until it is evaluated anew.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetHierarchyClone)(BaseObject* self, HierarchyHelp* hh, BaseObject* op, int32_t flags,
                                   HostBool* dirty, AliasTrans* trans, int32_t dirtyflags);

  /* The same with a dependence list of the generator's own: when nothing has changed `*dirty` becomes 0,
   * and the answer is the cache that it has. `allchildren` also takes those beside `op` behind it.
   * owner   the caller where `*dirty` is 1, else the generator
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetAndCheckHierarchyClone)(BaseObject* self, HierarchyHelp* hh, BaseObject* op, int32_t flags,
                                           HostBool* dirty, HostBool allchildren, AliasTrans* trans);

  /* Begins a new list of what the generator depends on.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*NewDependenceList)(BaseObject* self);

  /* Whether the list is what it was when the caches were built, and nothing in it has changed since.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CompareDependenceList)(BaseObject* self);

  /* Lets the next comparison fail.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*TouchDependenceList)(BaseObject* self);

  /* Adds an object, with all below it, and what of it matters, to the list. Where what is below stands, and
   * what deformers make of it, matters in any case.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*AddDependence)(BaseObject* self, HierarchyHelp* hh, BaseObject* op, int32_t dirtyflags);

  /* Sets the order of the rotation's angles, ROTATIONORDER from 0 to 6; the matrices stay. What is out of range
   * is brought to its end.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRotationOrder)(BaseObject* self, int32_t order);

  /* The order.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   6 */
  int32_t (*GetRotationOrder)(const BaseObject* self);

  /* Lets animations turn the object by the shortest way between keys.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetQuaternionRotationMode)(BaseObject* self, HostBool active, HostBool undo);

  /* Whether they do.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsQuaternionRotationMode)(const BaseObject* self);

  /* Gives the three tracks of a vector parameter keys at the same times. Null times stand for all. 0 where
   * they are not there.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SynchronizeVectorTrackKeys)(BaseObject* self, int32_t trackID, HostBool undo,
                                         const BaseTime* start, const BaseTime* end);

  /* Turns the keys of the rotation's tracks by whole turns, so that each is nearest to the one before. 0
   * where they are not there.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*FindBestEulerAngle)(BaseObject* self, int32_t trackID, HostBool adjustTangents, HostBool undo,
                                 const BaseTime* start, const BaseTime* end);

  /* The rotation that the tracks give at a time, and with `apply` sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Vector (*EvaluateSynchronizedRotation)(BaseObject* self, const BaseTime* time, int32_t flags, HostBool apply);

  /* The tracks of the three components of a vector parameter, three words. 0 where one is missing.
   * owner   the object
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetVectorTracks)(const BaseObject* self, const HostDescID* id, CTrack** tracks);

  /* The curves of the three components of the vector that the curve belongs to, three words. 0 where there
   * are none such.
   * owner   the tracks
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetVectorCurves)(const BaseObject* self, const BaseList2D* curve, BaseList2D** curves);

  /* A number that no other object of the process has.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int64_t (*GetGUID)(const BaseObject* self);

  /* Whether `op` is the object, or stands below it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SearchHierarchy)(const BaseObject* self, const BaseObject* op);

  /* The axes that tools work along, in the world; the object's own unless others were set.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  Matrix (*GetModelingAxis)(const BaseObject* self, BaseDocument* document);

  /* Sets them.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetModelingAxis)(BaseObject* self, const Matrix* axis);
} HostObjectGroup;

#ifdef __cplusplus
}
#endif
#endif
