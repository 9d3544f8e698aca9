// The rule of the scene's threads, watched in debug builds: what changes a scene does not overlap with what
// others do to any scene.
#ifndef HOST_SCENE_ACCESS_H
#define HOST_SCENE_ACCESS_H

#ifndef NDEBUG
#include <atomic>
#include <cassert>
#endif

namespace host {

#ifdef NDEBUG

class ReadScene {
 public:
  ReadScene() {}
};
using ChangeScene = ReadScene;

#else

// How many threads read, and how many change. A thread counts once.
inline std::atomic<int> g_sceneReaders{0}, g_sceneWriters{0};
inline thread_local int t_sceneReads = 0, t_sceneChanges = 0;

class ReadScene {
 public:
  ReadScene() {
    if (t_sceneReads++ == 0) ++g_sceneReaders;
    assert(g_sceneWriters == (t_sceneChanges > 0) && "a scene changes while it is read");
  }
  ReadScene(const ReadScene&) = delete;
  ReadScene& operator=(const ReadScene&) = delete;
  ~ReadScene() {
    if (--t_sceneReads == 0) --g_sceneReaders;
  }
};

class ChangeScene {
 public:
  ChangeScene() {
    if (t_sceneChanges++ == 0) ++g_sceneWriters;
    assert(g_sceneWriters == 1 && g_sceneReaders == (t_sceneReads > 0) && "two use a scene while it changes");
  }
  ChangeScene(const ChangeScene&) = delete;
  ChangeScene& operator=(const ChangeScene&) = delete;
  ~ChangeScene() {
    if (--t_sceneChanges == 0) --g_sceneWriters;
  }
};

#endif

}  // namespace host

#endif
