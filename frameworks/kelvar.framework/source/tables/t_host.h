/* What a host hands to `qlx_main` with action 1, and how the module is entered. */
#ifndef KELVAR_T_HOST_H
#define KELVAR_T_HOST_H

#include "t_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The lowest host version that the module accepts. */
#define HOST_VERSION_MINIMUM 23100

/* Every group starts like this. `size` is the size of the host's table in bytes: entries
 * past it, and null entries, are lacking and answer with their documented failure. */
typedef struct HostGroup {
  uint32_t size;
  uint32_t reserved;
} HostGroup;

/* The place of each group in `HostTables`. Places that are not named are reserved; a host
 * leaves them null. */
enum HostGroupNumber {
  HOST_GROUP_GENERAL = 1,
  HOST_GROUP_STRING = 5,
  HOST_GROUP_FILENAME = 9,
  HOST_GROUP_HYPER_FILE = 10,
  HOST_GROUP_BROWSE_FILES = 11,
  HOST_GROUP_BASE_FILE = 12,
  HOST_GROUP_RESOURCE = 15,
  HOST_GROUP_BASE_LIST = 16,
  HOST_GROUP_LINK = 17,
  HOST_GROUP_LIST_NODE = 18,
  HOST_GROUP_LIST_HEAD = 19,
  HOST_GROUP_ATOM = 20,
  HOST_GROUP_DOCUMENT = 21,
  HOST_GROUP_DESCRIPTION = 22,
  HOST_GROUP_CONTAINER = 23,
  HOST_GROUP_BITMAP = 24,
  HOST_GROUP_GEDATA = 25,
  HOST_GROUP_DYNAMIC_DESCRIPTION = 26,
  HOST_GROUP_ALIAS_TRANS = 27,
  HOST_GROUP_OBJECT = 28,
  HOST_GROUP_TAG = 29,
  HOST_GROUP_MATERIAL = 30,
  HOST_GROUP_SHADER = 31,
  HOST_GROUP_TRACK = 32,
  HOST_GROUP_LAYER = 33,
  HOST_GROUP_PLUGIN = 34,
  HOST_GROUP_POINT_OBJECT = 36,
  HOST_GROUP_POLYGON_OBJECT = 37,
  HOST_GROUP_SPLINE_OBJECT = 38,
  HOST_GROUP_LINE_OBJECT = 39,
  HOST_GROUP_SELECT = 40,
  HOST_GROUP_NEIGHBOR = 41,
  HOST_GROUP_PRIORITY_LIST = 42,
  HOST_GROUP_ATOM_ARRAY = 43,
  HOST_GROUP_THREAD = 44,
  HOST_GROUP_COUNT = 96
};

/* `group` has `groupCount` words, which may be fewer or more than HOST_GROUP_COUNT. The
 * tables stay where they are, unchanged but for their data words, until action 3 has
 * returned. */
typedef struct HostTables {
  int32_t version;
  int32_t groupCount;
  HostGroup* group[HOST_GROUP_COUNT];
} HostTables;

enum QlxAction {
  QLX_ACTION_OPEN = 1,         /* p1 HostTables, p3 HostFilename of the module; 1, or -3 */
  QLX_ACTION_PLUGIN_START = 2, /* 0 or 1 */
  QLX_ACTION_CLOSE = 3,        /* 1 */
  QLX_ACTION_IDENTIFY = 4,     /* 5 */
  QLX_ACTION_MESSAGE = 6       /* p1 message id as a number, p2 data; 1 or -1 */
};

/* The module's entry point, exported under the name "qlx_main". Main thread only. */
typedef int32_t (*QlxMain)(int32_t action, void* p1, void* p2, void* p3);

/* What a spin lock of the module gives to `g_CpuYieldDelegate`. A waiter's record counts
 * up; `count` 2147483647 tells that the lock at `address` was released. */
typedef struct CpuYieldRecord {
  int32_t count;
  int32_t step;
  uint32_t address; /* low half of the address that the second argument has in full */
} CpuYieldRecord;

/* Exported as the writable pointer "g_CpuYieldDelegate"; a host may store its own before
 * action 1. Called on any thread; may wait. */
typedef void (*CpuYieldDelegate)(CpuYieldRecord* record, void* address);

/* The module's pair of the initialisation stage. The host calls `BringUp` once after action
 * 1 and before message 1, and `Shutdown` once when it unloads the module; a second
 * `Shutdown` is harmless. */
typedef struct ModuleInitialization {
  uint32_t size;
  uint32_t reserved;
  HostResult (*BringUp)(void);
  void (*Shutdown)(void);
} ModuleInitialization;

#ifdef __cplusplus
}
#endif
#endif
