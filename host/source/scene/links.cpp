#include "scene/links.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "boundary/host.h"
#include "scene/atom.h"
#include "tables/tables.h"

namespace host {

struct LinkSlot {
  std::atomic<Linkable*> object{nullptr};
  std::atomic<uint64_t> generation{1};
  std::atomic<uint32_t> pins{0};           // with kDoomed while the object waits for the last one
  std::atomic<Linkable*> doomed{nullptr};  // dead, and waiting for its last pin
};

namespace {

constexpr uint32_t kDoomed = uint32_t(1) << 31;

class SlotTable {
 public:
  LinkSlot* Take() {
    std::lock_guard guard(lock_);
    if (free_.empty()) Grow();
    LinkSlot* slot = free_.back();
    free_.pop_back();
    return slot;
  }

  // Never fails: the list has room for every slot that there is.
  void Give(LinkSlot* slot) {
    std::lock_guard guard(lock_);
    free_.push_back(slot);
  }

 private:
  static constexpr size_t kChunk = 1024;

  void Grow() {
    free_.reserve((chunks_.size() + 1) * kChunk);
    chunks_.push_back(std::make_unique<LinkSlot[]>(kChunk));
    for (size_t i = kChunk; i-- > 0;) free_.push_back(&chunks_.back()[i]);
  }

