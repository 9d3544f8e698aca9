/* Group 1: general functions of the host.
 * group     HOST_GROUP_GENERAL
 * functions kelvar */
#ifndef KELVAR_T_GENERAL_H
#define KELVAR_T_GENERAL_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The kinds of `GeGetQLXPath`. */
enum HostPathKind {
  HOST_PATH_LIBRARY = 3,      /* what the application ships for everybody; may be read-only */
  HOST_PATH_USER_LIBRARY = 4, /* the user's own library */
  HOST_PATH_HOME = 8          /* the user's writable folder of this application */
};

enum HostConsole { HOST_CONSOLE_OUT = 1, HOST_CONSOLE_ERROR = 2 };

/* Messages and events that both sides know. */
enum HostMessage {
  HOST_MESSAGE_VERSION = 0,
  HOST_MESSAGE_INIT = 1,
  HOST_MESSAGE_ALL_LOADED = 1000,
  HOST_MESSAGE_END_1 = 1001,
  HOST_MESSAGE_LOAD_PLUGINS = 1026805,
  HOST_MESSAGE_END_2 = 1026848,
  HOST_MESSAGE_END_3 = 200000272,
  HOST_MESSAGE_ACKNOWLEDGE = 200000276,
  HOST_MESSAGE_RUN_APPLICATION = 450000215,
  HOST_EVENT_QUIT = 1026812
};

typedef struct HostMenuGroup HostMenuGroup;

typedef struct HostGeneral {
  uint32_t size;
  uint32_t reserved;

  /* Allocates `bytes` bytes, aligned for every C type. Required.
   * owner   the caller, until Free
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*Alloc)(int64_t bytes);

  /* Frees what Alloc gave; null is allowed. Required.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(void* memory);

  /* Takes the module's initialisation pair; called by the module during action 1. The host
   * copies the record. Required.
   * owner   the host, of its copy
   * thread  main
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*RegisterModuleInitialization)(const ModuleInitialization* pair);

  /* Whether the calling thread is the host's main thread.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   1 */
  int32_t (*GeIsMainThread)(void);

  /* The folder that holds what the application ships: modules, frameworks, plug-ins.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GeGetStartupPath)(void);

  /* The folder of one HostPathKind. The folder need not exist.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GeGetQLXPath)(int32_t kind);

  /* Whether `path` names a folder (`isFolder` 1) or a file (`isFolder` 0).
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  int32_t (*HostFileExists)(const HostFilename* path, int32_t isFolder);

  /* Creates a folder and the folders above it. A folder that exists is a success.
   * owner   the caller, of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*CreateFolder)(const HostFilename* path);

  /* Renames or moves a file or folder. An existing target is an error.
   * owner   the caller, of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*RenameFile)(const HostFilename* from, const HostFilename* to);

  /* Deletes a file, or a folder with all that is in it. A missing path is an error.
   * owner   the caller, of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*DeletePath)(const HostFilename* path);

  /* The default language, such as "en-US".
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetDefaultLanguage)(void);

  /* Milliseconds since an arbitrary start, never going back; wraps to negative after 24 days.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GeGetTimer)(void);

  /* Sends a message to every plug-in except the sender; 1 when one of them answered.
   * owner   the caller, of `data`
   * thread  main
   * waits   as the receivers do
   * since   23100
   * fails   0 */
  int32_t (*GePluginMessage)(int32_t id, void* data);

  /* Puts an event into the main thread's queue. HOST_EVENT_QUIT asks the application to end.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SpecialEventAdd)(int32_t id, uint64_t p1, uint64_t p2);

  /* Asks for a refresh of everything that shows the scene; calls are merged until the main
   * thread comes to it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*EventAdd)(int32_t flags);

  /* Stops the host's background work: rendering in views, renderings to pictures, and other
   * background threads, each asked for by a 1. Returns when they have stopped.
   * owner   -
   * thread  main
   * waits   yes
   * since   23100
   * fails   nothing */
  void (*StopAllThreads)(int32_t views, int32_t renderings, int32_t others);

  /* Shows in the status bar that the application is busy.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*StatusBarBusy)(void);

  /* Shows in the status bar that the application is idle.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*StatusBarIdle)(void);

  /* Prints a line on the host's console; the host adds the line end.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GePrint)(const HostString* text);

  /* Writes a text as it is to one HostConsole stream. The number of bytes written, which may
   * be fewer than the text has; below 0, the system's number of an error, such as -EPIPE, or
   * -EINTR when a signal came first. 0 drops the text.
   * owner   -
   * thread  any
   * waits   until some of the text is handed over
   * since   23100
   * fails   0 */
  int64_t (*ConsoleWrite)(int32_t stream, const HostString* text);

  /* Asks the user for input of at most `bytes` bytes: a line, or what a pipe has. 1 with the
   * text, which is empty at the end of input; 0 when a signal came first; -1 on failure.
   * owner   the caller, of the text
   * thread  main
   * waits   for the user
   * since   23100
   * fails   -1 */
  int32_t (*ConsoleRead)(int64_t bytes, HostString* result);

  /* Writes a line for developers; a release build of a host may discard it.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*DiagnosticOutput)(const HostString* text);

  /* The table of a library that some plug-in installed under `id` with at least
   * `minimumVersion`.
   * owner   the library's plug-in
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const void* (*FindLibrary)(int32_t id, int32_t minimumVersion);

  /* Publishes a table under `id`. The host keeps the pointer until the end of the process;
   * a second table under the same id replaces the first. A null table withdraws it; 0 when
   * there is none.
   * owner   the caller
   * thread  main
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*InstallLibrary)(int32_t id, int32_t version, const void* table);

  /* The number of folders in the plug-in search path.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetPluginFolderCount)(void);

  /* One folder of the plug-in search path, in search order.
   * owner   the caller
   * thread  main
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetPluginFolder)(int32_t index);

  /* The name by which the host calls the plug-in that is being loaded.
   * owner   the caller
   * thread  main
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetCurrentPluginName)(void);

  /* Sets the name by which the host calls the plug-in that is being loaded.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetCurrentPluginName)(const HostString* name);

  /* The group of the plug-ins menu with that name below `parent` (null: the menu itself),
   * made when it does not exist.
   * owner   the host
   * thread  main
   * waits   no
   * since   23100
   * fails   null */
  HostMenuGroup* (*GetPluginMenuGroup)(HostMenuGroup* parent, const HostString* name);

  /* The number of constants in the host's symbol table.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSymbolCount)(void);

  /* The name of a constant, a text with the lifetime of the symbol table; null skips it.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const char* (*GetSymbolName)(int32_t index);

  /* The value of a constant.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetSymbolValue)(int32_t index);

  /* Whether the symbol table is unchanged since it was last read through these entries.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*SymbolsUpToDate)(void);
} HostGeneral;

#ifdef __cplusplus
}
#endif
#endif
