#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "core.framework/source/tavor/tables/t_tavor.h"
#include "interpreter/lib_python_spinlock.h"

extern "C" TavorRecord g_tavor;

namespace {

struct Call {
  int32_t count, step;
  void* address;
};
std::vector<Call> g_calls;
std::atomic<int> g_yields{0};

void Record(CpuYieldRecord* record, void* address) {
  g_calls.push_back({record->count, record->step, address});
}
void Yield(CpuYieldRecord*, void*) {
  ++g_yields;
  std::this_thread::yield();
}

class BackOffTest : public testing::Test {
 protected:
  void SetUp() override {
    g_calls.clear();
    g_CpuYieldDelegate = Record;
    g_tavor.yieldFirst = 0;
  }
  void TearDown() override { g_tavor.yieldFirst = 0; }
  int place_ = 0;
};

TEST_F(BackOffTest, CallsTheDelegateOnceTheCountPassesItsLimit) {
  qlx::BackOff wait(&place_);
  // Steps 16 to 512 add up to 1008; the fifth round starts above 4032 and passes 4096 within it.
  for (int turn = 0; turn < 4 * 6; ++turn) wait.Turn();
  EXPECT_TRUE(g_calls.empty());
  for (int turn = 0; turn < 3; ++turn) wait.Turn();
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].count, 4 * 1008 + 16 + 32 + 64);
  EXPECT_EQ(g_calls[0].address, &place_);
  wait.Turn();
  EXPECT_EQ(g_calls.size(), 2u);
}

TEST_F(BackOffTest, StepDoublesAndStartsAnew) {
  g_tavor.yieldFirst = 1;
  qlx::BackOff wait(&place_);
  wait.Turn();
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].count, 0);
  EXPECT_EQ(g_calls[0].step, 16);
  wait.Turn();
  EXPECT_EQ(g_calls.size(), 1u) << "only the first turn yields at once";
}

TEST_F(BackOffTest, ReleaseTellsTheDelegate) {
  qlx::BackOff::Wake(&place_);
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].count, 2147483647);
  EXPECT_EQ(g_calls[0].address, &place_);
}

TEST_F(BackOffTest, AVeryLongWaitDoesNotOverflow) {
  g_CpuYieldDelegate = Yield;
  qlx::BackOff wait(&place_);
  // The count stands still at its end instead of going round.
  for (int turn = 0; turn < 200000; ++turn) wait.Turn();
  EXPECT_GT(g_yields.load(), 199000);
}

TEST(SpinLockTest, ExcludesEightThreads) {
  g_CpuYieldDelegate = Yield;
  qlx::SpinLock lock;
  int64_t counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (int turn = 0; turn < 20000; ++turn) {
        const std::lock_guard guard(lock);
        ++counter;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 8 * 20000);
}

}  // namespace
