// Instances, and which of them show which others.
#ifndef HOST_EVALUATE_INSTANCES_H
#define HOST_EVALUATE_INSTANCES_H

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "scene/object.h"

namespace host {

bool IsInstance(const BaseObject& object);

// What an instance is linked with; null for nothing, for what stands in the instance itself, and for what made
// the instance.
BaseObject* TargetOf(const BaseObject& instance);

// Puts instances behind those that they show, and finds those that would show themselves.
class InstanceOrder {
 public:
  // Those that the cache of the instance follows from, itself last, each behind all that it shows. What was
  // told before isn't told again. Marks those that would show themselves, and says so where that is new.
  std::vector<HostLink> Before(BaseObject& instance);

 private:
  std::unordered_set<int64_t> known_;
};

}  // namespace host

#endif
