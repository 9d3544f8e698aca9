// What a container keeps its entries in.
#ifndef HOST_SCENE_STORAGE_H
#define HOST_SCENE_STORAGE_H

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include "scene/gedata.h"

namespace host {

struct Entry {
  int32_t id;
  bool isGap = false;     // was removed: its place is kept, without a value
  bool hasLater = false;  // the first of its id: others may follow; told in a storage with an index only
  Value value;
};

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

// How many entries are no gaps, up to any place: sums of sums, of which each answer takes a few.
class Ranks {
 public:
  bool IsEmpty() const { return sums_.empty(); }
  void Clear() { sums_ = {}; }

  // So many places, none of them a gap.
  void Build(size_t places) {
    std::vector<int32_t> sums(places);
    for (size_t i = 0; i < places; ++i) sums[i] = int32_t(Span(i));
    sums_.swap(sums);
  }
  void Append() {
    const size_t at = sums_.size();
    int32_t sum = 1;
    for (size_t part = 1; part < Span(at); part *= 2) sum += sums_[at - part];
    sums_.push_back(sum);
  }
  void Add(size_t at, int32_t entries) {
    for (; at < sums_.size(); at += Span(at)) sums_[at] += entries;
  }
  int32_t CountBelow(size_t at) const {
    int32_t count = 0;
    for (; at > 0; at -= Span(at - 1)) count += sums_[at - 1];
    return count;
  }
  // The place of which CountBelow is `rank`.
  size_t Select(int32_t rank) const {
    size_t at = 0;
    for (size_t step = std::bit_floor(sums_.size()); step > 0; step /= 2) {
      if (at + step > sums_.size() || sums_[at + step - 1] > rank) continue;
      at += step;
      rank -= sums_[at - 1];
    }
    return at;
  }

 private:
  // How many places the sum at a place is of: it is their last one.
  static size_t Span(size_t at) { return (at + 1) & ~at; }

  std::vector<int32_t> sums_;
};

// Of all containers together: what GetInstanceEpoch answers.
inline std::atomic<uint64_t> g_instanceEpoch{1};

// The entries of one container, or of several until one of them changes. They are told by their positions,
// which only count entries, or by their places, which also count the gaps that removed ones leave in a large
// storage.
struct Storage {
  static constexpr size_t kIndexed = 16;  // fewer are found by looking at each, and leave no gaps

  int32_t Count() const { return int32_t(entries.size() - gaps); }
  size_t PlaceOf(int32_t position) const { return gaps ? ranks.Select(position) : size_t(position); }
  int32_t PositionOf(size_t place) const { return gaps ? ranks.CountBelow(place) : int32_t(place); }

  // The place of the first entry of that id; -1 for none.
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

  // Insert, Append and Remove throw without a change.

  // The entries up to the next gap, or the end, move by one place.
  void Insert(int32_t position, int32_t id, Value value) {
    if (position == Count()) return Append(id, std::move(value));
    Reserve();
    size_t place = PlaceOf(position);
    if (place > 0 && entries[place - 1].isGap) --place;
    size_t end = gaps ? place : entries.size();
    while (end < entries.size() && !entries[end].isGap) ++end;
    if (end == entries.size()) {
      if (!ranks.IsEmpty()) ranks.Append();
      entries.push_back({});
    } else {
      ranks.Add(end, 1);
      --gaps;
    }
    EndInstances();
    for (size_t i = end; i > place; --i) {
      entries[i] = std::move(entries[i - 1]);
      if (!index.IsEmpty() && index.Find(entries[i].id) == int32_t(i - 1)) index.Set(entries[i].id, int32_t(i));
    }
    entries[place] = {.id = id, .value = std::move(value)};
    if (!index.IsEmpty()) Know(id, int32_t(place));
  }

  void Append(int32_t id, Value value) {
    Reserve();
    const auto place = int32_t(entries.size());
    if (!ranks.IsEmpty()) ranks.Append();
    entries.push_back({.id = id, .value = std::move(value)});
    if (!index.IsEmpty()) Know(id, place);
  }

