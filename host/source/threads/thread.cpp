#include "threads/thread.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "boundary/host.h"
#include "tables/tables.h"
#include "tables/values.h"
#include "threads/background.h"

namespace host {
namespace {

constexpr int32_t kMainThreadId = 1;

thread_local BaseThread* t_current = nullptr;  // of the threads that were started here
thread_local int32_t t_id = 0;

int32_t NewId() {
  static std::atomic<int32_t> latest{kMainThreadId};
  return ++latest;
}

template <ThreadRole kRole>
BaseThread& Living() {
  static BaseThread& thread = *new BaseThread(kRole);
  return thread;
}

// The threads whose TestDBreak this thread is in.
class Asked {
 public:
  explicit Asked(const BaseThread& thread) : thread_(thread), outer_(std::exchange(latest_, this)) {}
  Asked(const Asked&) = delete;
  Asked& operator=(const Asked&) = delete;
  ~Asked() { latest_ = outer_; }

  static bool Contains(const BaseThread& thread) {
    for (const Asked* one = latest_; one; one = one->outer_)
      if (&one->thread_ == &thread) return true;
    return false;
  }

 private:
  inline static thread_local const Asked* latest_ = nullptr;

  const BaseThread& thread_;
  const Asked* const outer_;
};

// Debuggers and the system's tools show it, as far as there is room.
void NameThread(const ThreadRecord& work) {
  if (!work.GetThreadName) return;
  HostString text = work.GetThreadName(work.self);
  char name[16] = {};
  const std::string_view view = View(&text);
  view.copy(name, sizeof name - 1);
  if (!view.empty()) pthread_setname_np(pthread_self(), name);
  Drop(text);
}

}  // namespace

BaseThread* CurrentThread() {
  if (t_current) return t_current;
  return general::GeIsMainThread() ? &Living<ThreadRole::kMain>() : nullptr;
}

}  // namespace host

using host::ThreadRole;

// What the running thread holds of its object. It goes with the thread's stack, also where the interpreter's
// end unwinds that.
class BaseThread::Stay {
 public:
  explicit Stay(BaseThread& thread) : thread_(thread) {
    thread.Link(link_);
    if (!host::link::PinLink(link_))
      link_ = {};
    else if (!thread.Begin())
      Unpin();
  }
  Stay(Stay&& other) noexcept
      : thread_(other.thread_), link_(std::exchange(other.link_, {})), hasBegun_(other.hasBegun_) {}
  Stay& operator=(Stay&&) = delete;
  ~Stay() {
    if (!HasBegun()) return;
    host::t_current = nullptr;
    if (hasBegun_ && thread_.EndRun()) host::DestroyLater(&thread_);
    Unpin();
  }

  bool HasBegun() const { return link_.slot != nullptr; }

  void operator()() {
    thread_.Run();
    hasBegun_ = false;
    if (!thread_.EndRun()) return;
    // Calls of the module may have looked it up under the interpreter's lock.
    const host::SceneTurn turn;
    host::DestroyNow(&thread_);
  }

 private:
  void Unpin() { host::link::UnpinLink(std::exchange(link_, {})); }

  BaseThread& thread_;
  HostLink link_{};
  bool hasBegun_ = true;  // and not left
};

BaseThread::BaseThread(const ThreadRecord& work, int32_t backgroundClass)
    : role_(ThreadRole::kWork), backgroundClass_(backgroundClass) {
  std::memcpy(&work_, &work, std::min<size_t>(work.size, sizeof work_));
}

BaseThread::~BaseThread() {
  if (work_.Free) work_.Free(work_.self);
}

bool BaseThread::Launch() {
  if (role_ != ThreadRole::kWork) return false;
  try {
    Stay stay(*this);
    if (!stay.HasBegun()) return false;
    std::thread(std::move(stay)).detach();
    return true;
  } catch (const std::system_error&) {
    return false;  // the system has no thread to give
  }
}

