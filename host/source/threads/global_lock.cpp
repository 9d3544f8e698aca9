// The one lock of all threads.

#include <chrono>
#include <mutex>

#include "boundary/host.h"
#include "tables/tables.h"

namespace host {
namespace {

std::recursive_timed_mutex& TheLock() { return Lasting<std::recursive_timed_mutex>(); }

// How often this thread holds the lock; what it forgot goes with it.
struct Held {
  int times = 0;
  ~Held() {
    while (times-- > 0) TheLock().unlock();
  }
};
thread_local Held t_held;

}  // namespace
}  // namespace host

namespace host::thread {

HostBool GeThreadLock(int32_t milliseconds) {
  if (milliseconds < 0)
    TheLock().lock();
  else if (!TheLock().try_lock_for(std::chrono::milliseconds(milliseconds)))
    return 0;
  ++t_held.times;
  return 1;
}

void GeThreadUnlock() {
  if (t_held.times == 0) return;
  --t_held.times;
  TheLock().unlock();
}

}  // namespace host::thread
