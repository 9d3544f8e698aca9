#include "scene/container.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <limits>
#include <memory>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "boundary/host.h"
#include "scene/gedata.h"

namespace host {

struct Entry {
  int32_t id;
  Value value;
};

namespace {

// From an id to a position, by open addressing with linear probing; at most half full.
class PositionIndex {
 public:
  bool IsEmpty() const { return slots_.empty(); }

  // Makes room for so many ids; throws std::bad_alloc and is unchanged then.
  void Reserve(size_t ids) {
    if (slots_.size() >= 2 * ids) return;
    std::vector<Slot> old(std::bit_ceil(2 * ids));
    old.swap(slots_);
    for (const Slot& slot : old)
      if (slot.position >= 0) At(slot.id) = slot;
  }

  // -1 for an unknown id.
  int32_t Find(int32_t id) const { return slots_[Probe(id)].position; }

  void Set(int32_t id, int32_t position) { At(id) = {id, position}; }

  void Erase(int32_t id) {
    size_t hole = Probe(id);
    const size_t mask = slots_.size() - 1;
    // What follows without a gap moves up, unless that puts it ahead of its first place.
    for (size_t i = (hole + 1) & mask; slots_[i].position >= 0; i = (i + 1) & mask)
      if (((i - Home(slots_[i].id)) & mask) >= ((i - hole) & mask)) slots_[std::exchange(hole, i)] = slots_[i];
    slots_[hole].position = -1;
  }

 private:
  struct Slot {
    int32_t id = 0;
    int32_t position = -1;  // -1: free
  };

  size_t Home(int32_t id) const {
    return uint64_t(uint32_t(id) * 2654435769u) * slots_.size() >> 32;  // the upper bits are the mixed ones
  }
  size_t Probe(int32_t id) const {
    size_t i = Home(id);
    while (slots_[i].position >= 0 && slots_[i].id != id) i = (i + 1) & (slots_.size() - 1);
    return i;
  }
  Slot& At(int32_t id) { return slots_[Probe(id)]; }

  std::vector<Slot> slots_;
};

// Of all containers together: what GetInstanceEpoch answers.
std::atomic<uint64_t> g_instanceEpoch{1};

}  // namespace

// The entries of one container, or of several until one of them changes.
struct Storage {
  static constexpr size_t kIndexed = 16;  // fewer are found by looking at each

  int32_t Find(int32_t id) const {
    if (!index.IsEmpty()) return index.Find(id);
    for (size_t i = 0; i < entries.size(); ++i)
      if (entries[i].id == id) return int32_t(i);
    return -1;
  }

  // Ahead of a change after which an instance has gone, or is no longer the first entry of its id.
  void EndInstances() const {
    if (isLent) g_instanceEpoch.fetch_add(1, std::memory_order_release);
  }

  // Throws without a change.
  void Insert(size_t at, int32_t id, Value value) {
    if (entries.size() == size_t(std::numeric_limits<int32_t>::max())) throw std::length_error("container");
    if (entries.size() >= kIndexed) {
      const bool isFirst = index.IsEmpty();
      index.Reserve(entries.size() + 1);
      if (isFirst) Reindex();
    }
    if (at < entries.size()) EndInstances();
    entries.insert(entries.begin() + ptrdiff_t(at), Entry{id, std::move(value)});
    if (index.IsEmpty()) return;
    for (size_t i = entries.size(); --i > at;)
      if (index.Find(entries[i].id) == int32_t(i - 1)) index.Set(entries[i].id, int32_t(i));
    const int32_t first = index.Find(id);
    if (first < 0 || first > int32_t(at)) index.Set(id, int32_t(at));
  }

  void Remove(size_t at) {
    const int32_t id = entries[at].id;
    EndInstances();
    entries.erase(entries.begin() + ptrdiff_t(at));
    if (index.IsEmpty()) return;
    if (index.Find(id) == int32_t(at)) index.Erase(id);
    for (size_t i = at; i < entries.size(); ++i) {
      const int32_t first = index.Find(entries[i].id);
      if (first < 0 || first == int32_t(i + 1)) index.Set(entries[i].id, int32_t(i));
    }
  }

  void Replace(size_t at, Value value) {
    if (ContainerOf(entries[at].value.Data())) EndInstances();
    entries[at].value = std::move(value);
  }

  // The index knows the ids, or has room for them. The first position of each is told last.
  void Reindex() {
    for (size_t i = entries.size(); i-- > 0;) index.Set(entries[i].id, int32_t(i));
  }

