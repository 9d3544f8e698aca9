#include "scene/nodetypes.h"

#include <fmt/format.h>

#include <limits>
#include <stdexcept>

#include "app/settings.h"
#include "files/files.h"
#include "tables/tables.h"

namespace host {
namespace fs = std::filesystem;
namespace {

int32_t IntegerOf(const fs::path& file, const TomlEntry& entry) {
  const auto* value = std::get_if<int64_t>(&entry.value);
  using Limits = std::numeric_limits<int32_t>;
  if (value && *value >= Limits::min() && *value <= Limits::max()) return int32_t(*value);
  throw std::runtime_error(
      fmt::format("{}, line {}: '{}' is no 32-bit integer", file.string(), entry.line, entry.key));
}

const std::string& TextOf(const fs::path& file, const TomlEntry& entry) {
  if (const auto* text = std::get_if<std::string>(&entry.value)) return *text;
  throw std::runtime_error(fmt::format("{}, line {}: '{}' is no text", file.string(), entry.line, entry.key));
}

}  // namespace

NodeTypes::NodeTypes(const fs::path& folder) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".toml") continue;
    try {
      Read(entry.path());
    } catch (const std::runtime_error& fault) {
      faults_.push_back(fault.what());
    }
  }
  if (error)
    faults_.push_back(fmt::format("can't read the node types in '{}': {}", folder.string(), error.message()));
}

void NodeTypes::Read(const fs::path& file) {
  NodeType type;
  for (const TomlEntry& entry : ReadToml(file)) {
    if (entry.key == "id") {
      type.id = IntegerOf(file, entry);
    } else if (entry.key == "base") {
      type.base = IntegerOf(file, entry);
    } else if (entry.key == "abstract") {
      type.isAbstract = IntegerOf(file, entry) != 0;
    } else if (entry.key == "name") {
      type.name = TextOf(file, entry);
    } else {
      throw std::runtime_error(
          fmt::format("{}, line {}: '{}' is no key of a node type", file.string(), entry.line, entry.key));
    }
  }
  if (type.id == 0 || type.name.empty())
    throw std::runtime_error(fmt::format("{}: a node type needs an id and a name", file.string()));
  if (!byId_.try_emplace(type.id, type).second)
    throw std::runtime_error(fmt::format("{}: another file has the id {}", file.string(), type.id));
}

const NodeType* NodeTypes::Find(int32_t id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : &found->second;
}

const NodeType* NodeTypes::Add(NodeType type) {
  if (type.base && !Find(type.base))
    throw std::runtime_error(fmt::format("its base {} is not there", type.base));
  const int32_t id = type.id;
  const auto [at, added] = byId_.try_emplace(id, std::move(type));
  if (!added) throw std::runtime_error(fmt::format("another type has the id {}", id));
  return &at->second;
}

// A base that comes back to a type it began with ends the walk after as many steps as there are types.
bool NodeTypes::Derives(const NodeType& type, int32_t id) const {
  const NodeType* at = &type;
  for (size_t steps = 0; at && steps <= byId_.size(); ++steps) {
    if (at->id == id) return true;
    at = at->base ? Find(at->base) : nullptr;
  }
  return false;
}

NodeTypes& AllNodeTypes() {
  static NodeTypes& types = []() -> NodeTypes& {
    auto& read = *new NodeTypes(GetSettings().startup / "resources/nodes");
    for (const std::string& fault : read.Faults()) Warn(fault);
    return read;
  }();
  return types;
}

}  // namespace host
