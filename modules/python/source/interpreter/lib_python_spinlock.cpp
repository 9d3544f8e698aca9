// The back-off of the module's spin locks.

#include "interpreter/lib_python_spinlock.h"

#include <limits>

#include "core.framework/source/tavor/tables/t_tavor.h"

extern "C" TavorRecord g_tavor;

namespace qlx {
namespace {

constexpr int32_t kPatience = 4096;
constexpr int32_t kFirstStep = 16;
constexpr int32_t kLastStep = 512;
constexpr int32_t kReleased = std::numeric_limits<int32_t>::max();
constexpr int32_t kLongest = kReleased - 1;

void Pause() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#else
  __asm__ volatile("yield");
#endif
}

uint32_t LowHalf(void* address) { return uint32_t(reinterpret_cast<uintptr_t>(address)); }

}  // namespace

BackOff::BackOff(void* address) : record_{0, kFirstStep, LowHalf(address)}, address_(address) {}

void BackOff::Turn() {
  if (record_.count == 0 && g_tavor.yieldFirst) g_CpuYieldDelegate(&record_, address_);
  for (int32_t i = 0; i < record_.step; ++i) Pause();
  record_.count = record_.count > kLongest - record_.step ? kLongest : record_.count + record_.step;
  record_.step = record_.step * 2 > kLastStep ? kFirstStep : record_.step * 2;
  if (record_.count > kPatience) g_CpuYieldDelegate(&record_, address_);
}

void BackOff::Wake(void* address) {
  CpuYieldRecord record{kReleased, 0, LowHalf(address)};
  g_CpuYieldDelegate(&record, address);
}

void SpinLock::lock() {
  uint32_t expected = 0;
  if (word_.compare_exchange_strong(expected, 1, std::memory_order_acquire)) return;
  BackOff wait(this);
  while (word_.exchange(2, std::memory_order_acquire) != 0) wait.Turn();
}

void SpinLock::unlock() {
  if (word_.exchange(0, std::memory_order_release) == 2) BackOff::Wake(this);
}

}  // namespace qlx