bool BaseThread::Begin() {
  const std::lock_guard guard(lock_);
  if (isRunning_ || isGivenUp_) return false;
  if (backgroundClass_) host::AddBackground(*this, backgroundClass_);
  isRunning_ = true;
  stop_ = false;
  id_ = host::NewId();
  return true;
}

void BaseThread::Run() {
  host::t_current = this;
  host::t_id = id_;
  host::NameThread(work_);
  if (work_.Main) work_.Main(work_.self);
}

bool BaseThread::EndRun() {
  const std::lock_guard guard(lock_);
  if (backgroundClass_) host::RemoveBackground(*this);
  isRunning_ = false;
  id_ = 0;
  hasEnded_.notify_all();
  return isGivenUp_;
}

bool BaseThread::GiveUp() {
  const std::lock_guard guard(lock_);
  if (role_ != ThreadRole::kWork || isGivenUp_) return false;
  isGivenUp_ = true;
  return !isRunning_;
}

void BaseThread::Stop() {
  if (role_ == ThreadRole::kWork || role_ == ThreadRole::kEscapeTest) stop_ = true;
}

bool BaseThread::Await(int32_t milliseconds) {
  if (role_ != ThreadRole::kWork || host::CurrentThread() == this) return true;
  std::unique_lock guard(lock_);
  const auto hasEnded = [&] { return !isRunning_; };
  if (milliseconds >= 0) return hasEnded_.wait_for(guard, std::chrono::milliseconds(milliseconds), hasEnded);
  hasEnded_.wait(guard, hasEnded);
  return true;
}

bool BaseThread::IsAtWork() const {
  const std::lock_guard guard(lock_);
  return isRunning_ || role_ == ThreadRole::kMain;
}

bool BaseThread::IsToStop() {
  if (role_ == ThreadRole::kEscapeTest) return stop_.exchange(false);
  if (stop_) return true;
  if (!work_.TestDBreak || host::Asked::Contains(*this)) return false;
  const host::Asked asked(*this);
  return work_.TestDBreak(work_.self) != 0;
}

int32_t BaseThread::Number() const { return role_ == ThreadRole::kMain ? host::kMainThreadId : id_.load(); }

namespace host::thread {

BaseThread* Alloc(const ThreadRecord* record) { return record ? new BaseThread(*record) : nullptr; }

void Free(BaseThread* self) {
  if (self && self->GiveUp()) DestroyNow(self);
}

HostBool SetLink(BaseThread* self, HostLink* link) {
  if (!self || !link) return 0;
  self->Link(*link);
  return 1;
}

HostBool Start(BaseThread* self, int32_t /*mode*/, int32_t /*priority*/) { return self && self->Launch(); }

void End(BaseThread* self, HostBool wait) {
  if (!self) return;
  self->Stop();
  if (wait) self->Await(-1);
}

HostBool Wait(BaseThread* self, HostBool /*checkEvents*/, int32_t milliseconds) {
  return !self || self->Await(milliseconds);
}

HostBool IsRunning(const BaseThread* self) { return self && self->IsAtWork(); }

HostBool TestBreak(BaseThread* self) { return self && self->IsToStop(); }

int32_t IdentifyThread(const BaseThread* self) { return self ? self->Number() : 0; }

BaseThread* GeGetCurrentThread() { return CurrentThread(); }

BaseThread* GeGetDummyThread() { return &Living<ThreadRole::kDummy>(); }

BaseThread* GeGetEscTestThread() { return &Living<ThreadRole::kEscapeTest>(); }

int32_t GeGetCurrentThreadId() {
  if (!t_id) t_id = general::GeIsMainThread() ? kMainThreadId : NewId();
  return t_id;
}

int32_t GeGetCPUCount() { return int32_t(std::max(1u, std::thread::hardware_concurrency())); }

HostBool GeIsMainThreadAndNoDrawThread() {
  return general::GeIsMainThread() && !IsBackgroundRunning(BACKGROUND_THREAD_VIEW, false);
}

}  // namespace host::thread
