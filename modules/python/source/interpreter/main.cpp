// The module's entry point: action codes, entry count, the start and the end.

#include "interpreter/main.h"

#include <cstdio>
#include <string>

#include "boundary/resolve.h"
#include "cxgfx/fields.h"
#include "interpreter/lib_python.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_spinlock.h"
#include "interpreter/messages.h"
#include "interpreter/modulelibrary.h"
#include "kelvar/general.h"
#include "kelvar/link.h"
#include "kelvar/resource.h"
#include "kelvar/text.h"
#include "kit/i_dynamic.h"
#include "kit/i_lasting.h"
#include "kit/i_wrapper.h"
#include "nodes/nodes.h"
#include "plugins/plugins.h"
#include "tavor/application.h"
#include "threading/threads.h"

#define QLX_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

void YieldNothing(CpuYieldRecord*, void*) {}

}  // namespace

QLX_EXPORT TavorRecord g_tavor;
TavorRecord g_tavor = {};

QLX_EXPORT CpuYieldDelegate g_CpuYieldDelegate;
CpuYieldDelegate g_CpuYieldDelegate = YieldNothing;

namespace qlx {
namespace {

int32_t g_entryCount = 0;
HostTables* g_hostTables = nullptr;
bool g_hasTables = false;
HostFilename* g_modulePath = nullptr;
LanguageInfo* g_languageInfo = nullptr;
GeResource* g_resource = nullptr;
Lasting<Filename> g_resourcePath;

constexpr int32_t kRefused = -3;

HostResult BringUpEntry() {
  return boundary::Guard([] { return VmBringUp().ToHost(); });
}

void ShutdownEntry() {
  boundary::Guard([] { VmShutdown(); });
}

// What a host offers of a group, before it is accepted; what it lacks is null.
template <class Table>
Table Offered(const HostTables& host, int32_t number) {
  Table table{};
  const HostGroup* group = number < host.groupCount ? host.group[number] : nullptr;
  if (group) boundary::Overlay(table, group, group->size, sizeof(HostGroup));
  return table;
}

// Names what the host lacks, on the way that is left for it.
void ReportRefusal(const HostTables& host, const std::string& missing) {
  const std::string text = "qlx: the host does not offer what the module needs: " + missing;
  const auto general = Offered<HostGeneral>(host, HOST_GROUP_GENERAL);
  const auto string = Offered<HostStringGroup>(host, HOST_GROUP_STRING);
  if (!general.DiagnosticOutput || !string.FromUtf8 || !string.Destroy) {
    std::fprintf(stderr, "%s\n", text.c_str());
    return;
  }
  HostString words = string.FromUtf8(text.data(), int64_t(text.size()));
  general.DiagnosticOutput(&words);
  string.Destroy(&words);
}

int32_t OpenEntry(HostTables* host, const HostFilename* modulePath) {
  if (++g_entryCount != 1) return 1;
  g_hostTables = host;
  if (!modulePath || !host || host->version < HOST_VERSION_MINIMUM) return kRefused;
  const std::string missing = tables::Resolve(host);
  if (!missing.empty()) {
    ReportRefusal(*host, missing);
    return kRefused;
  }
  static const ModuleInitialization pair = {sizeof(ModuleInitialization), 0, BringUpEntry, ShutdownEntry};
  if (!kelvar::RegisterModuleInitialization(&pair)) {
    ReportRefusal(*host, "it does not take the module's initialisation pair");
    return kRefused;
  }
  g_hasTables = true;
  g_modulePath = static_cast<HostFilename*>(kelvar::Alloc(sizeof(HostFilename)));
  if (!g_modulePath) return 1;
  tables::filename.Construct(g_modulePath);
  tables::filename.CopyFrom(g_modulePath, modulePath);
  return 1;
}

void PluginEnd() {
  g_trackLeaks = false;
  delete g_languageInfo;
  g_languageInfo = nullptr;
  FreeModuleRegistry();
}

void FreeResource() {
  if (!g_resource) return;
  g_resource->Close();
  g_resource = nullptr;
  *g_resourcePath = {};
}

int32_t CloseEntry() {
  if (--g_entryCount != 0) return 1;
  if (g_hasTables) GeResource::SetSymbolHook(nullptr);
  kelvar::SetQuiet(nullptr);
  kelvar::SetTurn(nullptr, nullptr);
  PluginEnd();
  FreeResource();
  if (g_modulePath) {
    tables::filename.Destroy(g_modulePath);
    kelvar::Free(g_modulePath);
    g_modulePath = nullptr;
  }
  g_hasTables = false;
  tables::Forget();
  return 1;
}

enum class Startup { kDone, kScriptFailed, kNoPath };

// Runs the start-up script of one folder, if it has one, and prints what goes wrong.
Startup RunStartupScriptOf(SpecialPath which) {
  Filename file = LibraryRef()->GetSpecialPath(which);
  if (!file.Content()) return Startup::kDone;
  if (tavor::Error error = file.Append(kelvar::Text("python_init.py"))) {
    LogError(error);
    return Startup::kNoPath;
  }
  if (!kelvar::HostFileExists(file, false) && !kelvar::HostFileExists(file, true)) return Startup::kDone;
  tavor::Error error = RunStartupScript(file);
  if (!error) return Startup::kDone;
  LogError(error);
  return Startup::kScriptFailed;
}

// Everything that needs the interpreter, with its lock held.
bool StartUnderLock() {
  CPythonLibrary* library = LibraryRef();
  if (tavor::Error error = library->InitTypes()) LogError(error);
  RegisterDynamicModules();
  RegisterScriptCommands();
  RegisterSourceProtector();
  RegisterScriptManager();
  RegisterPythonTag();
  RegisterPythonEffector();
  RegisterPythonGraphNode();
  RegisterPythonGenerator();
  if (tavor::Error error = library->InitBuiltinModules()) {
    LogError(error);
    return false;
  }
  return true;
}

bool StartPython() {
  PublishModuleLibrary();
  CreateModuleRegistry();
  RegisterThreadNode();
  kelvar::SetQuiet(WaitForCalls);
  kelvar::SetTurn(TakeTurn, GiveTurn);
  LibraryGilScope lock(LibraryRef());
  return StartUnderLock();
}

bool PluginStart() {
  if (!g_languageInfo) return false;
  if (IsPythonPresent() && !StartPython()) return false;
  RegisterPythonField();
  RegisterPythonFieldLayer();
  kelvar::GePluginMessage(kMessagePythonReady, nullptr);
  if (!IsPythonPresent()) return true;
  // A global script that fails does not keep the user's own from running.
  return RunStartupScriptOf(SPECIALPATH_PREFS_PYTHON_GLOBAL_LIBS) != Startup::kNoPath &&
         RunStartupScriptOf(SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS) == Startup::kDone;
}

}  // namespace

bool g_trackLeaks = false;

bool HasHostTables() { return g_hasTables; }
LanguageInfo* GetLanguageInfo() { return g_languageInfo; }

bool InitModule() {
  if (!g_modulePath || !OpenModuleResource()) return false;
  g_trackLeaks = false;
  delete g_languageInfo;
  g_languageInfo = new (std::nothrow) LanguageInfo;
  if (!g_languageInfo) return false;
  g_languageInfo->language = kelvar::GetDefaultLanguage();
  g_languageInfo->trackLeaks = tavor::application::GetConfigurationBool("g_trackLeaks", false);
  g_trackLeaks = g_languageInfo->trackLeaks;
  g_wrapperTracker.Restart();
  const std::string_view language = kelvar::View(g_languageInfo->language);
  const size_t dash = language.find('-');
  if (dash != std::string_view::npos) g_languageInfo->country = kelvar::Text(language.substr(dash + 1));
  // Answers that the host remembers of an earlier hook are void.
  const int32_t count = g_hostTables->groupCount;
  HostGroup* group = count > HOST_GROUP_STRING ? g_hostTables->group[HOST_GROUP_STRING] : nullptr;
  if (group) reinterpret_cast<HostStringGroup*>(group)->symbolCache = nullptr;
  GeResource::SetSymbolHook(TestResourceSymbol);
  return true;
}

bool OpenModuleResource() {
  if (g_resource) return true;
  Filename folder = reinterpret_cast<const Filename*>(g_modulePath)->GetDirectory();
  if (folder.Append(kelvar::Text("qlx.res"))) return false;
  g_resource = GeResource::Open(folder);
  if (g_resource) *g_resourcePath = folder;
  return g_resource != nullptr;
}

}  // namespace qlx

QLX_EXPORT int32_t qlx_main(int32_t action, void* p1, void* p2, void* p3) {
  return boundary::Guard(
      [&]() -> int32_t {
        switch (action) {
          case QLX_ACTION_OPEN:
            return qlx::OpenEntry(static_cast<HostTables*>(p1), static_cast<const HostFilename*>(p3));
          case QLX_ACTION_PLUGIN_START:
            return qlx::PluginStart();
          case QLX_ACTION_CLOSE:
            return qlx::CloseEntry();
          case QLX_ACTION_IDENTIFY:
            return 5;
          case QLX_ACTION_MESSAGE:
            return qlx::PluginMessage(int32_t(reinterpret_cast<intptr_t>(p1)), p2) ? 1 : -1;
          default:
            return -1;
        }
      },
      int32_t(-1));
}
