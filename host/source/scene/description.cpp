#include "scene/description.h"

#include "boundary/host.h"
#include "scene/kinds.h"
#include "tables/tables.h"

namespace host {
namespace {

// What the entries of user data stand in.
struct UserDataGroup {
  Parameter entry = [] {
    BaseContainer settings;
    Put(settings, DESC_NAME, Value::Text("User Data"));
    Put(settings, DESC_DATATYPE, Value::Int32(DTYPE_SUBCONTAINER));
    return Parameter({kUserData}, {}, settings);
  }();
};

template <class Matches>
int32_t PositionIn(const std::vector<Parameter>& parameters, const Matches& matches) {
  for (size_t i = 0; i < parameters.size(); ++i)
    if (matches(parameters[i])) return int32_t(i);
  return -1;
}

}  // namespace
}  // namespace host

Description::Description(const BaseList2D& node) : type_(node.type) {
  if (node.dynamic && !node.dynamic->entries->empty()) added_ = node.dynamic->entries;
}

int32_t Description::Count() const {
  return added_ ? FirstAdded() + int32_t(added_->size()) : FirstAdded() - 1;
}

const host::Parameter* Description::At(int32_t index) const {
  if (index < 0 || index >= Count()) return nullptr;
  size_t at = size_t(index);
  if (at < type_.groups.size()) return &type_.groups[at];
  at -= type_.groups.size();
  if (at < type_.parameters.size()) return &type_.parameters[at];
  if (index < FirstAdded()) return &host::Lasting<host::UserDataGroup>().entry;
  return &(*added_)[size_t(index - FirstAdded())];
}

int32_t Description::Find(const HostDescID& id) const {
  if (id.depth < 1) return -1;
  const int32_t first = id.level[0].id;
  const auto has = [](int32_t number) {
    return [number](const host::Parameter& parameter) { return parameter.Number() == number; };
  };
  if (first == ID_USERDATA) {
    if (!added_) return -1;
    if (id.depth == 1) return FirstAdded() - 1;
    const int32_t at = host::PositionIn(*added_, has(id.level[1].id));
    return at < 0 ? -1 : FirstAdded() + at;
  }
  if (const host::Parameter* parameter = type_.Find(first))
    return int32_t(type_.groups.size()) + int32_t(parameter - type_.parameters.data());
  return id.depth == 1 ? host::PositionIn(type_.groups, has(first)) : -1;
}

namespace host::atom {

Description* GetDescription(const QLXAtom* self, int32_t flags) {
  const BaseList2D* node = AsElement(self);
  if (!node) return nullptr;
  auto description = std::make_unique<Description>(*node);
  if (const NodeRecord* record = PluginOf(*node); record && record->GetDDescription) {
    const Hold running(const_cast<BaseList2D&>(*node));
    if (!record->GetDDescription(PluginData(*node), node, description.get(), &flags)) return nullptr;
  }
  return description.release();
}

}  // namespace host::atom

namespace host::description {

void Free(Description* self) { delete self; }

int32_t GetCount(const Description* self) { return self ? self->Count() : 0; }

HostBool GetIndex(const Description* self, int32_t index, HostDescID* id, HostDescID* group) {
  const Parameter* parameter = self ? self->At(index) : nullptr;
  if (!parameter || !id || !group) return 0;
  *id = parameter->Id();
  *group = parameter->Group();
  return 1;
}

const BaseContainer* GetSettings(const Description* self, int32_t index) {
  const Parameter* parameter = self ? self->At(index) : nullptr;
  return parameter ? &parameter->settings : nullptr;
}

int32_t Find(const Description* self, const HostDescID* id) { return self && id ? self->Find(*id) : -1; }

}  // namespace host::description
