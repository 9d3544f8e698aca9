// The address of a parameter: a stack of levels.
#ifndef KELVAR_DESCID_H
#define KELVAR_DESCID_H

#include <cstdint>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

inline bool operator==(const DescLevel& a, const DescLevel& b) {
  return a.id == b.id && a.dtype == b.dtype && a.creator == b.creator;
}

class DescID {
 public:
  int32_t GetDepth() const { return depth_; }

  // 0 is the first level; the caller knows that it is there.
  const DescLevel& operator[](int32_t index) const { return Levels()[index]; }

  // As the boundary takes it; the levels stay this id's, until it changes.
  HostDescID Word() const { return {Levels(), depth_, 0}; }

  static DescID Copy(const HostDescID& word) {
    DescID id;
    for (int32_t i = 0; i < word.depth; ++i) id.PushId(word.level[i]);
    return id;
  }

  // In place for the first levels, and word by word: a level that was just made is in registers then, and a
  // copy of it would wait for its own stores.
  void PushId(const DescLevel& level) {
    if (depth_ >= kInline) return PushMore(level);
    DescLevel& pushed = inline_[depth_++];
    pushed.id = level.id;
    pushed.dtype = level.dtype;
    pushed.creator = level.creator;
  }

  // Takes the highest level away, which is the last one; an empty id stays.
  void PopId() {
    if (depth_ == 0) return;
    if (depth_ > kInline) more_.pop_back();
    --depth_;
  }

  // Replaces the highest level; an empty id gets it.
  void SetId(const DescLevel& level) {
    PopId();
    PushId(level);
  }

  // The same without its first levels.
  DescID operator<<(int32_t count) const {
    DescID rest;
    for (int32_t i = count; i < depth_; ++i) rest.PushId((*this)[i]);
    return rest;
  }

  bool operator==(const DescID& other) const { return depth_ == other.depth_ && StandsAt(0, other); }

  // The position in `other` at which the levels of this id stand in a row, the first such; -1 for none.
  int32_t FindIn(const DescID& other) const {
    for (int32_t at = 0; at <= other.depth_ - depth_; ++at)
      if (StandsAt(at, other)) return at;
    return -1;
  }

  // The same in every process: FNV-1a over the numbers.
  uint64_t GetHashCode() const {
    uint64_t hash = 0xCBF29CE484222325;
    for (int32_t i = 0; i < depth_; ++i)
      for (const int32_t number : {(*this)[i].id, (*this)[i].dtype, (*this)[i].creator})
        for (int shift = 0; shift < 32; shift += 8)
          hash = (hash ^ (uint32_t(number) >> shift & 0xFF)) * 0x100000001B3;
    return hash;
  }

 private:
  static constexpr int32_t kInline = 3;

  [[gnu::noinline]] void PushMore(const DescLevel& level) {
    if (depth_ == kInline) more_.assign(inline_, inline_ + kInline);
    more_.push_back(level);
    ++depth_;
  }

  const DescLevel* Levels() const { return depth_ > kInline ? more_.data() : inline_; }

  bool StandsAt(int32_t at, const DescID& other) const {
    for (int32_t i = 0; i < depth_; ++i)
      if (!((*this)[i] == other[at + i])) return false;
    return true;
  }

  DescLevel inline_[kInline] = {};
  std::vector<DescLevel> more_;  // all of them, from the fourth on
  int32_t depth_ = 0;
};

#endif
