// The host's own turn with the scenes, among the threads of scripts.
#ifndef HOST_SCENE_TURN_H
#define HOST_SCENE_TURN_H

#include <cstdint>

struct CPythonLibrary;

namespace host {

// Scripts look at scenes and change them while they hold the interpreter's lock: this holds it too, so that a
// long work of the host, which runs without it, overlaps with none of them. Where no interpreter runs it does
// nothing.
class SceneTurn {
 public:
  SceneTurn();
  SceneTurn(const SceneTurn&) = delete;
  SceneTurn& operator=(const SceneTurn&) = delete;
  ~SceneTurn();

 private:
  CPythonLibrary* library_ = nullptr;
  int32_t state_ = -1;
};

}  // namespace host

#endif
