/* Group 34: registered plug-ins.
 * group     HOST_GROUP_PLUGIN
 * class     BasePlugin */
#ifndef KELVAR_T_PLUGIN_H
#define KELVAR_T_PLUGIN_H

#include "t_document.h"

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
} HostPluginGroup;

#ifdef __cplusplus
}
#endif
#endif
