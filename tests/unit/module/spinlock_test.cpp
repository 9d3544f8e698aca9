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

void Record(CpuYieldRecord* record, void* address) {
  g_calls.push_back({record->count, record->step, address});
}
void Yield(CpuYieldRecord*, void*) { std::this_thread::yield(); }

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

TEST_F(BackOffTest, TheFirstTurnCanYieldAtOnce) {
  g_tavor.yieldFirst = 1;
  qlx::BackOff wait(&place_);
  wait.Turn();
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].count, 0);
  EXPECT_EQ(g_calls[0].step, 16);
  wait.Turn();
  EXPECT_EQ(g_calls.size(), 1u) << "only the first turn yields at once";
}

TEST_F(BackOffTest, StepDoublesAndStartsAnew) {
  qlx::BackOff wait(&place_);
  for (int turn = 0; turn < 5 * 6 + 8; ++turn) wait.Turn();
  ASSERT_GT(g_calls.size(), 8u);
  // A call tells the step of the turn to come.
  std::vector<int32_t> steps, counted;
  for (auto call = g_calls.end() - 8; call != g_calls.end(); ++call) {
    steps.push_back(call[-1].step);
    counted.push_back(call->count - call[-1].count);
  }
  EXPECT_EQ(steps, (std::vector<int32_t>{16, 32, 64, 128, 256, 512, 16, 32}));
  EXPECT_EQ(counted, steps);
}

TEST_F(BackOffTest, ReleaseTellsTheDelegate) {
  qlx::BackOff::Wake(&place_);
  ASSERT_EQ(g_calls.size(), 1u);
  EXPECT_EQ(g_calls[0].count, 2147483647);
  EXPECT_EQ(g_calls[0].address, &place_);
}

TEST_F(BackOffTest, AVeryLongWaitIsNoRelease) {
  // The delegate moves the count close to its end, which takes minutes by waiting.
  g_tavor.yieldFirst = 1;
  g_CpuYieldDelegate = [](CpuYieldRecord* record, void* address) {
    Record(record, address);
    if (record->count == 0) record->count = 2147483647 - 20;
  };
  qlx::BackOff wait(&place_);
  for (int turn = 0; turn < 8; ++turn) wait.Turn();
  ASSERT_EQ(g_calls.size(), 9u);
  EXPECT_EQ(g_calls[1].count, 2147483647 - 4);
  for (size_t i = 2; i < g_calls.size(); ++i) EXPECT_EQ(g_calls[i].count, 2147483646) << i;
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
