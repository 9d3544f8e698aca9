#include "scene/container.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "boundary/host.h"
#include "scene/storage.h"

namespace host {

namespace {

Storage* Share(Storage* storage) {
  if (storage) storage->owners.fetch_add(1, std::memory_order_relaxed);
  return storage;
}

// One owner less. The sub-containers of a storage that ends hand theirs to the same list.
void Drop(Storage* storage) {
  Storage* ending = nullptr;
  const auto drop = [&ending](Storage* one) {
    if (!one || one->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    one->EndInstances();
    one->next = ending;
    ending = one;
  };
  for (drop(storage); ending;) {
    const std::unique_ptr<Storage> last(ending);
    ending = last->next;
    for (const Entry& entry : last->entries)
      if (BaseContainer* sub = ContainerOf(entry.value.Data())) drop(std::exchange(sub->storage, nullptr));
  }
}

// Gives `to`, which has none, entries of its own. Those of sub-containers are shared where that is allowed.
void CopyEntries(Storage& from, BaseContainer& to) {
  std::vector<std::pair<Storage*, BaseContainer*>> pending{{&from, &to}};
  while (!pending.empty()) {
    const auto [source, target] = pending.back();
    pending.pop_back();
    Storage* copy = target->storage = new Storage;
    copy->entries.reserve(size_t(source->Count()));
    for (const Entry& entry : source->entries) {
      if (entry.isGap) continue;
      const BaseContainer* sub = ContainerOf(entry.value.Data());
      if (!sub) {
        copy->entries.push_back({entry.id, false, entry.hasLater, Value(entry.value.Data())});
        continue;
      }
      auto made = std::make_unique<BaseContainer>(sub->id);
      made->dirty = sub->dirty;
      if (sub->storage && sub->storage->isLent) {
        pending.emplace_back(sub->storage, made.get());
      } else {
        made->storage = Share(sub->storage);
      }
      copy->entries.push_back({entry.id, false, entry.hasLater, Value(std::move(made))});
    }
    if (source->gaps)
      copy->BuildIndex();
    else
      copy->index = source->index;
  }
}

// The entries for a change: nobody else's.
Storage& Own(BaseContainer& container) {
  if (!container.storage) {
    container.storage = new Storage;
  } else if (container.storage->owners.load(std::memory_order_acquire) != 1) {
    BaseContainer copy;
    CopyEntries(*container.storage, copy);
    std::swap(container.storage, copy.storage);
  }
  return *container.storage;
}

int32_t CountOf(const BaseContainer* container) {
  return container && container->storage ? container->storage->Count() : 0;
}

int32_t PlaceOf(const BaseContainer* container, int32_t id) {
  return container && container->storage ? container->storage->Find(id) : -1;
}

// Null for a position that is none.
const Entry* EntryAt(const BaseContainer* container, int32_t position) {
  if (position < 0 || position >= CountOf(container)) return nullptr;
  return &container->storage->entries[container->storage->PlaceOf(position)];
}

// Depth first, so that a later entry meets what the earlier ones of its id have made. What is shared can be met
// often, but is merged once: the second time its place takes the result.
void Merge(BaseContainer& into, const BaseContainer& from) {
  struct Level {
    BaseContainer* to;
    const BaseContainer* from;
    BaseContainer before;  // what `to` shared; kept, so that no other storage gets its address
    int32_t next = 0;
  };
  using Pair = std::pair<const Storage*, const Storage*>;
  std::map<Pair, std::pair<BaseContainer, BaseContainer>> merged;  // before and after
  std::vector<Level> levels{{&into, &from, BaseContainer()}};
  while (!levels.empty()) {
    Level& level = levels.back();
    const Entry* entry = EntryAt(level.from, level.next++);
    if (!entry) {
      if (CountOf(level.from)) ++level.to->dirty;
      const Pair pair(level.before.storage, level.from->storage);
      if (pair.first) merged.try_emplace(pair, level.before, *level.to);
      levels.pop_back();
      continue;
    }
    Storage& own = Own(*level.to);
    const int32_t at = own.Find(entry->id);
    if (at < 0) {
      own.Append(entry->id, Value(entry->value.Data()));
      continue;
    }
    BaseContainer* sub = ContainerOf(own.entries[size_t(at)].value.Data());
    const BaseContainer* other = ContainerOf(entry->value.Data());
    if (!sub || !other) {
      own.Replace(size_t(at), Value(entry->value.Data()));
      continue;
    }
    const bool isShared = sub->storage && sub->storage->owners > 1;
    const auto known = isShared ? merged.find({sub->storage, other->storage}) : merged.end();
    if (known == merged.end()) {
      levels.push_back({sub, other, isShared ? *sub : BaseContainer()});
    } else {
      Drop(std::exchange(sub->storage, Share(known->second.second.storage)));
      sub->dirty += CountOf(other) > 0;
    }
  }
}

}  // namespace

std::vector<Storage*> InnermostFirst(const BaseContainer& container) {
  std::vector<Storage*> order;
  std::vector<std::pair<Storage*, bool>> pending{{container.storage, false}};
  std::unordered_set<const Storage*> seen{nullptr};
  while (!pending.empty()) {
    const auto [storage, isReady] = pending.back();
    pending.pop_back();
    if (isReady) order.push_back(storage);
    if (isReady || !seen.insert(storage).second) continue;
    pending.emplace_back(storage, true);
    for (const Entry& entry : storage->entries)
      if (const BaseContainer* sub = ContainerOf(entry.value.Data())) pending.emplace_back(sub->storage, false);
  }
  return order;
}

namespace {

// What stands in the place of a storage, while MapLinks works. It keeps both.
class Replacements {
 public:
  Replacements() = default;
  Replacements(const Replacements&) = delete;
  Replacements& operator=(const Replacements&) = delete;
  ~Replacements() {
    for (const auto& [old, now] : byOld_) Drop(old), Drop(now);
  }
  void Set(Storage* old, Storage* now) {
    byOld_.emplace(old, now);
    Share(old);
    Share(now);
  }
  // Whether the container has other entries now.
  bool Apply(BaseContainer& container) const {
    const auto found = byOld_.find(container.storage);
    if (found == byOld_.end()) return false;
    Drop(std::exchange(container.storage, Share(found->second)));
    ++container.dirty;
    return true;
  }
  bool Has(const BaseContainer& container) const { return byOld_.contains(container.storage); }

