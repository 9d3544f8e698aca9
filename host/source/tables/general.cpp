#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "app/event_queue.h"
#include "app/settings.h"
#include "app/symbols.h"
#include "boundary/host.h"
#include "files/files.h"
#include "tables/tables.h"
#include "tables/values.h"
#include "threads/background.h"

namespace fs = std::filesystem;

// A group of the plug-ins menu. Groups stay, so that their pointers hold.
struct HostMenuGroup {
  std::string name;
  std::vector<std::unique_ptr<HostMenuGroup>> groups;
};

namespace host {
namespace {

struct Library {
  int32_t version;
  const void* table;
};

struct Libraries {
  std::mutex lock;
  std::map<int32_t, Library> byId;
};

// What only the main thread touches.
struct MainThreadState {
  ModuleInitialization initialization{};
  std::string currentPlugin;
  HostMenuGroup menu;
  bool busy = false;
};

MainThreadState& State() { return Lasting<MainThreadState>(); }

// Read on first use, and not changed afterwards.
struct Symbols {
  SymbolTable table = ReadSymbols(GetSettings().startup / "resources/symbols");
  std::atomic<bool> readByModule{false};

  Symbols() {
    for (const std::string& fault : table.faults) Warn(fault);
  }
  const Symbol* At(int32_t index) const {
    return index >= 0 && size_t(index) < table.symbols.size() ? &table.symbols[size_t(index)] : nullptr;
  }
};

Symbols& AllSymbols() { return Lasting<Symbols>(); }

HostResult Answer(std::error_code error, const std::string& what, const char* file = __builtin_FILE(),
                  int line = __builtin_LINE()) {
  return error ? Failure(what, error, file, line) : HostResult{};
}

std::vector<fs::path> PluginFolders() {
  const Settings& settings = GetSettings();
  std::vector<fs::path> folders{settings.startup / "plugins"};
  if (!settings.home.empty()) folders.push_back(settings.home / "plugins");
  folders.insert(folders.end(), settings.plugins.begin(), settings.plugins.end());
  return folders;
}

}  // namespace

ModuleInitialization GetModuleInitialization() { return State().initialization; }

bool IsStatusBarBusy() { return State().busy; }

}  // namespace host

namespace host::general {

void* Alloc(int64_t bytes) { return bytes < 0 ? nullptr : std::malloc(bytes ? size_t(bytes) : 1); }

void Free(void* memory) { std::free(memory); }

int32_t RegisterModuleInitialization(const ModuleInitialization* pair) {
  if (!pair) return 0;
  State().initialization = {};
  std::memcpy(&State().initialization, pair, std::min<size_t>(pair->size, sizeof *pair));
  return 1;
}

int32_t GeIsMainThread() { return std::this_thread::get_id() == GetSettings().mainThread; }

HostFilename GeGetStartupPath() { return MakeFilename(GetSettings().startup.native()); }

HostFilename GeGetQLXPath(int32_t kind) {
  const Settings& settings = GetSettings();
  if (kind == HOST_PATH_LIBRARY) return MakeFilename((settings.startup / "library").native());
  if (settings.home.empty()) return {};
  if (kind == HOST_PATH_USER_LIBRARY) return MakeFilename((settings.home / "library").native());
  return kind == HOST_PATH_HOME ? MakeFilename(settings.home.native()) : HostFilename{};
}

int32_t HostFileExists(const HostFilename* path, int32_t isFolder) {
  std::error_code missing;
  const fs::file_status status = fs::status(View(path), missing);
  return fs::exists(status) && fs::is_directory(status) == (isFolder != 0);
}

HostResult CreateFolder(const HostFilename* path) {
  return Answer(CreateFolders(View(path)), fmt::format("can't create the folder '{}'", View(path)));
}

HostResult RenameFile(const HostFilename* from, const HostFilename* to) {
  return Answer(Rename(View(from), View(to)), fmt::format("can't rename '{}' to '{}'", View(from), View(to)));
}

HostResult DeletePath(const HostFilename* path) {
  return Answer(DeleteTree(View(path)), fmt::format("can't delete '{}'", View(path)));
}

HostString GetDefaultLanguage() { return MakeString(FindLanguage()); }

int32_t GeGetTimer() {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point start = Clock::now();
  return int32_t(uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count()));
}

// The module is the only sender, and the host keeps no entry for it beside its plug-ins.
int32_t GePluginMessage(int32_t id, void* data) { return MessagePlugins(id, data); }

