// Events that wait for the main thread.
#ifndef HOST_APP_EVENT_QUEUE_H
#define HOST_APP_EVENT_QUEUE_H

#include <cstdint>
#include <mutex>
#include <vector>

namespace host {

struct Event {
  int32_t id;
  uint64_t p1;
  uint64_t p2;
};

// Everything that came since the last time.
struct PendingEvents {
  std::vector<Event> events;
  bool refresh = false;
  int32_t refreshFlags = 0;

  explicit operator bool() const { return refresh || !events.empty(); }
};

class EventQueue {
 public:
  // Any thread.
  void Add(Event event);
  // Any thread. Refreshes that wait become one, with the flags of all.
  void AddRefresh(int32_t flags);
  // Main thread.
  PendingEvents Take();

 private:
  std::mutex lock_;
  PendingEvents pending_;
};

EventQueue& GetEventQueue();

}  // namespace host

#endif