 private:
  std::unordered_map<Storage*, Storage*> byOld_;
};

bool IsSame(HostLink a, HostLink b) { return a.slot == b.slot && a.generation == b.generation; }

bool IsLink(const Entry& entry) { return entry.value.Data().type == HOST_DATA_LINK; }

}  // namespace

bool HoldsLinks(const BaseContainer& container) {
  if (!container.storage) return false;
  for (const Storage* storage : InnermostFirst(container))
    if (std::any_of(storage->entries.begin(), storage->entries.end(), IsLink)) return true;
  return false;
}

bool MapLinks(BaseContainer& container, const std::function<HostLink(HostLink)>& map) {
  if (!container.storage) return false;
  Replacements replaced;
  bool changed = false;
  for (Storage* storage : InnermostFirst(container)) {
    const auto changes = [&](const Entry& entry) {
      const HostGeData& data = entry.value.Data();
      const BaseContainer* sub = ContainerOf(data);
      return sub ? replaced.Has(*sub) : IsLink(entry) && !IsSame(map(data.value.link), data.value.link);
    };
    if (std::none_of(storage->entries.begin(), storage->entries.end(), changes)) continue;
    changed = true;
    // Who was given a sub-container keeps it: it stays where it is.
    BaseContainer copy;
    Storage* to = storage;
    if (!storage->isLent) {
      CopyEntries(*storage, copy);
      to = copy.storage;
      replaced.Set(storage, to);
    }
    for (Entry& entry : to->entries) {
      HostGeData data = entry.value.Data();
      if (BaseContainer* sub = ContainerOf(data)) {
        replaced.Apply(*sub);
      } else if (IsLink(entry)) {
        data.value.link = map(data.value.link);
        entry.value = Value(data);
      }
    }
  }
  if (changed && !replaced.Apply(container)) ++container.dirty;
  return changed;
}

}  // namespace host

BaseContainer::BaseContainer(const BaseContainer& other) : BaseContainer(other.id) {
  dirty = other.dirty;
  if (other.storage && other.storage->isLent) {
    host::CopyEntries(*other.storage, *this);
  } else {
    storage = host::Share(other.storage);
  }
}

BaseContainer& BaseContainer::operator=(BaseContainer other) noexcept {
  id = other.id;
  std::swap(storage, other.storage);
  ++dirty;
  return *this;
}

BaseContainer::~BaseContainer() { host::Drop(storage); }

bool BaseContainer::operator==(const BaseContainer& other) const {
  std::vector<std::pair<const BaseContainer*, const BaseContainer*>> pending{{this, &other}};
  // What is shared can be met often, but is compared once. A storage may well differ from itself, by a NaN.
  std::set<std::pair<const host::Storage*, const host::Storage*>> seen;
  while (!pending.empty()) {
    const auto [a, b] = pending.back();
    pending.pop_back();
    if (a->id != b->id || host::CountOf(a) != host::CountOf(b)) return false;
    if (host::CountOf(a) == 0) continue;
    const bool areShared = a->storage->owners > 1 && b->storage->owners > 1;
    if (areShared && !seen.emplace(a->storage, b->storage).second) continue;
    for (int32_t i = 0; i < host::CountOf(a); ++i) {
      const host::Entry &left = *host::EntryAt(a, i), &right = *host::EntryAt(b, i);
      if (left.id != right.id) return false;
      const BaseContainer* leftSub = host::ContainerOf(left.value.Data());
      const BaseContainer* rightSub = host::ContainerOf(right.value.Data());
      if (leftSub && rightSub) {
        pending.emplace_back(leftSub, rightSub);
      } else if (!host::IsEqual(left.value.Data(), right.value.Data())) {
        return false;
      }
    }
  }
  return true;
}

namespace host::container {

BaseContainer* Alloc(int32_t id) { return new BaseContainer(id); }

void Free(BaseContainer* self) { delete self; }

BaseContainer* GetClone(const BaseContainer* self) { return self ? new BaseContainer(*self) : nullptr; }

HostBool IsEqual(const BaseContainer* self, const BaseContainer* other) {
  return self && other && *self == *other;
}

int32_t GetId(const BaseContainer* self) noexcept { return self ? self->id : 0; }

void SetId(BaseContainer* self, int32_t id) noexcept {
  if (!self) return;
  self->id = id;
  ++self->dirty;
}

int32_t GetCount(const BaseContainer* self) noexcept { return CountOf(self); }

const HostGeData* FindData(const BaseContainer* self, int32_t id) noexcept {
  const int32_t at = PlaceOf(self, id);
  return at >= 0 ? &self->storage->entries[size_t(at)].value.Data() : nullptr;
}

// In these the value is copied first: it may lie in the container that changes, or hold it.

HostBool SetData(BaseContainer* self, int32_t id, const HostGeData* data) {
  if (!self || !data) return 0;
  Value value(*data);
  Storage& own = Own(*self);
  const int32_t at = own.Find(id);
  if (at < 0) {
    own.Append(id, std::move(value));
  } else {
    own.Replace(size_t(at), std::move(value));
  }
  ++self->dirty;
  return 1;
}

HostBool InsData(BaseContainer* self, int32_t id, const HostGeData* data) {
  return InsDataAfter(self, id, data, CountOf(self) - 1);
}

HostBool InsDataAfter(BaseContainer* self, int32_t id, const HostGeData* data, int32_t index) {
  if (!self || !data || index < -1 || index >= CountOf(self)) return 0;
  Value value(*data);
  Own(*self).Insert(index + 1, id, std::move(value));
  ++self->dirty;
  return 1;
}

HostBool SetIndexData(BaseContainer* self, int32_t index, const HostGeData* data) {
  if (!EntryAt(self, index) || !data) return 0;
  Value value(*data);
  Storage& own = Own(*self);
  own.Replace(own.PlaceOf(index), std::move(value));
  ++self->dirty;
  return 1;
}

HostBool RemoveData(BaseContainer* self, int32_t id) {
  if (PlaceOf(self, id) < 0) return 0;
  Storage& own = Own(*self);
  own.Remove(size_t(own.Find(id)));
  ++self->dirty;
  return 1;
}

HostBool RemoveIndex(BaseContainer* self, int32_t index) {
  if (!EntryAt(self, index)) return 0;
  Storage& own = Own(*self);
  own.Remove(own.PlaceOf(index));
  ++self->dirty;
  return 1;
}

int32_t FindIndex(const BaseContainer* self, int32_t id) {
  const int32_t at = PlaceOf(self, id);
  return at < 0 ? -1 : self->storage->PositionOf(size_t(at));
}

int32_t GetIndexId(const BaseContainer* self, int32_t index) {
  const Entry* entry = EntryAt(self, index);
  return entry ? entry->id : -1;
}

const HostGeData* GetIndexData(const BaseContainer* self, int32_t index) noexcept {
  const Entry* entry = EntryAt(self, index);
  return entry ? &entry->value.Data() : nullptr;
}

void FlushAll(BaseContainer* self) {
  if (!self) return;
  Drop(std::exchange(self->storage, nullptr));
  ++self->dirty;
}

uint32_t GetDirty(const BaseContainer* self) { return self ? self->dirty : 0; }

// No flag has a meaning yet.
HostBool CopyTo(const BaseContainer* self, BaseContainer* dst, int32_t /*flags*/) {
  if (!self || !dst) return 0;
  if (self != dst) *dst = *self;
  return 1;
}

HostBool MergeContainer(BaseContainer* self, const BaseContainer* src) {
  if (!self || !src) return 0;
  // Of a copy, because one may be a part of the other.
  Merge(*self, BaseContainer(*src));
  return 1;
}

void Sort(BaseContainer* self) {
  if (CountOf(self) == 0) return;
  const auto isLess = [](const Entry& a, const Entry& b) { return a.id < b.id; };
  const auto isSorted = [&](const Storage* storage) {
    return std::is_sorted(storage->entries.begin(), storage->entries.end(), isLess);
  };
  if (isSorted(self->storage)) return;
  Storage& own = Own(*self);
  own.Compact();
  if (isSorted(&own)) return;
  std::stable_sort(own.entries.begin(), own.entries.end(), isLess);
  own.BuildIndex();
  ++self->dirty;
}

BaseContainer* GetContainerInstance(BaseContainer* self, int32_t id) {
  const HostGeData* data = FindData(self, id);
  if (!data || !ContainerOf(*data)) return nullptr;
  Storage& own = Own(*self);
  own.isLent = true;
  return ContainerOf(own.entries[size_t(own.Find(id))].value.Data());
}

uint64_t GetInstanceEpoch() noexcept { return g_instanceEpoch.load(std::memory_order_acquire); }

}  // namespace host::container
