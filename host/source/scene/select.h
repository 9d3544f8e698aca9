// Selections: the numbers of elements, as runs of those side by side.
#ifndef HOST_SCENE_SELECT_H
#define HOST_SCENE_SELECT_H

#include <cstdint>
#include <vector>

#include "kelvar.framework/source/tables/t_select.h"
#include "scene/links.h"

namespace host {

struct Run {
  int32_t first, last;
};

}  // namespace host

// Links to one that is part of an object die with it; a copy has links of its own.
struct BaseSelect : host::Linkable {
  BaseSelect() = default;
  explicit BaseSelect(std::vector<host::Run> ofRuns) : runs(std::move(ofRuns)) {}

  std::vector<host::Run> runs;  // in order, with gaps between them
  int32_t dirty = 0;
};

#endif
