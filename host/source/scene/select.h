// Selections: the numbers of elements, as runs of those side by side.
#ifndef HOST_SCENE_SELECT_H
#define HOST_SCENE_SELECT_H

#include <cstdint>
#include <utility>
#include <vector>

#include "kelvar.framework/source/tables/t_select.h"

namespace host {

struct Run {
  int32_t first, last;
};

}  // namespace host

struct BaseSelect {
  BaseSelect() = default;
  explicit BaseSelect(std::vector<host::Run> ofRuns) : runs(std::move(ofRuns)) {}

  std::vector<host::Run> runs;  // in order, with gaps between them
  int32_t dirty = 0;
};

#endif
