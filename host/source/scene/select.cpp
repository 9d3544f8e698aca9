#include "scene/select.h"

#include <limits>
#include <memory>

#include "boundary/host.h"

namespace host {
namespace {

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

// The first run that ends at the number or behind it.
auto FindRun(auto& runs, int32_t num) {
  return std::lower_bound(runs.begin(), runs.end(), num,
                          [](const Run& run, int32_t number) { return run.last < number; });
}

// What `keep` wants of the elements that are in one, the other, or both.
template <class Keep>
std::vector<Run> Combine(const std::vector<Run>& a, const std::vector<Run>& b, Keep keep) {
  // Begins of runs have even numbers; the ends, behind the last element, odd ones.
  const auto edge = [](const std::vector<Run>& runs, size_t i) -> int64_t {
    if (i >= 2 * runs.size()) return std::numeric_limits<int64_t>::max();
    return i % 2 ? int64_t(runs[i / 2].last) + 1 : runs[i / 2].first;
  };
  std::vector<Run> result;
  bool isIn = false;
  int64_t from = 0;
  for (size_t i = 0, j = 0; i < 2 * a.size() || j < 2 * b.size();) {
    const int64_t nextA = edge(a, i), nextB = edge(b, j), at = std::min(nextA, nextB);
    i += nextA == at;
    j += nextB == at;
    if (keep(i % 2 == 1, j % 2 == 1) == isIn) continue;
    if (isIn) result.push_back({int32_t(from), int32_t(at - 1)});
    from = at;
    isIn = !isIn;
  }
  return result;
}

void Count(BaseSelect& selection) { selection.dirty = int32_t(uint32_t(selection.dirty) + 1); }

}  // namespace

void Replace(BaseSelect& selection, std::vector<Run> runs) {
  const auto isSame = [](const Run& a, const Run& b) { return a.first == b.first && a.last == b.last; };
  if (std::equal(runs.begin(), runs.end(), selection.runs.begin(), selection.runs.end(), isSame)) return;
  selection.runs.swap(runs);
  Count(selection);
}

bool Cut(BaseSelect& selection, int32_t count) {
  auto& runs = selection.runs;
  if (runs.empty() || runs.back().last < count) return false;
  while (!runs.empty() && runs.back().first >= count) runs.pop_back();
  if (!runs.empty()) runs.back().last = std::min(runs.back().last, count - 1);
  Count(selection);
  return true;
}

}  // namespace host

namespace host::select {

BaseSelect* Alloc() { return new BaseSelect; }

void Free(BaseSelect* self) { delete self; }

int32_t GetCount(const BaseSelect* self) {
  if (!self) return 0;
  int64_t count = 0;
  for (const Run& run : self->runs) count += int64_t(run.last) - run.first + 1;
  return int32_t(std::min<int64_t>(count, kMax));  // all there can be are one more
}

int32_t GetSegments(const BaseSelect* self) { return self ? int32_t(self->runs.size()) : 0; }

HostBool Select(BaseSelect* self, int32_t num) {
  if (!self || num < 0) return 0;
  auto& runs = self->runs;
  const auto next = FindRun(runs, num);
  if (next != runs.end() && next->first <= num) return 1;
  const bool meetsNext = next != runs.end() && next->first - 1 == num;
  const bool meetsPrevious = next != runs.begin() && (next - 1)->last + 1 == num;
  if (meetsNext && meetsPrevious) {
    (next - 1)->last = next->last;
    runs.erase(next);
  } else if (meetsNext) {
    next->first = num;
  } else if (meetsPrevious) {
    (next - 1)->last = num;
  } else {
    runs.insert(next, {num, num});
  }
  Count(*self);
  return 1;
}

HostBool SelectAll(BaseSelect* self, int32_t min, int32_t max) {
  if (!self || min < 0 || max < min) return 0;
  Replace(*self, {{min, max}});
  return 1;
}

HostBool Deselect(BaseSelect* self, int32_t num) {
  if (!self || num < 0) return 0;
  auto& runs = self->runs;
  const auto run = FindRun(runs, num);
  if (run == runs.end() || run->first > num) return 1;
  if (run->first == run->last) {
    runs.erase(run);
  } else if (run->first == num) {
    ++run->first;
  } else if (run->last == num) {
    --run->last;
  } else {
    const Run front = {run->first, num - 1};
    runs.insert(run, front)[1].first = num + 1;
  }
  Count(*self);
  return 1;
}

void DeselectAll(BaseSelect* self) {
  if (self) Replace(*self, {});
}

HostBool Toggle(BaseSelect* self, int32_t num) {
  return IsSelected(self, num) ? Deselect(self, num) : Select(self, num);
}

HostBool ToggleAll(BaseSelect* self, int32_t min, int32_t max) {
  if (!self || min < 0 || max < min) return 0;
  Replace(*self, Combine(self->runs, {{min, max}}, [](bool a, bool b) { return a != b; }));
  return 1;
}

HostBool GetRange(const BaseSelect* self, int32_t segment, int32_t maxElements, int32_t* a, int32_t* b) {
  if (!self || !a || !b || segment < 0 || size_t(segment) >= self->runs.size()) return 0;
  const Run run = self->runs[size_t(segment)];
  const int32_t last = maxElements >= 0 ? maxElements - 1 : kMax;
  if (run.first > last) return 0;
  *a = run.first;
  *b = std::min(run.last, last);
  return 1;
}

HostBool IsSelected(const BaseSelect* self, int32_t num) {
  if (!self) return 0;
  const auto run = FindRun(self->runs, num);
  return run != self->runs.end() && run->first <= num;
}

HostBool CopyTo(const BaseSelect* self, BaseSelect* dst) {
  if (!self || !dst) return 0;
  Replace(*dst, self->runs);
  return 1;
}

BaseSelect* GetClone(const BaseSelect* self) { return self ? new BaseSelect(self->runs) : nullptr; }

HostBool Merge(BaseSelect* self, const BaseSelect* src) {
  if (!self || !src) return 0;
  Replace(*self, Combine(self->runs, src->runs, [](bool a, bool b) { return a || b; }));
  return 1;
}

HostBool DeselectOf(BaseSelect* self, const BaseSelect* src) {
  if (!self || !src) return 0;
  Replace(*self, Combine(self->runs, src->runs, [](bool a, bool b) { return a && !b; }));
  return 1;
}

HostBool Cross(BaseSelect* self, const BaseSelect* src) {
  if (!self || !src) return 0;
  Replace(*self, Combine(self->runs, src->runs, [](bool a, bool b) { return a && b; }));
  return 1;
}

HostBool FromArray(BaseSelect* self, const uint8_t* selected, int32_t count) {
  if (!self || count < 0 || (count > 0 && !selected)) return 0;
  std::vector<Run> runs;
  for (int32_t i = 0; i < count; ++i)
    if (selected[i]) Append(runs, i, i);
  Replace(*self, std::move(runs));
  return 1;
}

HostBool ToArray(const BaseSelect* self, uint8_t* selected, int32_t count) {
  if (!self || count < 0 || (count > 0 && !selected)) return 0;
  std::fill_n(selected, count, uint8_t(0));
  for (const Run& run : self->runs) {
    if (run.first >= count) break;
    std::fill(selected + run.first, selected + std::min(run.last, count - 1) + 1, uint8_t(1));
  }
  return 1;
}

int32_t GetDirty(const BaseSelect* self) { return self ? self->dirty : 0; }

int32_t GetLastElement(const BaseSelect* self) {
  return self && !self->runs.empty() ? self->runs.back().last : -1;
}

}  // namespace host::select