  void Remove(size_t place) {
    if (index.IsEmpty()) {
      EndInstances();
      entries.erase(entries.begin() + ptrdiff_t(place));
      return;
    }
    if (2 * gaps >= entries.size()) {  // the work of each removal stays the same: half as many came before
      const int32_t position = PositionOf(place);
      Compact();
      return Remove(size_t(position));
    }
    const bool isLast = ranks.IsEmpty() && place + 1 == entries.size();
    if (!isLast && ranks.IsEmpty()) ranks.Build(entries.size());
    EndInstances();
    Entry& entry = entries[place];
    if (index.Find(entry.id) == int32_t(place)) {
      const int32_t next = entry.hasLater ? FindFrom(place + 1, entry.id) : -1;
      if (next < 0) {
        index.Erase(entry.id);
      } else {
        index.Set(entry.id, next);
        entries[size_t(next)].hasLater = true;
      }
    }
    if (isLast) return entries.pop_back();
    entry.value = Value();
    entry.isGap = true;
    ranks.Add(place, -1);
    ++gaps;
  }

  void Replace(size_t place, Value value) {
    if (ContainerOf(entries[place].value.Data())) EndInstances();
    entries[place].value = std::move(value);
  }

  // Throws without a change, as the next one.
  void Compact() {
    if (ranks.IsEmpty()) return;
    std::vector<Entry> kept;
    kept.reserve(size_t(Count()) + 1);
    PositionIndex made = MakeIndex();
    for (Entry& entry : entries)
      if (!entry.isGap) kept.push_back(std::move(entry));
    entries.swap(kept);
    gaps = 0;
    ranks.Clear();
    index = std::move(made);
    Reindex();
  }

  void BuildIndex() {
    index = MakeIndex();
    Reindex();
  }

  std::atomic<int64_t> owners{1};
  bool isLent = false;      // a sub-container was given away to be changed: never shared again
  Storage* next = nullptr;  // in a list of those that end
  std::vector<Entry> entries;
  size_t gaps = 0;
  Ranks ranks;  // empty until an entry leaves a gap
  PositionIndex index;

 private:
  // Room for one more entry.
  void Reserve() {
    if (entries.size() == size_t(std::numeric_limits<int32_t>::max())) throw std::length_error("container");
    if (entries.size() == entries.capacity()) entries.reserve(std::max<size_t>(4, 2 * entries.size()));
    if (!index.IsEmpty())
      index.Reserve(size_t(Count()) + 1);
    else if (entries.size() >= kIndexed)
      BuildIndex();
  }

  // Tells the index of a new entry.
  void Know(int32_t id, int32_t place) {
    const int32_t first = index.Find(id);
    if (first < 0 || first > place) index.Set(id, place);
    if (first >= 0) entries[size_t(std::min(first, place))].hasLater = true;
  }

  // With room for the entries and one more, but none for a few.
  PositionIndex MakeIndex() const {
    PositionIndex made;
    if (size_t(Count()) >= kIndexed) made.Reserve(size_t(Count()) + 1);
    return made;
  }

  // From the entries, of which none is known yet.
  void Reindex() {
    if (index.IsEmpty()) return;
    for (size_t i = entries.size(); i-- > 0;) {
      if (entries[i].isGap) continue;
      entries[i].hasLater = index.Find(entries[i].id) >= 0;
      index.Set(entries[i].id, int32_t(i));
    }
  }

  int32_t FindFrom(size_t place, int32_t id) const {
    for (; place < entries.size(); ++place)
      if (entries[place].id == id && !entries[place].isGap) return int32_t(place);
    return -1;
  }
};

// All storages of a container and of those below it, each once and behind those of its sub-containers.
std::vector<Storage*> InnermostFirst(const BaseContainer& container);

}  // namespace host

#endif
