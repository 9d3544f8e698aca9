// What only few atoms have.
#ifndef HOST_SCENE_EXTRAS_H
#define HOST_SCENE_EXTRAS_H

#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "scene/atom.h"

namespace host {

// The unique id by which an application knows the atom.
struct Mark {
  int32_t application;
  int64_t bytes;
  std::unique_ptr<char[]> memory;
};

// Who is told of an event that happens to the atom.
struct Notification {
  HostLink receiver;
  int32_t event;
  int32_t flags;
  BaseContainer data;
};

struct Extras {
  std::vector<GeListHead*> branches;
  void* pluginData = nullptr;
  HostLink layer{};
  uint64_t nbits = 0;
  uint64_t selected = 0;     // grows with each element that a document selects
  uint64_t changed[8] = {};  // stamps by the bits of HDIRTYFLAGS, of kinds that are not the atom's own
  std::vector<Mark> marks;
  std::vector<Notification> notifications;
  std::set<std::vector<int32_t>> keyframes;
};

// Puts what `map` answers in place of each link of the element: in its values, in a document's settings, and to
// its layer, whose place only a layer takes.
void MapLinksOf(BaseList2D& element, const std::function<HostLink(HostLink)>& map);

}  // namespace host

#endif
