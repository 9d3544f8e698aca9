#include "app/event_queue.h"

#include <utility>

#include "tables/tables.h"

namespace host {

void EventQueue::Add(Event event) {
  std::lock_guard guard(lock_);
  pending_.events.push_back(event);
}

void EventQueue::AddRefresh(int32_t flags) {
  std::lock_guard guard(lock_);
  pending_.refresh = true;
  pending_.refreshFlags |= flags;
}

PendingEvents EventQueue::Take() {
  std::lock_guard guard(lock_);
  return std::exchange(pending_, {});
}

EventQueue& GetEventQueue() { return Lasting<EventQueue>(); }

}  // namespace host
