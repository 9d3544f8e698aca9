// What weak links point at, and the slots behind them.
#ifndef HOST_SCENE_LINKS_H
#define HOST_SCENE_LINKS_H

#include <atomic>

#include "kelvar.framework/source/tables/t_link.h"

namespace host {

// One slot for each object that was linked. A slot is never freed: after its object it is used
// again with the next generation, so a link is checked by two reads and no lock.
struct LinkSlot;

// The base of every object that links may point at. It is the first base, so that a pointer to
// it is the pointer to the object.
class Linkable {
 public:
  Linkable() = default;
  Linkable(const Linkable&) = delete;
  Linkable& operator=(const Linkable&) = delete;
  virtual ~Linkable();

  // Points `link` at this object; throws std::bad_alloc. Any thread.
  void Link(HostLink& link);

  // Whether a link to it was ever made.
  bool IsLinked() const { return slot_.load(std::memory_order_acquire) != nullptr; }
  bool IsDead() const { return dead_.load(std::memory_order_acquire); }

 private:
  friend void OfferLinkLayout();
  friend void DestroyNow(Linkable*);
  friend void DestroyLater(Linkable*);
  friend void ReclaimDestroyed();

  // Takes the object out of its surroundings and makes a chain of all that ends with it, itself first. It may
  // run the code of others; false when that, or who destroys it already, has the end in hand.
  virtual bool Leave() { return true; }
  virtual Linkable* Chained() { return nullptr; }  // the next of the chain
  virtual void Unchain() {}

  void DieChained();
  void BuryChained();

  // From here all links answer null.
  void Die();

  std::atomic<LinkSlot*> slot_{nullptr};
  std::atomic<bool> dead_{false};  // also where nothing was linked before
};

// Fills in where the module finds links without calls.
void OfferLinkLayout();

// Keeps an object's memory while the code of others runs, which may destroy it.
class Hold {
 public:
  explicit Hold(Linkable& object);
  explicit Hold(HostLink link);
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  ~Hold();

  // Null when it was dead already.
  Linkable* Object() const { return object_; }
  bool IsAlive() const;

 private:
  HostLink link_{};
  Linkable* object_;
};

// The turn of this thread in the scene, where a call came without the interpreter's lock: no call of the module
// on another thread overlaps with it. May be nested. Waits for the others.
class SceneTurn {
 public:
  SceneTurn();
  SceneTurn(const SceneTurn&) = delete;
  SceneTurn& operator=(const SceneTurn&) = delete;
  ~SceneTurn() noexcept(false);

 private:
  HostGiveTurn give_;
  int32_t turn_ = 0;
};

// Destroys an object whose destroyer holds the interpreter's lock, or no Python runs: only a
// pinned one stays until its last pin goes.
void DestroyNow(Linkable* object);

// Destroys an object by the host's own will: its links are dead at once, and its memory goes with
// the next reclaim. Any thread, but what stands in a scene is changed by it. Only for what the host owns: a
// script's wrapper destroys the rest.
void DestroyLater(Linkable* object);

// Waits for the module and frees what DestroyLater collected. Main thread, no lock held.
void ReclaimDestroyed();

}  // namespace host

#endif
