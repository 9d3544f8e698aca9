// The parameters that a user added to one element.
#ifndef HOST_SCENE_DYNAMICDESCRIPTION_H
#define HOST_SCENE_DYNAMICDESCRIPTION_H

#include <memory>
#include <vector>

#include "kelvar.framework/source/tables/t_dynamicdescription.h"
#include "scene/parameters.h"

struct DynamicDescription {
  using Entries = std::vector<host::Parameter>;

  // Null for a number that no entry has.
  const host::Parameter* Find(int32_t number) const;

  // For a copy of the node, which has a copy of the values already.
  std::unique_ptr<DynamicDescription> Clone() const;

  BaseList2D* node = nullptr;  // the one that has the values; told whenever the description is asked for
  std::shared_ptr<Entries> entries = std::make_shared<Entries>();  // walks and descriptions share them
};

namespace host {

// The level that all of them lie below.
inline constexpr DescLevel kUserData = {ID_USERDATA, DTYPE_SUBCONTAINER, 0};

}  // namespace host

#endif
