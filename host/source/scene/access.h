// The rule of the scene's threads, watched in debug builds: a call that changes a scene does not overlap with
// what other threads do to any scene. The code of others, which calls may run, is no part of them.
#ifndef HOST_SCENE_ACCESS_H
#define HOST_SCENE_ACCESS_H

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace host {

// How many threads read scenes or change one; a thread counts once for each.
struct SceneUsers {
  std::atomic<int> count{0};
  void Begin(int& own) {
    if (own++ == 0) ++count;
  }
  void End(int& own) {
    if (--own == 0) --count;
  }
};

inline SceneUsers g_sceneReaders, g_sceneChangers;
inline thread_local int t_sceneReads = 0, t_sceneChanges = 0;

inline void CheckSceneUsers(const char* fault) {
  const bool othersChange = g_sceneChangers.count > (t_sceneChanges > 0);
  const bool othersRead = g_sceneReaders.count > (t_sceneReads > 0);
  if (!othersChange && !(othersRead && t_sceneChanges > 0)) return;
  std::fprintf(stderr, "%s\n", fault);
  std::abort();
}

class WatchedRead {
 public:
  WatchedRead() {
    g_sceneReaders.Begin(t_sceneReads);
    CheckSceneUsers("a scene is read while it changes");
  }
  WatchedRead(const WatchedRead&) = delete;
  WatchedRead& operator=(const WatchedRead&) = delete;
  ~WatchedRead() { g_sceneReaders.End(t_sceneReads); }
};

class WatchedChange {
 public:
  WatchedChange() {
    g_sceneChangers.Begin(t_sceneChanges);
    CheckSceneUsers("a scene changes while it is used");
  }
  WatchedChange(const WatchedChange&) = delete;
  WatchedChange& operator=(const WatchedChange&) = delete;
  ~WatchedChange() { g_sceneChangers.End(t_sceneChanges); }
};

struct Unwatched {
  Unwatched() {}
};

#ifdef NDEBUG
using ReadScene = Unwatched;
using ChangeScene = Unwatched;
#else
using ReadScene = WatchedRead;
using ChangeScene = WatchedChange;
#endif

}  // namespace host

#endif
