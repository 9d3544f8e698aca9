/* Group 44: threads.
 * group     HOST_GROUP_THREAD
 * class     BaseThread */
#ifndef KELVAR_T_THREAD_H
#define KELVAR_T_THREAD_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A thread that the host knows: one of Alloc's, one of the host's own, or one of the three that always live:
 * the main thread, the dummy and the escape test. It can be linked. */
typedef struct BaseThread BaseThread;

/* What the classes of the host's background threads do; a thread of the module is none of them. */
enum BackgroundThreadClass {
  BACKGROUND_THREAD_VIEW = 1,
  BACKGROUND_THREAD_RENDERING = 2,
  BACKGROUND_THREAD_OTHER = 3
};

/* What a thread of the module's own does. The host copies the record and gives `self` back in each call;
 * callbacks may be null. They run without the interpreter's lock, or with it where the caller has it. */
typedef struct ThreadRecord {
  uint32_t size;
  uint32_t reserved;
  void* self;
  void (*Main)(void* self);           /* the work, on the new thread; null: there is nothing to do */
  HostBool (*TestDBreak)(void* self); /* whether to give up, beside End; on the thread that asks. Null: 0 */
  HostString (*GetThreadName)(void* self); /* the host's from there; on the new thread. Null: it has no name */
  void (*Free)(void* self); /* once, when the thread has gone and no call is inside; any thread */
} ThreadRecord;

typedef struct HostThreadGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new thread, which doesn't run.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseThread* (*Alloc)(const ThreadRecord* record);

  /* Gives a thread of Alloc back: it is destroyed at once or, where it runs, as soon as its work has ended by
   * itself. Nothing happens to others. Only with the interpreter's lock held, where Python runs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseThread* self);

  /* Points a link at the thread; what the link held before is not looked at. 1, or 0 when memory lacks.
   * owner   the caller, of the link
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLink)(BaseThread* self, HostLink* link);

  /* Starts the work, also again after its end. 0 while it runs, behind Free, for a thread that Alloc didn't
   * make, and where the system gives no thread. `mode` and `priority` are hints, which a host may pass over.
   * A thread that runs when the process ends is ended with it. Called without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Start)(BaseThread* self, int32_t mode, int32_t priority);

  /* Asks the work to stop, for TestBreak to tell until the next Start; with `wait` as Wait behind it. The
   * escape test is asked to stop once; the main thread and the dummy are not. Called without the
   * interpreter's lock.
   * owner   -
   * thread  any
   * waits   for the work, with `wait`
   * since   23100
   * fails   nothing */
  void (*End)(BaseThread* self, HostBool wait);

  /* Returns when the thread doesn't run, or after so many milliseconds unless they are negative; with
   * `checkEvents` the main thread may take events from its windows meanwhile. 1, or 0 where the thread still
   * runs. No thread waits for itself, for the main thread, the dummy or the escape test: 1 at once. Called
   * without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   for the work
   * since   23100
   * fails   1 */
  HostBool (*Wait)(BaseThread* self, HostBool checkEvents, int32_t milliseconds);

  /* Whether the work has begun and not ended. The main thread runs, the dummy and the escape test don't.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsRunning)(const BaseThread* self);

  /* Whether the work is to stop: End was called, or the record's TestDBreak says so, which isn't asked again
   * from within. Of the escape test, whether the user wants what runs to stop, told once. 0 of the main
   * thread and the dummy. Called without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   as TestDBreak does
   * since   23100
   * fails   0 */
  HostBool (*TestBreak)(BaseThread* self);

  /* The number that GeGetCurrentThreadId answers in the work; 0 while it doesn't run.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*IdentifyThread)(const BaseThread* self);

  /* The thread of the call; null on one that is none of the host's.
   * owner   the host, or who allocated it
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseThread* (*GeGetCurrentThread)(void);

  /* A thread that never runs and is never to stop, for calls that want one.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseThread* (*GeGetDummyThread)(void);

  /* A thread by which long calls learn that the user wants them to stop; without windows, by End.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseThread* (*GeGetEscTestThread)(void);

  /* A number above 0 for the calling thread, which no other one has or had.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GeGetCurrentThreadId)(void);

  /* How many threads the processor runs at once, at least 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   1 */
  int32_t (*GeGetCPUCount)(void);

  /* Whether the calling thread is the main thread and none draws a view in the background.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   1 */
  HostBool (*GeIsMainThreadAndNoDrawThread)(void);

  /* Takes the one lock of all threads, which the same thread may take again, at once or within so many
   * milliseconds; without a limit where they are negative. Whether it was taken. What a thread holds when it
   * ends is given back. Called without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   for other threads
   * since   23100
   * fails   1 */
  HostBool (*GeThreadLock)(int32_t milliseconds);

  /* Gives one GeThreadLock back. Nothing happens on a thread that doesn't hold the lock.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GeThreadUnlock)(void);

  /* Whether a background thread of that class runs, or with `all` of any class.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GeCheckBackgroundThreadsRunning)(int32_t typeclass, HostBool all);

  /* Ends the background threads of that class, but not the calling one. No `flags` have a meaning yet. Called
   * without the interpreter's lock.
   * owner   -
   * thread  any
   * waits   for their work
   * since   23100
   * fails   nothing */
  void (*GeStopBackgroundThreads)(int32_t typeclass, int32_t flags);
} HostThreadGroup;

#ifdef __cplusplus
}
#endif
#endif
