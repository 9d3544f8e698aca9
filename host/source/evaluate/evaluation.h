// What an object remembers of its evaluation.
#ifndef HOST_EVALUATE_EVALUATION_H
#define HOST_EVALUATE_EVALUATION_H

#include <vector>

#include "scene/object.h"
#include "scene/tree.h"

namespace host {

// An object that a generator depends on, and what it was like.
struct Dependence {
  int64_t object;  // its number
  int32_t dirtyFlags;
  uint64_t state;
  bool operator==(const Dependence&) const = default;
};

// States are hashes of all that something is made from; 0 stands for none.
struct Evaluation {
  uint64_t cached = 0;    // of the cache
  uint64_t deformed = 0;  // of what deformers made
  uint64_t version = 0;   // grows with each change of both
  uint64_t content = 0;   // what ContentOf found, and at which counts of changes
  uint64_t contentAt = 0;
  uint64_t pass = 0;  // in which it was evaluated last
  bool isRunning = false;
  bool isCircular = false;             // an instance that would show itself
  uint32_t dirty[6] = {};              // GetDirty of each of DIRTYFLAGS, when it was evaluated last
  uint64_t deformersAt = 0;            // what `deformers` is of; 0: nothing
  std::vector<BaseObject*> deformers;  // among the children
  bool isTouched = false;              // the dependences count as changed
  std::vector<Dependence> dependences, nextDependences;
  // What GetHierarchyClone was asked for, and what that was like; the dead ones go when there are many.
  struct Cloned {
    HostLink object;
    int32_t flags, dirtyFlags;
    uint64_t state;
  };
  std::vector<Cloned> clones;
  size_t instanced = 0;  // how many objects the cache of an instance is of
};

// What stands first in one of the object's own lists; null for none.
inline BaseObject* FirstIn(const BaseObject* object, int32_t branch) {
  const GeListHead* head = object ? FindBranch(*object, branch) : nullptr;
  return head ? As<BaseObject>(head->down) : nullptr;
}

inline Evaluation& EvaluationOf(BaseObject& object) {
  if (!object.evaluation) object.evaluation = std::make_unique<Evaluation>();
  return *object.evaluation;
}

}  // namespace host

#endif
