// What becomes of links while elements are copied.
#ifndef HOST_SCENE_ALIASTRANS_H
#define HOST_SCENE_ALIASTRANS_H

#include <unordered_map>
#include <unordered_set>

#include "scene/atom.h"

// An original is known by the link that others hold of it, so that one that dies meanwhile is not taken for
// what follows at its place.
struct AliasTrans {
  void Record(const QLXAtom& original, BaseList2D& copy);

  struct Hash {
    size_t operator()(const HostLink& link) const {
      return std::hash<const void*>()(link.slot) ^ size_t(link.generation);
    }
  };
  struct Same {
    bool operator()(const HostLink& a, const HostLink& b) const {
      return a.slot == b.slot && a.generation == b.generation;
    }
  };

  std::unordered_map<HostLink, HostLink, Hash, Same> copies;  // by the links of their originals
  std::unordered_set<HostLink, Hash, Same> holders;           // the copies whose links are to be translated
};

#endif
