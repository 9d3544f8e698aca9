/* Group 34: registered plug-ins.
 * group     HOST_GROUP_PLUGIN
 * class     BasePlugin : BaseList2D */
#ifndef KELVAR_T_PLUGIN_H
#define KELVAR_T_PLUGIN_H

#include "t_document.h"
#include "t_prioritylist.h"
#include "t_splineobject.h"
#include "t_thread.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BasePlugin BasePlugin;

/* The kinds of plug-ins; 0 in a search stands for any. */
enum PluginKind {
  PLUGIN_KIND_SHADER = 1,
  PLUGIN_KIND_COMMAND = 4,
  PLUGIN_KIND_OBJECT = 5,
  PLUGIN_KIND_TAG = 6,
  PLUGIN_KIND_TOOL = 9,
  PLUGIN_KIND_NODE = 11,
  PLUGIN_KIND_BITMAP_LOADER = 13,
  PLUGIN_KIND_BITMAP_SAVER = 14,
  PLUGIN_KIND_SCENE_LOADER = 15,
  PLUGIN_KIND_SCENE_SAVER = 16,
  PLUGIN_KIND_MESSAGE = 17,
  PLUGIN_KIND_FALLOFF = 33,
  PLUGIN_KIND_PREFERENCE = 35
};

/* What every plug-in registers. The host copies the record and gives `self` back in each
 * call; callbacks may be null. They run on the main thread. */
typedef struct PluginRecord {
  uint32_t size;
  int32_t kind;
  int32_t id;
  int32_t info;
  const HostString* name;
  void* self;
  int32_t (*Message)(void* self, int32_t id, void* data); /* 1 when it answered */
  void (*Free)(void* self);                               /* once, when the plug-in goes */
} PluginRecord;

/* A command of the menu; `base.kind` is PLUGIN_KIND_COMMAND and `base.size` the size of all of it. */
typedef struct CommandRecord {
  PluginRecord base;
  const HostString* help;
  int32_t (*Execute)(void* self, BaseDocument* document);  /* 1 on success */
  int32_t (*GetState)(void* self, BaseDocument* document); /* bit 0 enabled, bit 1 checked */
} CommandRecord;

/* A type of elements: `base.kind` is that of objects, tags, shaders or nodes, and `base.size` the size of all
 * of it. `Create` makes what the callbacks get as `data`; a type without it gets null. They run on the thread
 * of the call that needs them, with the interpreter's lock held where Python runs; `Destroy` runs when the
 * last call that holds the element has ended, so that it may come from any thread and without the lock. A
 * null callback is the default that its comment tells. A callback may destroy the element. */
