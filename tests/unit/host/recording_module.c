/* A module that prints what its host asks of it. RECORD_FAIL names the step that fails, and
 * RECORD_EXIT the exit code that its work sets. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "core.framework/source/tavor/tables/t_application.h"
#include "kelvar.framework/source/tables/t_general.h"
#include "kelvar.framework/source/tables/t_plugin.h"
#include "kelvar.framework/source/tables/t_string.h"

#define EXPORT __attribute__((visibility("default")))

static void KeepQuiet(CpuYieldRecord* record, void* address) {
  (void)record;
  (void)address;
}

EXPORT TavorRecord g_tavor;
EXPORT CpuYieldDelegate g_CpuYieldDelegate = &KeepQuiet;

static const HostTables* host;

static int Fails(const char* step) {
  const char* chosen = getenv("RECORD_FAIL");
  return chosen && !strcmp(chosen, step);
}

static const HostGeneral* General(void) { return (const HostGeneral*)host->group[HOST_GROUP_GENERAL]; }

static void Print(const char* line) {
  const HostStringGroup* strings = (const HostStringGroup*)host->group[HOST_GROUP_STRING];
  HostString text = strings->FromUtf8(line, (int64_t)strlen(line));
  General()->GePrint(&text);
  strings->Destroy(&text);
}

static HostResult BringUp(void) {
  HostResult result;
  memset(&result, 0, sizeof result);
  Print("bring up");
  if (Fails("bring up")) {
    const HostStringGroup* strings = (const HostStringGroup*)host->group[HOST_GROUP_STRING];
    result.code = HOST_RESULT_ERROR;
    result.text = strings->FromUtf8("no interpreter", 14);
  }
  return result;
}

static void Shutdown(void) { Print("shut down"); }

static void FreePlugin(void* self) { Print(self); }

static int32_t Open(void* tables) {
  const ModuleInitialization pair = {sizeof pair, 0, &BringUp, &Shutdown};
  if (Fails("open")) return -3;
  host = tables;
  Print(g_CpuYieldDelegate == &KeepQuiet ? "open without delegate" : "open");
  General()->RegisterModuleInitialization(&pair);
  return 1;
}

static int32_t Start(void) {
  const HostStringGroup* strings = (const HostStringGroup*)host->group[HOST_GROUP_STRING];
  const HostPluginGroup* plugins = (const HostPluginGroup*)host->group[HOST_GROUP_PLUGIN];
  HostString name = strings->FromUtf8("Plug-in", 7);
  const PluginRecord record = {sizeof record, PLUGIN_KIND_TAG, 1, 0, &name, "free plug-in", NULL, &FreePlugin};
  Print("start");
  plugins->RegisterPlugin(&record);
  strings->Destroy(&name);
  if (getenv("RECORD_QUIT")) General()->SpecialEventAdd(HOST_EVENT_QUIT, 0, 0);
  return !Fails("start");
}

static int32_t Message(intptr_t id) {
  const TavorApplicationService* application =
      (const TavorApplicationService*)g_tavor.ResolveService("net.tavor.interface.application");
  const char* code = getenv("RECORD_EXIT");
  char line[32];
  snprintf(line, sizeof line, "message %ld", (long)id);
  Print(line);
  if (id == HOST_MESSAGE_RUN_APPLICATION && code) application->SetExitCode(atoi(code));
  return id == HOST_MESSAGE_INIT && Fails("message") ? -1 : 1;
}

EXPORT int32_t qlx_main(int32_t action, void* p1, void* p2, void* p3) {
  (void)p2;
  switch (action) {
    case QLX_ACTION_OPEN:
      return p3 ? Open(p1) : -3;
    case QLX_ACTION_PLUGIN_START:
      return Start();
    case QLX_ACTION_MESSAGE:
      return Message((intptr_t)p1);
    case QLX_ACTION_CLOSE:
      Print("close");
      return 1;
    default:
      return -1;
  }
}
