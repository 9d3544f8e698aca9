// Waiting without a lock of the system: the back-off of the module's spin locks.
#ifndef INTERPRETER_LIB_PYTHON_SPINLOCK_H
#define INTERPRETER_LIB_PYTHON_SPINLOCK_H

#include <atomic>
#include <cstdint>

#include "kelvar.framework/source/tables/t_host.h"

extern "C" CpuYieldDelegate g_CpuYieldDelegate;

namespace qlx {

// One wait of one thread for what stands at `address`.
class BackOff {
 public:
  explicit BackOff(void* address);

  // One turn of waiting; the host's delegate is called once the wait gets long.
  void Turn();

  // Tells waiters that what stands at `address` has changed.
  static void Wake(void* address);

 private:
  CpuYieldRecord record_;
  void* address_;
};

// A lock for a few instructions. `word_`: 0 free, 1 taken, 2 taken with a waiter.
class SpinLock {
 public:
  void lock();
  void unlock();

 private:
  std::atomic<uint32_t> word_{0};
};

}  // namespace qlx

#endif