typedef struct NodeRecord {
  PluginRecord base;
  int32_t baseType; /* the type that it derives from; of a node also 0, for none */
  int32_t reserved;
  const HostString* description; /* the name of the file of its parameters in the resources, or null */
  void* (*Create)(void* self);   /* null: the element is not made */
  void (*Destroy)(void* data);
  HostBool (*Init)(void* data, GeListNode* node); /* 1; on 0 the element is not made */
  void (*Free)(void* data, GeListNode* node);     /* nothing. The element is whole */
  HostBool (*CopyTo)(void* data, void* dst, const GeListNode* node, GeListNode* copy, int32_t flags,
                     AliasTrans* trn);                                             /* 1 */
  HostBool (*Message)(void* data, GeListNode* node, int32_t id, void* message);    /* 1 */
  HostBool (*GetBubbleHelp)(void* data, const GeListNode* node, HostString* text); /* 0: the type's name */
  BaseDocument* (*GetDocument)(void* data, const GeListNode* node);                /* null: that of the list */
  HostBool (*IsInstanceOf)(void* data, const GeListNode* node,
                           int32_t type); /* 0: by the base types only. The same for all nodes of a type */
  HostBool (*GetDDescription)(void* data, const GeListNode* node, Description* description,
                              int32_t* flags); /* 1 */
  HostBool (*GetDParameter)(void* data, const GeListNode* node, const HostDescID* id, HostGeData* value,
                            int32_t* flags); /* 0: read from the container */
  HostBool (*SetDParameter)(void* data, GeListNode* node, const HostDescID* id, const HostGeData* value,
                            int32_t* flags); /* 0: stored in the container */
  HostBool (*GetDEnabling)(void* data, const GeListNode* node, const HostDescID* id, const HostGeData* value,
                           int32_t flags, const BaseContainer* item); /* 1 */
  HostBool (*TranslateDescID)(void* data, const GeListNode* node, const HostDescID* id, HostDescID* translated,
                              QLXAtom** target);                                          /* 0 */
  HostBool (*IsDocumentRelated)(void* data, const GeListNode* node, HostBool* isRelated); /* 0: it is */
  /* What a file keeps of `data`, in a chunk of its own. `level` of Read is what the record had when it was
   * written; Read may leave things unread. */
  HostBool (*Read)(void* data, GeListNode* node, HyperFile* file, int32_t level); /* 1, for a null Write too */
  HostBool (*Write)(void* data, const GeListNode* node, HyperFile* file);         /* 1, and there is no chunk */
  int32_t level; /* grows when what Write writes changes */
  int32_t reservedLevel;
  /* Of objects and tags: whether it put itself into the list. 0: priority 0, no flags */
  HostBool (*AddToExecution)(void* data, GeListNode* node, PriorityList* list);
  /* null: takes no part in the execution */
  int32_t (*Execute)(void* data, GeListNode* node, BaseDocument* document, BaseThread* thread, int32_t priority,
                     int32_t flags);
  /* Of objects. What a generator makes: a new object, which the host owns then, or the cache that it has; null
   * for nothing. An object without both GetVirtualObjects and GetContour is no generator */
  BaseObject* (*GetVirtualObjects)(void* data, BaseObject* op, HierarchyHelp* hh);
  SplineObject* (*GetContour)(void* data, BaseObject* op, BaseDocument* document, double lod,
                              BaseThread* thread);
  /* Changes the points of a copy of an object that the deformer acts on, with the global matrices of both.
   * Null: it is no deformer */
  HostBool (*ModifyObject)(void* data, BaseObject* mod, BaseDocument* document, BaseObject* op,
                           const Matrix* opMg, const Matrix* modMg, double lod, int32_t flags,
                           BaseThread* thread);
  /* Ahead of the test whether the cache is still good: the place for SetDirty */
  void (*CheckDirty)(void* data, BaseObject* op, BaseDocument* document);
} NodeRecord;

typedef struct HostPluginGroup {
  uint32_t size;
  uint32_t reserved;

  /* The plug-in with that id and kind; kind 0 stands for any.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*FindPlugin)(int32_t id, int32_t kind);

  /* Registers a plug-in. An id that is taken, and an empty name, are refused.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*RegisterPlugin)(const PluginRecord* record);

  /* Registers a command, under the rules of RegisterPlugin.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*RegisterCommand)(const CommandRecord* record);

  /* The first plug-in in the order of registration.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*GetFirstPlugin)(void);

  /* The next plug-in.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*GetNext)(const BasePlugin* self);

  /* The id.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetID)(const BasePlugin* self);

  /* The kind.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetPluginType)(const BasePlugin* self);

  /* The name.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetName)(const BasePlugin* self);

  /* Sends a message to one plug-in; 1 when it answered.
   * owner   the caller, of `data`
   * thread  main
   * waits   as the plug-in does
   * since   23100
   * fails   0 */
  int32_t (*Message)(BasePlugin* self, int32_t id, void* data);

  /* Registers a type of elements, under the rules of RegisterPlugin. A base type that is not there is refused.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  BasePlugin* (*RegisterNode)(const NodeRecord* record);
} HostPluginGroup;

#ifdef __cplusplus
}
#endif
#endif
