#include "threads/background.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "boundary/host.h"
#include "tables/tables.h"

namespace host {
namespace {

struct Background {
  struct Entry {
    const BaseThread* thread;
    int32_t threadClass;
    HostLink link;
  };
  std::mutex lock;
  std::vector<Entry> running;
};

Background& All() { return Lasting<Background>(); }

}  // namespace

void AddBackground(BaseThread& thread, int32_t threadClass) {
  const std::lock_guard guard(All().lock);
  HostLink link{};
  thread.Link(link);
  All().running.push_back({&thread, threadClass, link});
}

void RemoveBackground(const BaseThread& thread) {
  const std::lock_guard guard(All().lock);
  std::erase_if(All().running, [&](const auto& entry) { return entry.thread == &thread; });
}

bool IsBackgroundRunning(int32_t threadClass, bool any) {
  const std::lock_guard guard(All().lock);
  return std::any_of(All().running.begin(), All().running.end(),
                     [&](const auto& entry) { return any || entry.threadClass == threadClass; });
}

void StopBackground(int32_t threadClass) {
  std::vector<Background::Entry> running;
  {
    const std::lock_guard guard(All().lock);
    running = All().running;
  }
  std::erase_if(running, [&](const auto& entry) { return entry.threadClass != threadClass; });
  for (const bool wait : {false, true})
    for (const auto& entry : running) {
      const Hold hold(entry.link);
      auto* thread = static_cast<BaseThread*>(hold.Object());
      if (!thread) continue;
      wait ? void(thread->Await(-1)) : thread->Stop();
    }
}

}  // namespace host

namespace host::thread {

HostBool GeCheckBackgroundThreadsRunning(int32_t typeclass, HostBool all) {
  return IsBackgroundRunning(typeclass, all);
}

void GeStopBackgroundThreads(int32_t typeclass, int32_t /*flags*/) { StopBackground(typeclass); }

}  // namespace host::thread
