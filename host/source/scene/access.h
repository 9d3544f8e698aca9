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

// The thread works on scenes that no other one knows: nobody has to wait for it.
inline thread_local int t_privateScenes = 0;
class UnwatchedScenes {
 public:
  UnwatchedScenes() { ++t_privateScenes; }
  UnwatchedScenes(const UnwatchedScenes&) = delete;
  UnwatchedScenes& operator=(const UnwatchedScenes&) = delete;
  ~UnwatchedScenes() { --t_privateScenes; }
};

class WatchedRead {
 public:
  WatchedRead() {
    if (!counts_) return;
    g_sceneReaders.Begin(t_sceneReads);
    CheckSceneUsers("a scene is read while it changes");
  }
  WatchedRead(const WatchedRead&) = delete;
  WatchedRead& operator=(const WatchedRead&) = delete;
  ~WatchedRead() {
    if (counts_) g_sceneReaders.End(t_sceneReads);
  }

 private:
  const bool counts_ = t_privateScenes == 0;
};

class WatchedChange {
 public:
  WatchedChange() {
    if (!counts_) return;
    g_sceneChangers.Begin(t_sceneChanges);
    CheckSceneUsers("a scene changes while it is used");
  }
  WatchedChange(const WatchedChange&) = delete;
  WatchedChange& operator=(const WatchedChange&) = delete;
  ~WatchedChange() {
    if (counts_) g_sceneChangers.End(t_sceneChanges);
  }

 private:
  const bool counts_ = t_privateScenes == 0;
};

struct Unwatched {
  Unwatched() {}
};

#ifdef NDEBUG
using ReadScene = Unwatched;
using ChangeScene = Unwatched;
using PrivateScene = Unwatched;
#else
using ReadScene = WatchedRead;
using ChangeScene = WatchedChange;
using PrivateScene = UnwatchedScenes;
#endif

}  // namespace host

#endif