  std::atomic<int64_t> owners{1};
  bool isLent = false;      // a sub-container was given away to be changed: never shared again
  Storage* next = nullptr;  // in a list of those that end
  std::vector<Entry> entries;
  PositionIndex index;
};

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
    copy->index = source->index;
    copy->entries.reserve(source->entries.size());
    for (const Entry& entry : source->entries) {
      const BaseContainer* sub = ContainerOf(entry.value.Data());
      if (!sub) {
        copy->entries.push_back({entry.id, Value(entry.value.Data())});
        continue;
      }
      auto made = std::make_unique<BaseContainer>(sub->id);
      made->dirty = sub->dirty;
      if (sub->storage && sub->storage->isLent) {
        pending.emplace_back(sub->storage, made.get());
      } else {
        made->storage = Share(sub->storage);
      }
      copy->entries.push_back({entry.id, Value(std::move(made))});
    }
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
  return container && container->storage ? int32_t(container->storage->entries.size()) : 0;
}

int32_t PositionOf(const BaseContainer* container, int32_t id) {
  return container && container->storage ? container->storage->Find(id) : -1;
}

// Null for a position that is none.
const Entry* EntryAt(const BaseContainer* container, int32_t index) {
  return index >= 0 && index < CountOf(container) ? &container->storage->entries[size_t(index)] : nullptr;
}

void Insert(BaseContainer& container, int32_t at, int32_t id, Value value) {
  Own(container).Insert(size_t(at), id, std::move(value));
  ++container.dirty;
}

void Replace(BaseContainer& container, int32_t at, Value value) {
  Own(container).Replace(size_t(at), std::move(value));
  ++container.dirty;
}

void Remove(BaseContainer& container, int32_t at) {
  Own(container).Remove(size_t(at));
  ++container.dirty;
}

// Depth first, so that a later entry meets what the earlier ones of its id have made.
void Merge(BaseContainer& into, const BaseContainer& from) {
  struct Level {
    BaseContainer* to;
    const BaseContainer* from;
    int32_t next;
  };
  std::vector<Level> levels{{&into, &from, 0}};
  while (!levels.empty()) {
    Level& level = levels.back();
    const Entry* entry = EntryAt(level.from, level.next++);
    if (!entry) {
      if (CountOf(level.from)) ++level.to->dirty;
      levels.pop_back();
      continue;
    }
    Storage& own = Own(*level.to);
    const int32_t at = own.Find(entry->id);
    if (at < 0) {
      own.Insert(own.entries.size(), entry->id, Value(entry->value.Data()));
      continue;
    }
    BaseContainer* sub = ContainerOf(own.entries[size_t(at)].value.Data());
    const BaseContainer* other = ContainerOf(entry->value.Data());
    if (sub && other) {
      levels.push_back({sub, other, 0});
    } else {
      own.Replace(size_t(at), Value(entry->value.Data()));
    }
  }
}

// All storages below, each once and behind those of its sub-containers.
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
  return GetIndexData(self, PositionOf(self, id));
}

// In these the value is copied first: it may lie in the container that changes, or hold it.

HostBool SetData(BaseContainer* self, int32_t id, const HostGeData* data) {
  if (!self || !data) return 0;
  Value value(*data);
  const int32_t at = PositionOf(self, id);
  if (at < 0) {
    Insert(*self, CountOf(self), id, std::move(value));
  } else {
    Replace(*self, at, std::move(value));
  }
  return 1;
}

HostBool InsData(BaseContainer* self, int32_t id, const HostGeData* data) {
  return InsDataAfter(self, id, data, CountOf(self) - 1);
}

HostBool InsDataAfter(BaseContainer* self, int32_t id, const HostGeData* data, int32_t index) {
  if (!self || !data || index < -1 || index >= CountOf(self)) return 0;
  Insert(*self, index + 1, id, Value(*data));
  return 1;
}

HostBool SetIndexData(BaseContainer* self, int32_t index, const HostGeData* data) {
  if (!EntryAt(self, index) || !data) return 0;
  Replace(*self, index, Value(*data));
  return 1;
}

HostBool RemoveData(BaseContainer* self, int32_t id) { return RemoveIndex(self, PositionOf(self, id)); }

HostBool RemoveIndex(BaseContainer* self, int32_t index) {
  if (!EntryAt(self, index)) return 0;
  Remove(*self, index);
  return 1;
}

int32_t FindIndex(const BaseContainer* self, int32_t id) { return PositionOf(self, id); }

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
  if (std::is_sorted(self->storage->entries.begin(), self->storage->entries.end(), isLess)) return;
  Storage& own = Own(*self);
  std::stable_sort(own.entries.begin(), own.entries.end(), isLess);
  if (!own.index.IsEmpty()) own.Reindex();
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
