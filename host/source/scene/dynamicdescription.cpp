#include "scene/dynamicdescription.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "boundary/host.h"
#include "scene/atom.h"

struct DynamicBrowse {
  std::shared_ptr<const DynamicDescription::Entries> entries;
  size_t next = 0;
};

namespace host {
namespace {

using Entries = DynamicDescription::Entries;

auto Position(const Entries& entries, int32_t number) {
  return std::find_if(entries.begin(), entries.end(), [&](const Parameter& p) { return p.Number() == number; });
}

bool IsUserData(const HostDescID* id) { return id && id->depth >= 2 && id->level[0].id == ID_USERDATA; }

// The entries for a change: nobody else's.
Entries& Own(DynamicDescription& description) {
  if (description.entries.use_count() != 1)
    description.entries = std::make_shared<Entries>(*description.entries);
  return *description.entries;
}

bool Store(DynamicDescription& description, int32_t number, const BaseContainer& settings) {
  try {
    const DescLevel level{number, 0, 0};
    Parameter made({kUserData, level}, kUserData, settings);
    Entries& own = Own(description);
    const auto found = own.begin() + (Position(own, number) - own.cbegin());
    if (found == own.end()) {
      own.push_back(std::move(made));
    } else {
      *found = std::move(made);
    }
  } catch (const std::invalid_argument&) {
    return false;
  }
  if (description.node) Touch(*description.node, DIRTYFLAGS_DESCRIPTION);
  return true;
}

void RemoveValue(BaseList2D* node, int32_t number) {
  if (!node) return;
  BaseContainer* values = container::GetContainerInstance(&node->data, ID_USERDATA);
  if (container::RemoveData(values, number)) Touch(*node, DIRTYFLAGS_DATA);
}

}  // namespace
}  // namespace host

const host::Parameter* DynamicDescription::Find(int32_t number) const {
  const auto found = host::Position(*entries, number);
  return found == entries->end() ? nullptr : &*found;
}

std::unique_ptr<DynamicDescription> DynamicDescription::Clone() const {
  auto clone = std::make_unique<DynamicDescription>();
  clone->entries = entries;
  return clone;
}

namespace host::baselist {

DynamicDescription* GetDynamicDescription(BaseList2D* self) {
  if (!AsElement(self)) return nullptr;
  if (!self->dynamic) self->dynamic = std::make_unique<DynamicDescription>();
  self->dynamic->node = self;
  return self->dynamic.get();
}

}  // namespace host::baselist

namespace host::dynamicdescription {

HostBool Alloc(DynamicDescription* self, const BaseContainer* settings, HostDescID* id) {
  if (!self || !settings || !id) return 0;
  int32_t last = 0;
  for (const Parameter& parameter : *self->entries) last = std::max(last, parameter.Number());
  int32_t number = last < std::numeric_limits<int32_t>::max() ? last + 1 : 1;
  if (number == 1 && last > 0) {  // the first that is free
    std::set<int32_t> taken;
    for (const Parameter& parameter : *self->entries) taken.insert(parameter.Number());
    while (taken.contains(number)) ++number;
  }
  if (!Store(*self, number, *settings)) return 0;
  *id = self->entries->back().Id();
  return 1;
}

HostBool Set(DynamicDescription* self, const HostDescID* id, const BaseContainer* settings, BaseList2D* node) {
  if (!self || !IsUserData(id) || !settings) return 0;
  const int32_t number = id->level[1].id;
  if (number < 1) return 0;
  const Parameter* known = self->Find(number);
  const int32_t before = known ? known->valueType : HOST_DATA_NONE;
  if (!Store(*self, number, *settings)) return 0;
  if (self->Find(number)->valueType != before) RemoveValue(node, number);
  return 1;
}

HostBool Remove(DynamicDescription* self, const HostDescID* id) {
  if (!self || !IsUserData(id)) return 0;
  const int32_t number = id->level[1].id;
  if (!self->Find(number)) return 0;
  Entries& own = Own(*self);
  own.erase(Position(own, number));
  RemoveValue(self->node, number);
  if (self->node) Touch(*self->node, DIRTYFLAGS_DESCRIPTION);
  return 1;
}

const BaseContainer* Find(const DynamicDescription* self, const HostDescID* id) {
  const Parameter* found = self && IsUserData(id) ? self->Find(id->level[1].id) : nullptr;
  return found ? &found->settings : nullptr;
}

DynamicBrowse* BrowseInit(DynamicDescription* self) {
  return self ? new DynamicBrowse{self->entries} : nullptr;
}

HostBool GetNext(DynamicDescription*, DynamicBrowse* browse, HostDescID* id, const BaseContainer** settings) {
  if (!browse || !id || !settings || browse->next == browse->entries->size()) return 0;
  const Parameter& parameter = (*browse->entries)[browse->next++];
  *id = parameter.Id();
  *settings = &parameter.settings;
  return 1;
}

void BrowseFree(DynamicDescription*, DynamicBrowse* browse) { delete browse; }

}  // namespace host::dynamicdescription
