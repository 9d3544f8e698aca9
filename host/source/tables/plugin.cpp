#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "boundary/host.h"
#include "scene/kinds.h"
#include "tables/tables.h"
#include "tables/values.h"

// A registered plug-in: the host's copy of its record and of the record's texts.
struct BasePlugin : BaseList2D {
  BasePlugin(const host::NodeType& ofKind, const CommandRecord& of);

  bool Answer(int32_t id, void* data) override {
    return record.base.Message && record.base.Message(record.base.self, id, data);
  }
  bool AsksOthers() const override { return true; }
  bool BelongsToDocuments() const override { return false; }

  CommandRecord record;  // without its texts; the part behind `base` is filled for commands only
  std::string title;     // what it is registered as; the name can be changed
  std::string help;
  size_t place = 0;
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

// Plug-ins are elements too, of a type that is their kind and that no file declares.
const NodeType& TypeOfKind(int32_t kind) {
  NodeType& type = Lasting<std::map<int32_t, NodeType>>()[kind];
  type.id = kind;
  type.bases = {kind};
  type.name = "Plug-in";
  return type;
}

// Copies as much of a record as it has and the host knows; what a smaller one lacks stays null.
template <class Record>
void CopyRecord(const PluginRecord& record, size_t known, Record& copy) {
  std::memcpy(static_cast<void*>(&copy), &record, std::min<size_t>(record.size, known));
}

std::unique_ptr<BasePlugin> MakePlugin(const PluginRecord& record, size_t known) {
  CommandRecord copy{};
  CopyRecord(record, known, copy);
  return std::make_unique<BasePlugin>(TypeOfKind(record.kind), copy);
}

BasePlugin* Refuse(const BasePlugin& plugin, std::string_view why) {
  Warn(fmt::format("the plug-in '{}' with the id {} is not registered: {}", plugin.title, plugin.record.base.id,
                   why));
  return nullptr;
}

BasePlugin* Register(std::unique_ptr<BasePlugin> plugin) {
  const BasePlugin& wanted = *plugin;
  if (wanted.title.empty()) return Refuse(wanted, "it has no name");
  BasePlugin* registered = Plugins().Add(plugin);
  return plugin ? Refuse(wanted, fmt::format("the id belongs to '{}'", registered->title)) : registered;
}

// A plug-in's type of elements. It stays, because elements may outlive the plug-in; its callbacks don't.
struct NodePlugin {
  NodeRecord record{};
  Text description;
};

std::vector<std::unique_ptr<NodePlugin>>& NodePlugins() {
  return Lasting<std::vector<std::unique_ptr<NodePlugin>>>();
}

}  // namespace

bool MessagePlugins(int32_t id, void* data) {
  bool answered = false;
  // A receiver may register further plug-ins; they get the message too.
  for (size_t place = 0; BasePlugin* plugin = Plugins().At(place); ++place)
    answered = plugin->Answer(id, data) || answered;
  return answered;
}

void FreePlugins() {
  for (const auto& node : NodePlugins()) node->record = {};
  while (auto plugin = Plugins().TakeLast()) {
    const PluginRecord record = plugin->record.base;
    DestroyNow(plugin.release());
    if (record.Free) record.Free(record.self);
  }
}

}  // namespace host

BasePlugin::BasePlugin(const host::NodeType& ofKind, const CommandRecord& of)
    : BaseList2D(ofKind), record(of), title(host::View(of.base.name)), help(host::View(of.help)) {
  name = title;
  record.base.name = record.help = nullptr;
  isFixed = true;
}

namespace host::plugin {

BasePlugin* FindPlugin(int32_t id, int32_t kind) {
  BasePlugin* found = Plugins().Find(id);
  return found && (kind == 0 || kind == found->record.base.kind) ? found : nullptr;
}

BasePlugin* RegisterPlugin(const PluginRecord* record) {
  return record ? Register(MakePlugin(*record, sizeof *record)) : nullptr;
}

BasePlugin* RegisterCommand(const CommandRecord* record) {
  return record ? Register(MakePlugin(record->base, sizeof *record)) : nullptr;
}

BasePlugin* RegisterNode(const NodeRecord* record) {
  if (!record) return nullptr;
  auto plugin = MakePlugin(record->base, sizeof record->base);
  auto node = std::make_unique<NodePlugin>();
  CopyRecord(record->base, sizeof *record, node->record);
  node->record.base.name = nullptr;
  if (node->record.description) {
    node->description = Text(node->record.description);
    node->record.description = &node->description.Word();
  }
  NodeType type;
  type.id = record->base.id;
  type.base = node->record.baseType;
  type.name = plugin->title;
  type.info = record->base.info;
  type.record = &node->record;
  const bool needsBase = type.base || record->base.kind != PLUGIN_KIND_NODE;
  if (needsBase && (!FindType(type.base) || type.base == kTypeHead))
    return Refuse(*plugin, fmt::format("its base type {} is not there", type.base));
  if (FindType(type.id)) return Refuse(*plugin, "the id is that of a type of elements");
  if (plugin->title.empty() || Plugins().Find(type.id)) return Register(std::move(plugin));  // refuses
  NodePlugins().push_back(std::move(node));
  try {
    AllNodeTypes().Add(std::move(type));
  } catch (const std::runtime_error& fault) {
    NodePlugins().pop_back();
    return Refuse(*plugin, fault.what());
  }
  return Register(std::move(plugin));
}

BasePlugin* GetFirstPlugin() { return Plugins().At(0); }

BasePlugin* GetNext(const BasePlugin* self) { return self ? Plugins().At(self->place + 1) : nullptr; }

int32_t GetID(const BasePlugin* self) { return self ? self->record.base.id : 0; }

int32_t GetPluginType(const BasePlugin* self) { return self ? self->record.base.kind : 0; }

HostString GetName(const BasePlugin* self) { return self ? MakeString(self->title) : HostString{}; }

int32_t Message(BasePlugin* self, int32_t id, void* data) { return self && self->Answer(id, data); }

}  // namespace host::plugin