void SpecialEventAdd(int32_t id, uint64_t p1, uint64_t p2) { GetEventQueue().Add({id, p1, p2}); }

void EventAdd(int32_t flags) { GetEventQueue().AddRefresh(flags); }

void StopAllThreads(int32_t views, int32_t renderings, int32_t others) {
  if (views) StopBackground(BACKGROUND_THREAD_VIEW);
  if (renderings) StopBackground(BACKGROUND_THREAD_RENDERING);
  if (others) StopBackground(BACKGROUND_THREAD_OTHER);
}

void StatusBarBusy() { State().busy = true; }

void StatusBarIdle() { State().busy = false; }

void GePrint(const HostString* text) { WriteStream(STDOUT_FILENO, std::string(View(text)) + "\n"); }

int64_t ConsoleWrite(int32_t stream, const HostString* text) {
  if (stream != HOST_CONSOLE_OUT && stream != HOST_CONSOLE_ERROR) return -EINVAL;
  const std::string_view bytes = View(text);
  const int descriptor = stream == HOST_CONSOLE_OUT ? STDOUT_FILENO : STDERR_FILENO;
  const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
  if (written >= 0 || errno != EAGAIN) return written >= 0 ? written : -errno;
  // A stream that does not wait by itself.
  return WriteStream(descriptor, bytes) ? -errno : int64_t(bytes.size());
}

int32_t ConsoleRead(int64_t bytes, HostString* result) {
  if (bytes <= 0 || !result) return -1;
  *result = {};
  std::string buffer(size_t(std::min<int64_t>(bytes, 1 << 20)), '\0');
  const ssize_t read = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  if (read < 0) return errno == EINTR ? 0 : -1;
  *result = MakeString({buffer.data(), size_t(read)});
  return 1;
}

void DiagnosticOutput(const HostString* text) {
#ifndef NDEBUG
  constexpr bool debug = true;
#else
  constexpr bool debug = false;
#endif
  static const char* wanted = std::getenv("QLX_DIAGNOSTICS");
  if (debug || (wanted && !std::strcmp(wanted, "1")))
    WriteStream(STDERR_FILENO, std::string(View(text)) + "\n");
}

const void* FindLibrary(int32_t id, int32_t minimumVersion) {
  auto& libraries = Lasting<Libraries>();
  std::lock_guard guard(libraries.lock);
  const auto found = libraries.byId.find(id);
  return found != libraries.byId.end() && found->second.version >= minimumVersion ? found->second.table
                                                                                  : nullptr;
}

int32_t InstallLibrary(int32_t id, int32_t version, const void* table) {
  auto& libraries = Lasting<Libraries>();
  std::lock_guard guard(libraries.lock);
  if (!table) return int32_t(libraries.byId.erase(id));
  libraries.byId[id] = {version, table};
  return 1;
}

int32_t GetPluginFolderCount() { return int32_t(PluginFolders().size()); }

HostFilename GetPluginFolder(int32_t index) {
  const auto folders = PluginFolders();
  return index >= 0 && size_t(index) < folders.size() ? MakeFilename(folders[size_t(index)].native())
                                                      : HostFilename{};
}

HostString GetCurrentPluginName() { return MakeString(State().currentPlugin); }

void SetCurrentPluginName(const HostString* name) { State().currentPlugin = View(name); }

HostMenuGroup* GetPluginMenuGroup(HostMenuGroup* parent, const HostString* name) {
  if (View(name).empty()) return nullptr;
  auto& groups = (parent ? parent : &State().menu)->groups;
  const auto found =
      std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g->name == View(name); });
  if (found != groups.end()) return found->get();
  return groups.emplace_back(new HostMenuGroup{std::string(View(name)), {}}).get();
}

int32_t GetSymbolCount() { return int32_t(AllSymbols().table.symbols.size()); }

const char* GetSymbolName(int32_t index) {
  const Symbol* symbol = AllSymbols().At(index);
  return symbol ? symbol->name.c_str() : nullptr;
}

int32_t GetSymbolValue(int32_t index) {
  Symbols& symbols = AllSymbols();
  const Symbol* symbol = symbols.At(index);
  if (!symbol) return 0;
  if (symbol == &symbols.table.symbols.back()) symbols.readByModule = true;
  return symbol->value;
}

int32_t SymbolsUpToDate() { return AllSymbols().readByModule; }

}  // namespace host::general
