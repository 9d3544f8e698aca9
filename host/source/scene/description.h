// What the parameters of one element are.
#ifndef HOST_SCENE_DESCRIPTION_H
#define HOST_SCENE_DESCRIPTION_H

#include <memory>

#include "scene/atom.h"

// Nothing is copied: a type lives as long as the process, and the entries of user data are shared until
// they change.
struct Description {
  explicit Description(const BaseList2D& node);

  int32_t Count() const;
  // Null for a position that is none.
  const host::Parameter* At(int32_t index) const;
  int32_t Find(const HostDescID& id) const;

 private:
  int32_t FirstAdded() const { return int32_t(type_.groups.size() + type_.parameters.size()) + 1; }

  const host::NodeType& type_;
  std::shared_ptr<const DynamicDescription::Entries> added_;  // null for none
};

#endif
