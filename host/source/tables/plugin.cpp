#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "boundary/host.h"
#include "tables/tables.h"
#include "tables/values.h"

// A registered plug-in: the host's copy of its record and of the record's texts.
struct BasePlugin {
  CommandRecord record{};  // the part behind `base` is filled for commands only
  std::string name;
  std::string help;
  size_t place = 0;

  bool Send(int32_t id, void* data) const {
    return record.base.Message && record.base.Message(record.base.self, id, data);
  }
};

namespace host {
namespace {

// Plug-ins stay until the end, so their pointers hold while others are registered.
class PluginList {
 public:
  // Takes the plug-in unless its id is taken; then the plug-in that has it is answered.
  BasePlugin* Add(std::unique_ptr<BasePlugin>& plugin) {
    std::lock_guard guard(lock_);
    const auto [found, added] = byId_.try_emplace(plugin->record.base.id, plugin.get());
    if (!added) return found->second;
    plugin->place = plugins_.size();
    plugins_.push_back(std::move(plugin));
    return plugins_.back().get();
  }

  BasePlugin* Find(int32_t id) {
    std::lock_guard guard(lock_);
    const auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : found->second;
  }

  BasePlugin* At(size_t place) {
    std::lock_guard guard(lock_);
    return place < plugins_.size() ? plugins_[place].get() : nullptr;
  }

  std::unique_ptr<BasePlugin> TakeLast() {
    std::lock_guard guard(lock_);
    if (plugins_.empty()) return nullptr;
    std::unique_ptr<BasePlugin> last = std::move(plugins_.back());
    plugins_.pop_back();
    byId_.erase(last->record.base.id);
    return last;
  }

 private:
  std::mutex lock_;
  std::vector<std::unique_ptr<BasePlugin>> plugins_;
  std::unordered_map<int32_t, BasePlugin*> byId_;
};

PluginList& Plugins() { return Lasting<PluginList>(); }

// Copies a record of the size that it tells; what a smaller one lacks stays null.
std::unique_ptr<BasePlugin> CopyRecord(const PluginRecord& record, size_t size) {
  auto plugin = std::make_unique<BasePlugin>();
  plugin->name = View(record.name);
  std::memcpy(static_cast<void*>(&plugin->record), &record, std::min<size_t>(record.size, size));
  plugin->record.base.name = nullptr;
  plugin->help = View(std::exchange(plugin->record.help, nullptr));
  return plugin;
}

BasePlugin* Register(std::unique_ptr<BasePlugin> plugin) {
  const BasePlugin& wanted = *plugin;
  const int32_t id = wanted.record.base.id;
  const auto refuse = [&](std::string_view why) -> BasePlugin* {
    Warn(fmt::format("the plug-in '{}' with the id {} is not registered: {}", wanted.name, id, why));
    return nullptr;
  };
  if (wanted.name.empty()) return refuse("it has no name");
  BasePlugin* registered = Plugins().Add(plugin);
  return plugin ? refuse(fmt::format("the id belongs to '{}'", registered->name)) : registered;
}

}  // namespace

bool MessagePlugins(int32_t id, void* data) {
  bool answered = false;
  // A receiver may register further plug-ins; they get the message too.
  for (size_t place = 0; const BasePlugin* plugin = Plugins().At(place); ++place)
    answered = plugin->Send(id, data) || answered;
  return answered;
}

void FreePlugins() {
  while (const auto plugin = Plugins().TakeLast())
    if (const PluginRecord& record = plugin->record.base; record.Free) record.Free(record.self);
}

}  // namespace host

namespace host::plugin {

BasePlugin* FindPlugin(int32_t id, int32_t kind) {
  BasePlugin* found = Plugins().Find(id);
  return found && (kind == 0 || kind == found->record.base.kind) ? found : nullptr;
}

BasePlugin* RegisterPlugin(const PluginRecord* record) {
  return record ? Register(CopyRecord(*record, sizeof *record)) : nullptr;
}

BasePlugin* RegisterCommand(const CommandRecord* record) {
  return record ? Register(CopyRecord(record->base, sizeof *record)) : nullptr;
}

BasePlugin* GetFirstPlugin() { return Plugins().At(0); }

BasePlugin* GetNext(const BasePlugin* self) { return self ? Plugins().At(self->place + 1) : nullptr; }

int32_t GetID(const BasePlugin* self) { return self ? self->record.base.id : 0; }

int32_t GetPluginType(const BasePlugin* self) { return self ? self->record.base.kind : 0; }

HostString GetName(const BasePlugin* self) { return self ? MakeString(self->name) : HostString{}; }

int32_t Message(BasePlugin* self, int32_t id, void* data) { return self && self->Send(id, data); }

}  // namespace host::plugin
