/* Group 21: documents.
 * group     HOST_GROUP_DOCUMENT
 * class     BaseDocument : BaseList2D */
#ifndef KELVAR_T_DOCUMENT_H
#define KELVAR_T_DOCUMENT_H

#include "t_atomarray.h"
#include "t_material.h"
#include "t_object.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An element like every other of the scene: what takes a QLXAtom takes it. */
typedef struct ParticleMasterSystem ParticleMasterSystem;

/* Whether to give up. Called now and then during a long work, on the thread of the call. */
typedef HostBool (*HostStop)(void* user);

enum DocumentSceneFilter { SCENEFILTER_OBJECTS = 1, SCENEFILTER_MATERIALS = 2 };

enum DocumentSaveFlags {
  SAVEDOCUMENTFLAGS_SAVEAS = 1
}; /* the document takes the name and folder of the file */

enum DocumentSelection { SELECTION_NEW = 0, SELECTION_ADD = 1, SELECTION_SUB = 2 };

enum DocumentActiveFlags {
  GETACTIVEOBJECTFLAGS_CHILDREN = 1, /* also those below other selected ones */
  GETACTIVEOBJECTFLAGS_SELECTIONORDER =
      2 /* in the order in which they were selected, not in that of the scene */
};

enum DocumentSettingsType {
  DOCUMENTSETTINGS_ALL = -1,
  DOCUMENTSETTINGS_GENERAL =
      0, /* the container of the element: time, frames, and what else its parameters are */
  DOCUMENTSETTINGS_MODELING = 1,
  DOCUMENTSETTINGS_ANIMATION = 2,
  DOCUMENTSETTINGS_TOOLS = 3
};

enum DocumentMode {
  MODE_CAMERA = 0,
  MODE_OBJECT = 1,
  MODE_AXIS = 2,
  MODE_TEXTURE = 3,
  MODE_POINTS = 4,
  MODE_EDGES = 5,
  MODE_POLYGONS = 6
};

