// Selections: the numbers of elements, as runs of those side by side.
#ifndef HOST_SCENE_SELECT_H
#define HOST_SCENE_SELECT_H

#include <algorithm>
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

namespace host {

// Adds a run that begins behind all others.
inline void Append(std::vector<Run>& runs, int32_t first, int32_t last) {
  if (!runs.empty() && runs.back().last == first - 1)
    runs.back().last = last;
  else
    runs.push_back({first, last});
}

// Puts other runs in place of those of the selection, and counts it when they differ.
void Replace(BaseSelect& selection, std::vector<Run> runs);

// Deselects the elements from `count` on; whether there were any.
bool Cut(BaseSelect& selection, int32_t count);

// Calls `visit` for each selected element below `count`, in their order.
template <class Visit>
void ForEach(const BaseSelect& selection, int32_t count, Visit visit) {
  for (const Run& run : selection.runs)
    for (int64_t i = run.first; i <= std::min(run.last, count - 1); ++i) visit(int32_t(i));
}

}  // namespace host

#endif
