// Hashes of what something is made from.
#ifndef HOST_EVALUATE_STATE_H
#define HOST_EVALUATE_STATE_H

#include <bit>
#include <concepts>
#include <cstdint>
#include <span>

#include "kelvar/matrix.h"
#include "scene/object.h"

namespace host {

// G. L. Steele, D. Lea, C. H. Flood, "Fast splittable pseudorandom number generators" (2014): their mixing
// function.
class State {
 public:
  template <std::integral Word>
  void Add(Word added) {
    const auto word = uint64_t(added);
    sum_ += word + 0x9e3779b97f4a7c15;
    sum_ = (sum_ ^ (sum_ >> 30)) * 0xbf58476d1ce4e5b9;
    sum_ = (sum_ ^ (sum_ >> 27)) * 0x94d049bb133111eb;
    sum_ ^= sum_ >> 31;
  }
  void Add(double number) { Add(std::bit_cast<uint64_t>(number)); }
  void Add(const Vector& v) {
    Add(v.x);
    Add(v.y);
    Add(v.z);
  }
  void Add(const Matrix& m) {
    for (const Vector* v : {&m.off, &m.v1, &m.v2, &m.v3}) Add(*v);
  }
  template <class Item>
  void Add(std::span<Item> items) {
    AddBytes(std::as_bytes(items));
  }
  // Never 0.
  uint64_t Sum() const { return sum_ | 1; }

 private:
  void AddBytes(std::span<const std::byte> bytes);

  uint64_t sum_ = 0;
};

// Of what evaluation reads from an object itself: its own parameters and, of `points`, which is the object or
// null, the geometry and selections; not of what it is called or where it is seen. Of a plug-in's, whose code
// may look at anything, of all changes. Found anew only where something has changed.
uint64_t ContentOf(BaseObject& object, const PointObject* points = nullptr);

// Adds which tags an object has, and how often they were changed.
void AddTags(State& state, const BaseObject& object);

}  // namespace host

#endif
