// Threads: their life and end, what asks them to stop, and those in the background.

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "boundary/host.h"
#include "support.h"
#include "threads/background.h"

namespace {

namespace thread = host::thread;
using host::link::GetLink;

// What the callbacks of a thread do, and how often it was freed.
struct Work {
  std::function<void()> main;
  std::function<bool()> testDBreak = [] { return false; };
  std::atomic<int> freed{0};

  ThreadRecord Record() {
    return {sizeof(ThreadRecord),
            0,
            this,
            [](void* self) { static_cast<Work*>(self)->main(); },
            [](void* self) { return HostBool(static_cast<Work*>(self)->testDBreak()); },
            nullptr,
            [](void* self) { ++static_cast<Work*>(self)->freed; }};
  }
  BaseThread* Make() {
    const ThreadRecord record = Record();
    return thread::Alloc(&record);
  }
};

HostLink LinkTo(BaseThread* thread) {
  HostLink link{};
  EXPECT_TRUE(thread::SetLink(thread, &link));
  return link;
}

void Until(const std::function<bool()>& test) {
  while (!test()) std::this_thread::yield();
}

TEST(Threads, AreFreedWhenTheirWorkHasEnded) {
  for (const bool isStarted : {false, true}) {
    std::atomic<bool> isFreed{false};
    Work work;
    BaseThread* one = work.Make();
    const HostLink link = LinkTo(one);
    work.main = [&] {
      EXPECT_EQ(thread::GeGetCurrentThread(), one);
      EXPECT_EQ(thread::IdentifyThread(one), thread::GeGetCurrentThreadId());
      Until([&] { return isFreed.load(); });
      EXPECT_EQ(GetLink(link), one);
      EXPECT_FALSE(thread::Start(one, 1, 0));
    };
    EXPECT_EQ(isStarted && thread::Start(one, 1, 0), isStarted);
    thread::Free(one);
    isFreed = true;
    Until([&] { return work.freed > 0; });
    EXPECT_EQ(GetLink(link), nullptr);
    EXPECT_EQ(work.freed, 1);
  }
}

TEST(Threads, AreAskedToStopAndWaitedFor) {
  Work work, other;
  BaseThread *one = work.Make(), *asking = other.Make();
  work.main = [&] {
    EXPECT_TRUE(thread::Wait(one, 0, -1));  // nobody waits for himself
    Until([&] { return thread::TestBreak(one) != 0; });
  };
  other.testDBreak = [&] { return thread::TestBreak(asking) || thread::TestBreak(one); };
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(thread::Start(one, 1, 0));
    EXPECT_FALSE(thread::Start(one, 1, 0));
    EXPECT_FALSE(thread::Wait(one, 0, 1));
    EXPECT_FALSE(thread::TestBreak(asking));
    thread::End(one, 1);
    EXPECT_FALSE(thread::IsRunning(one));
    EXPECT_TRUE(thread::TestBreak(asking));
  }
  thread::Free(one);
  other.testDBreak = [&] {
    thread::Free(asking);  // pinned by who asks
    return other.freed == 0;
  };
  const host::Hold hold(*asking);
  EXPECT_TRUE(thread::TestBreak(asking));
  EXPECT_FALSE(hold.IsAlive());
}

TEST(Threads, ThatTheHostHasInTheBackground) {
  const auto check = [](int32_t kind) { return thread::GeCheckBackgroundThreadsRunning(kind, 0) != 0; };
  std::array<Work, 3> works;
  std::vector<BaseThread*> threads;
  for (const int32_t kind : {BACKGROUND_THREAD_VIEW, BACKGROUND_THREAD_RENDERING, BACKGROUND_THREAD_OTHER}) {
    Work& work = works[threads.size()];
    auto* one = new BaseThread(work.Record(), kind);
    work.main = [one] {
      Until([&] { return thread::TestBreak(one) != 0; });
      thread::GeStopBackgroundThreads(BACKGROUND_THREAD_VIEW, 0);
    };
    threads.push_back(one);
    EXPECT_FALSE(check(kind));
    EXPECT_TRUE(thread::Start(one, 1, 0));
    EXPECT_TRUE(check(kind));
  }
  EXPECT_FALSE(thread::GeIsMainThreadAndNoDrawThread());
  thread::GeStopBackgroundThreads(BACKGROUND_THREAD_VIEW, 0);
  EXPECT_TRUE(thread::GeIsMainThreadAndNoDrawThread());
  EXPECT_TRUE(!check(BACKGROUND_THREAD_VIEW) && check(BACKGROUND_THREAD_RENDERING));
  EXPECT_TRUE(thread::GeCheckBackgroundThreadsRunning(0, 1));
  host::general::StopAllThreads(1, 1, 0);
  EXPECT_TRUE(!check(BACKGROUND_THREAD_RENDERING) && check(BACKGROUND_THREAD_OTHER));
  host::general::StopAllThreads(1, 1, 1);
  EXPECT_FALSE(thread::GeCheckBackgroundThreadsRunning(0, 1));
  for (BaseThread* one : threads) thread::Free(one);
}

}  // namespace
