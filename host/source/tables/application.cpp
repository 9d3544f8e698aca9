#include <ctime>
#include <map>
#include <mutex>

#include "app/settings.h"
#include "boundary/host.h"
#include "tables/tables.h"
#include "tables/values.h"

namespace host {
namespace {

struct ModuleList {
  std::mutex lock;
  std::map<std::string, ModuleInfo> infos;
};

}  // namespace

std::vector<ModuleInfo> GetModuleInfos() {
  auto& list = Lasting<ModuleList>();
  std::lock_guard guard(list.lock);
  std::vector<ModuleInfo> infos;
  for (const auto& [id, info] : list.infos) infos.push_back(info);
  return infos;
}

}  // namespace host

namespace host::application {

HostString GetIdentity() { return MakeString(GetSettings().identity); }

int32_t GetArgumentCount() { return int32_t(GetSettings().arguments.size()); }

HostString GetArgument(int32_t index) {
  const auto& arguments = GetSettings().arguments;
  if (index < 0 || size_t(index) >= arguments.size()) return {};
  return MakeString(arguments[size_t(index)]);
}

HostFilename GetExecutable() { return MakeFilename(GetSettings().executable.native()); }

void SetExitCode(int32_t code) { GetSettings().exitCode = code; }

int32_t GetConfigurationBool(const char* name, int32_t fallback) {
  return name ? GetSettings().configuration.Get(name, fallback) : fallback;
}

void SetConfigurationBool(const char* name, int32_t value) {
  if (name) GetSettings().configuration.Set(name, value != 0);
}

int32_t ConsoleIsAvailable() { return GetSettings().configuration.Get("g_console", 0); }

int32_t GetCurrentYear() {
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  return localtime_r(&now, &fields) ? fields.tm_year + 1900 : 0;
}

HostResult RegisterModuleInfo(const char* id, const HostString* shortName, const HostString* longName,
                              const HostString* version) {
  if (!id || !*id) return Failure("module information needs an id", HOST_RESULT_ILLEGAL_ARGUMENT);
  auto& list = Lasting<ModuleList>();
  std::lock_guard guard(list.lock);
  list.infos[id] = {id, std::string(View(shortName)), std::string(View(longName)), std::string(View(version))};
  return {};
}

}  // namespace host::application
