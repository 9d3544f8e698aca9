#include "scene/nodetypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>

#include "app/settings.h"
#include "boundary/host.h"
#include "tables/tables.h"

namespace host {
namespace fs = std::filesystem;
namespace {

bool Has(const std::vector<Parameter>& parameters, int32_t number) {
  return std::any_of(parameters.begin(), parameters.end(),
                     [&](const Parameter& p) { return p.Number() == number; });
}

// Puts what is inherited ahead of what the type declares.
void Inherit(NodeType& type, const NodeType& base) {
  auto groups = base.groups, parameters = base.parameters;
  for (const auto* own : {&type.groups, &type.parameters}) {
    for (const Parameter& parameter : *own) {
      if (Has(base.groups, parameter.Number()) || Has(base.parameters, parameter.Number()))
        throw std::runtime_error(fmt::format("its base has a parameter {} already", parameter.Number()));
    }
  }
  for (const Parameter& changed : type.overrides) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const Parameter& p) { return p.Number() == changed.Number(); });
    if (found == parameters.end() || found->valueType != changed.valueType)
      throw std::runtime_error(
          fmt::format("its base has no parameter {} of that type to override", changed.Number()));
    found->standard = std::make_shared<const Value>(found->Fit(changed.standard->Data()));
    Put(found->settings, DESC_DEFAULT, *found->standard);
  }
  groups.insert(groups.end(), type.groups.begin(), type.groups.end());
  parameters.insert(parameters.end(), type.parameters.begin(), type.parameters.end());
  type.groups = std::move(groups);
  type.parameters = std::move(parameters);
  type.bases.insert(type.bases.end(), base.bases.begin(), base.bases.end());
}

}  // namespace

const Parameter* NodeType::Find(int32_t parameter) const {
  const int32_t at = container::FindIndex(&places, parameter);
  return at < 0 ? nullptr : &parameters[size_t(at)];
}

NodeTypes::NodeTypes(const fs::path& folder) {
  std::map<fs::path, NodeType> waiting;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".toml") continue;
    try {
      waiting.emplace(entry.path(), ReadNodeType(entry.path()));
    } catch (const std::runtime_error& fault) {
      faults_.push_back(fault.what());
    }
  }
  if (error)
    faults_.push_back(fmt::format("can't read the node types in '{}': {}", folder.string(), error.message()));

  // Bases come first, whatever their files are called. What is left in the end never finds its base.
  const auto add = [&](const auto& file) {
    try {
      Add(file.second);
    } catch (const std::runtime_error& fault) {
      faults_.push_back(fmt::format("{}: {}", file.first.string(), fault.what()));
    }
  };
  const auto isReady = [&](const auto& file) {
    if (file.second.base && !byId_.contains(file.second.base)) return false;
    add(file);
    return true;
  };
  while (std::erase_if(waiting, isReady)) {
  }
  std::for_each(waiting.begin(), waiting.end(), add);
}

const NodeType* NodeTypes::Find(int32_t id) const {
  std::shared_lock guard(lock_);
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : &found->second;
}

const NodeType* NodeTypes::Add(NodeType type) {
  std::lock_guard guard(lock_);
  if (byId_.contains(type.id)) throw std::runtime_error(fmt::format("another type has the id {}", type.id));
  type.bases = {type.id};
  if (type.base) {
    const auto base = byId_.find(type.base);
    if (base == byId_.end())
      throw std::runtime_error(fmt::format("its base {} is not there, or has no base itself", type.base));
    Inherit(type, base->second);
  }
  for (const Symbol& symbol : type.symbols) {
    const auto known = symbols_.find(symbol.name);
    if (known != symbols_.end() && known->second != symbol.value)
      throw std::runtime_error(
          fmt::format("the constant {} is {} elsewhere, not {}", symbol.name, known->second, symbol.value));
  }
  for (const Parameter& parameter : type.parameters) {
    Put(type.places, parameter.Number(), Value::Int32(0));
    if (!parameter.isOfMatrix) Put(type.defaults, parameter.Number(), *parameter.standard);
  }
  for (const Symbol& symbol : type.symbols) symbols_.emplace(symbol.name, symbol.value);
  return &byId_.emplace(type.id, std::move(type)).first->second;
}

bool NodeTypes::Derives(const NodeType& type, int32_t id) {
  return type.id == id || std::find(type.bases.begin(), type.bases.end(), id) != type.bases.end();
}

std::vector<Symbol> NodeTypes::Symbols() const {
  std::shared_lock guard(lock_);
  std::vector<Symbol> symbols;
  for (const auto& [name, value] : symbols_) symbols.push_back({name, value});
  return symbols;
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
