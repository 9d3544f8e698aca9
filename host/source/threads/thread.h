// The threads that the host knows.
#ifndef HOST_THREADS_THREAD_H
#define HOST_THREADS_THREAD_H

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "kelvar.framework/source/tables/t_thread.h"
#include "scene/links.h"

namespace host {

// What a thread is to others.
enum class ThreadRole { kWork, kMain, kDummy, kEscapeTest };

// The thread of the caller; null on one that the host neither started nor runs on.
BaseThread* CurrentThread();

}  // namespace host

// Whoever calls one of these without the interpreter's lock keeps the object by a pin.
struct BaseThread final : host::Linkable {
  // A thread with work; `backgroundClass` tells one of the host's own.
  explicit BaseThread(const ThreadRecord& work, int32_t backgroundClass = 0);
  // One of those that always live.
  explicit BaseThread(host::ThreadRole role) : role_(role) {}
  ~BaseThread() override;

  bool Launch();
  void Stop();
  bool Await(int32_t milliseconds);
  bool IsAtWork() const;
  bool IsToStop();
  int32_t Number() const;

  // Whether the caller is to destroy it now; otherwise its thread does at its end, or somebody did.
  bool GiveUp();

 private:
  class Stay;

  bool Begin();
  void Run();
  bool EndRun();  // whether it was given up meanwhile

  const host::ThreadRole role_;
  const int32_t backgroundClass_ = 0;
  ThreadRecord work_{};
  std::atomic<bool> stop_{false};
  std::atomic<int32_t> id_{0};  // while it runs
  mutable std::mutex lock_;     // of what follows
  std::condition_variable hasEnded_;
  bool isRunning_ = false, isGivenUp_ = false;
};

#endif