  std::mutex lock_;
  std::vector<std::unique_ptr<LinkSlot[]>> chunks_;
  std::vector<LinkSlot*> free_;
};

SlotTable& Slots() { return Lasting<SlotTable>(); }

struct Graveyard {
  std::mutex lock;
  std::vector<Linkable*> objects;
  HostQuiet quiet = nullptr;
};

Graveyard& Destroyed() { return Lasting<Graveyard>(); }

struct TurnTaking {
  std::mutex lock;
  HostTakeTurn take = nullptr;
  HostGiveTurn give = nullptr;
};

TurnTaking& Turns() { return Lasting<TurnTaking>(); }

Linkable* ObjectOf(HostLink link) {
  const auto* slot = static_cast<const LinkSlot*>(link.slot);
  if (!slot) return nullptr;
  // The object is read first: when the slot has the next one already, it has the next generation too.
  Linkable* object = slot->object.load(std::memory_order_acquire);
  return slot->generation.load(std::memory_order_acquire) == link.generation ? object : nullptr;
}

// For the destroyer and for each pin that goes: the one that finds the object doomed and unpinned frees it.
// The mark and the pins are one word, so that none of them acts on what was so before.
void FreeDoomed(LinkSlot* slot) {
  uint32_t unpinned = kDoomed;
  if (!slot->pins.compare_exchange_strong(unpinned, 0)) return;
  Linkable* doomed = slot->doomed.exchange(nullptr);
  // A pin's holder may have linked the dead object: such a link must not find the slot's next one.
  slot->generation.fetch_add(1);
  delete doomed;
  Slots().Give(slot);
}

// A reference has no offset to ask for, so that it is looked for.
uint32_t OffsetOfType() {
  const NodeType type;
  const QLXAtom atom(type);
  uint32_t offset = 0;
  const void* word = nullptr;
  for (; word != &type; offset += sizeof word)
    std::memcpy(&word, reinterpret_cast<const char*>(&atom) + offset, sizeof word);
  return offset - uint32_t(sizeof word);
}

}  // namespace

Linkable::~Linkable() = default;

void Linkable::Link(HostLink& link) {
  link = {};
  if (dead_.load(std::memory_order_acquire)) return;
  LinkSlot* slot = slot_.load(std::memory_order_acquire);
  if (!slot) {
    LinkSlot* fresh = Slots().Take();
    fresh->object.store(this, std::memory_order_release);
    if (slot_.compare_exchange_strong(slot, fresh)) {
      slot = fresh;
    } else {
      fresh->object.store(nullptr, std::memory_order_release);
      Slots().Give(fresh);
    }
  }
  link = {slot, slot->generation.load(std::memory_order_acquire)};
}

void OfferLinkLayout() {
  static const Linkable object;
  static HostLinkLayout layout = {
      sizeof layout,
      uint32_t(reinterpret_cast<const char*>(&object.slot_) - reinterpret_cast<const char*>(&object)),
      uint32_t(offsetof(LinkSlot, object)), uint32_t(offsetof(LinkSlot, generation)), OffsetOfType()};
  static_assert(sizeof(std::atomic<Linkable*>) == sizeof(void*) &&
                sizeof(std::atomic<uint64_t>) == sizeof(uint64_t));
  boundary_tables::link.layout = &layout;
}

void Linkable::Die() {
  dead_.store(true, std::memory_order_release);
  LinkSlot* slot = slot_.load(std::memory_order_acquire);
  if (!slot) return;
  slot->generation.fetch_add(1);
  slot->object.store(nullptr, std::memory_order_release);
}

// All links of the chain are dead before the first of it goes: what that runs finds none of the others.
void Linkable::DieChained() {
  for (Linkable* one = this; one; one = one->Chained()) one->Die();
}

void Linkable::BuryChained() {
  for (Linkable *one = this, *next; one; one = next) {
    next = one->Chained();
    one->Unchain();
    if (LinkSlot* slot = one->slot_.load(std::memory_order_acquire)) {
      slot->doomed.store(one);
      slot->pins.fetch_or(kDoomed);
      FreeDoomed(slot);
    } else {
      delete one;
    }
  }
}

void DestroyNow(Linkable* object) {
  if (!object || !object->Leave()) return;
  object->DieChained();
  object->BuryChained();
}

void DestroyLater(Linkable* object) {
  if (!object || !object->Leave()) return;
  object->DieChained();
  std::lock_guard guard(Destroyed().lock);
  Destroyed().objects.push_back(object);
}

void ReclaimDestroyed() {
  std::vector<Linkable*> objects;
  HostQuiet quiet;
  {
    std::lock_guard guard(Destroyed().lock);
    objects.swap(Destroyed().objects);
    quiet = Destroyed().quiet;
  }
  if (objects.empty()) return;
  if (quiet) quiet();
  for (Linkable* object : objects) object->BuryChained();
}

Hold::Hold(Linkable& object) {
  object.Link(link_);
  object_ = static_cast<Linkable*>(link::PinLink(link_));
}

Hold::Hold(HostLink link) : link_(link), object_(static_cast<Linkable*>(link::PinLink(link))) {}

Hold::~Hold() {
  if (object_) link::UnpinLink(link_);
}

bool Hold::IsAlive() const { return object_ && link::GetLink(link_); }

SceneTurn::SceneTurn() {
  HostTakeTurn take;
  {
    std::lock_guard guard(Turns().lock);
    take = Turns().take;
    give_ = Turns().give;
  }
  if (take) turn_ = take();
}

SceneTurn::~SceneTurn() noexcept(false) {
  if (give_) give_(turn_);
}

}  // namespace host

namespace host::link {

void* GetLink(HostLink link) noexcept { return ObjectOf(link); }

void FreeLink(HostLink* link) noexcept {
  if (link) *link = {};
}

void* PinLink(HostLink link) noexcept {
  auto* slot = static_cast<LinkSlot*>(link.slot);
  if (!slot) return nullptr;
  // Pinned ahead of the look: either this sees the death, or the destroyer sees the pin.
  slot->pins.fetch_add(1);
  if (Linkable* object = ObjectOf(link)) return object;
  UnpinLink(link);
  return nullptr;
}

void UnpinLink(HostLink link) {
  auto* slot = static_cast<LinkSlot*>(link.slot);
  if (slot && slot->pins.fetch_sub(1) == (kDoomed | 1)) FreeDoomed(slot);
}

void SetQuiet(HostQuiet quiet) {
  std::lock_guard guard(Destroyed().lock);
  Destroyed().quiet = quiet;
}

void SetTurn(HostTakeTurn take, HostGiveTurn give) {
  std::lock_guard guard(Turns().lock);
  Turns().take = take;
  Turns().give = give;
}

}  // namespace host::link