typedef struct HostDocumentGroup {
  uint32_t size;
  uint32_t reserved;

  /* The active document.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*GetActiveDocument)(void);

  /* The document's active object; null when none or more than one is selected.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetActiveObject)(BaseDocument* self);

  /* The document's particle master system, when it has one.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  ParticleMasterSystem* (*GetParticleMasterSystem)(BaseDocument* self);

  /* A new document without content.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*Alloc)(void);

  /* The first open document; the others follow by GetNext.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*GetFirstDocument)(void);

  /* Makes an open document the active one. Nothing happens for one that isn't open.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetActiveDocument)(BaseDocument* self);

  /* Opens a document: it stands behind the other open ones from here on, out of where it was, and belongs
   * to the host. The active one stays.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*InsertBaseDocument)(BaseDocument* self);

  /* Destroys a document with all that is in it. Where it was the active one, one beside it becomes that, or
   * a new empty one when it is asked for.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*KillDocument)(BaseDocument* self);

  /* Destroys all open documents.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CloseAllDocuments)(void);

  /* Opens what a file has as a document, and makes it the active one. 0 as LoadDocument. Called without the
   * interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*LoadFile)(const HostFilename* name, HostStop stop, void* user);

  /* A new document of what a file has; flags are of SCENEFILTER. Null when the file can't be read or
   * `stop`, which may be null, says so; the console is told which file and why. Called without the
   * interpreter's lock.
   * owner   the caller
   * thread  any
   * waits   disk
   * since   23100
   * fails   null */
  BaseDocument* (*LoadDocument)(const HostFilename* name, int32_t flags, HostStop stop, void* user);

  /* Puts what a file has behind what the document has. 0 as LoadDocument; the document is as it was then.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*MergeDocument)(BaseDocument* self, const HostFilename* name, int32_t flags, HostStop stop,
                            void* user);

  /* Writes the document as it is at the start of the call, evaluated, to a file; flags are of
   * SAVEDOCUMENTFLAGS. 0 when it can't be written or `stop` says so; the console is told which file and
   * why, and a file that was there stays as it was. Called without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*SaveDocument)(BaseDocument* self, const HostFilename* name, int32_t flags, int32_t format,
                           HostStop stop, void* user);

  /* A new document with copies of those objects, where they stand in the world, of what is below them, and
   * of their materials. Null where none of them is an object of the document.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*IsolateObjects)(const BaseDocument* self, const AtomArray* objects);

  /* The first object.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetFirstObject)(const BaseDocument* self);

  /* The first material.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseMaterial* (*GetFirstMaterial)(const BaseDocument* self);

  /* The first render settings.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetFirstRenderData)(const BaseDocument* self);

  /* Puts an object behind `pred`, or else as the first child of `parent`, or else first, out of where it
   * was. The document owns it. With `checknames` it gets a name that no other object has. 0, and nothing
   * happens, where it can't stand there.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertObject)(BaseDocument* self, BaseObject* op, BaseObject* parent, BaseObject* pred,
                           HostBool checknames);

  /* The same for a material.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertMaterial)(BaseDocument* self, BaseMaterial* mat, BaseMaterial* pred, HostBool checknames);

  /* The same for render settings.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertRenderData)(BaseDocument* self, BaseList2D* rd, BaseList2D* parent, BaseList2D* pred);

  /* The same, behind all others.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertRenderDataLast)(BaseDocument* self, BaseList2D* rd);

  /* Destroys all objects, materials, layers and render settings of the document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Flush)(BaseDocument* self);

  /* The first enabled object of that type that the editor shows, or else that renderings show.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetHighest)(const BaseDocument* self, int32_t type, HostBool editor);

  /* The first material with that name.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseMaterial* (*SearchMaterial)(const BaseDocument* self, const HostString* name);

  /* The first object with that name.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*SearchObject)(const BaseDocument* self, const HostString* name);

  /* The target object.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetTargetObject)(const BaseDocument* self);

  /* Sets it; null for none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetTargetObject)(BaseDocument* self, BaseObject* op);

  /* A new document with polygons and splines in place of generators and deformers.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*Polygonize)(BaseDocument* self, HostBool keepanimation);

  /* The files of the pictures that materials and shaders use, each once, under the ids from 0 on; with
   * `nodes`, of those only, and of what is below them and in their branches.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetAllTextures)(const BaseDocument* self, HostBool isNet, const AtomArray* nodes);

  /* The active material; null when none or more than one is selected.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseMaterial* (*GetActiveMaterial)(const BaseDocument* self);

  /* The same for tags.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseTag* (*GetActiveTag)(const BaseDocument* self);

  /* The active render settings, or else the first ones.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetActiveRenderData)(const BaseDocument* self);

  /* Appends the selected objects; flags are of GETACTIVEOBJECTFLAGS.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetActiveObjects)(const BaseDocument* self, AtomArray* array, int32_t flags);

  /* Appends all selected objects, in the order in which they were selected.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetOrderedActiveObjects)(const BaseDocument* self, AtomArray* array);

  /* Appends the selected tags.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetActiveTags)(const BaseDocument* self, AtomArray* array);

  /* Appends the selected materials.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetActiveMaterials)(const BaseDocument* self, AtomArray* array);

  /* Appends everything that is selected.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetSelection)(const BaseDocument* self, AtomArray* array);

  /* Appends the selected objects of that type, also below other selected ones with `children`; with
   * `instanceof` those of types that derive from it, too. -1 for any type.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetActiveObjectsFilter)(const BaseDocument* self, AtomArray* array, HostBool children, int32_t type,
                                 HostBool instanceof);

  /* The first selected object, or of those in `help` the first, where that isn't null; `*multi` tells
   * whether there are others.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetRealActiveObject)(const BaseDocument* self, const AtomArray* help, HostBool* multi);

  /* Selects an object, null for none, by a mode of SELECTION. Nothing happens for one that isn't in the
   * document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetActiveObject)(BaseDocument* self, BaseObject* op, int32_t mode);

  /* The same for tags.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetActiveTag)(BaseDocument* self, BaseTag* tag, int32_t mode);

  /* The same for materials.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetActiveMaterial)(BaseDocument* self, BaseMaterial* mat, int32_t mode);

  /* Makes these render settings of the document the active ones.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetActiveRenderData)(BaseDocument* self, BaseList2D* rd);

  /* As SetActiveObject for anything in the document; nothing else stays selected with SELECTION_NEW.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetSelection)(BaseDocument* self, BaseList2D* bl, int32_t mode);

  /* The frames of a second.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetFps)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetFps)(BaseDocument* self, int32_t value);

  /* The level of detail of the editor, 0 to 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  double (*GetLOD)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetLOD)(BaseDocument* self, double value);

  /* The level of detail of renderings, 0 to 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  double (*GetRenderLod)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRenderLod)(BaseDocument* self, double value);

  /* What the tools work on, a constant MODE.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetMode)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetMode)(BaseDocument* self, int32_t value);

  /* The id of the tool.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetAction)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetAction)(BaseDocument* self, int32_t value);

  /* The time.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  BaseTime (*GetTime)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetTime)(BaseDocument* self, const BaseTime* time);

  /* The start of the document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  BaseTime (*GetMinTime)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetMinTime)(BaseDocument* self, const BaseTime* time);

  /* The end of the document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  BaseTime (*GetMaxTime)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetMaxTime)(BaseDocument* self, const BaseTime* time);

  /* The start of what is played.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  BaseTime (*GetLoopMinTime)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetLoopMinTime)(BaseDocument* self, const BaseTime* time);

  /* The end of what is played.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  BaseTime (*GetLoopMaxTime)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetLoopMaxTime)(BaseDocument* self, const BaseTime* time);

  /* Whether it was told to be changed since it was made, loaded or saved.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetChanged)(const BaseDocument* self);

  /* Tells that it was changed.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetChanged)(BaseDocument* self);

  /* Whether the mode is that of points, edges or polygons.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsEditMode)(const BaseDocument* self);

  /* Whether the mode is that of axes.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsAxisEnabled)(const BaseDocument* self);

  /* The name of its file without the folder.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetDocumentName)(const BaseDocument* self);

  /* Sets it; it is the name of the element, too.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDocumentName)(BaseDocument* self, const HostFilename* name);

  /* The folder of its file; empty when there is none yet.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetDocumentPath)(const BaseDocument* self);

  /* Sets it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDocumentPath)(BaseDocument* self, const HostFilename* path);

  /* A copy of the settings of that type, of DOCUMENTSETTINGS; for -1 all: the general ones, and the others
   * as containers under the ids of their types. Empty for an unknown one.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetDocumentData)(const BaseDocument* self, int32_t type);

  /* Replaces the settings of that type, or all.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDocumentData)(BaseDocument* self, int32_t type, const BaseContainer* data);

  /* The settings of that type themselves; null for an unknown one.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetSettingsInstance)(BaseDocument* self, int32_t type);

  /* Goes to the start of the document.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetRewind)(BaseDocument* self, int32_t flags);

  /* As SetTime, and asks for a refresh of what shows the scene.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetDocumentTime)(BaseDocument* self, const BaseTime* time);

  /* The head of the layers.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListHead* (*GetLayerObjectRoot)(BaseDocument* self);

  /* Evaluates the document: applies its tracks, runs its expressions, builds its caches. 0 when `stop` says
   * so. Called without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   the scene
   * since   23100
   * fails   0 */
  HostBool (*ExecutePasses)(BaseDocument* self, HostBool animation, HostBool expressions, HostBool caches,
                            int32_t flags, HostStop stop, void* user);

  /* The plane that is chosen for drawing splines, a parameter of the document: 0 XY, 1 ZY, 2 XZ.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSplinePlane)(const BaseDocument* self);
} HostDocumentGroup;

#ifdef __cplusplus
}
#endif
#endif
