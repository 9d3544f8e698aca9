// What the parts of points and polygons share.
#ifndef HOST_SCENE_GEOMETRY_H
#define HOST_SCENE_GEOMETRY_H

#include "boundary/host.h"
#include "scene/neighbor.h"
#include "scene/object.h"

namespace host {

constexpr int32_t kTypeNull = 5140;
constexpr int32_t kTypePhong = 5612;
enum PhongParameter : int32_t { kPhongLimit = 1000, kPhongAngle = 1001, kPhongUsesBreaks = 1002 };
constexpr double kPhongStandard = 0.698131700797732;  // the angle, 40 degrees

// How many of each an object gets; -1: as many as it has.
struct Counts {
  int32_t points = -1, polygons = -1, segments = -1;
};

// Resizes what has a record for each of them, and takes lost ones out of the selections. False, and nothing has
// happened, without memory.
bool ResizeBlocks(PointObject& object, Counts counts);

// Memory for the module, which it gives back by Free. Throws std::bad_alloc.
template <class Item>
Item* AllocItems(size_t count) {
  void* memory = general::Alloc(int64_t(count * sizeof(Item)));
  if (!memory) throw std::bad_alloc();
  return static_cast<Item*>(memory);
}

// A number or truth value among the settings of an element, whatever else a script may have put there.
double NumberOf(const BaseList2D& element, int32_t parameter, double standard);

Neighbor NeighborOf(const PolygonObject& object);

// Which edges of a polygon lie inside an n-gon, as bits.
uint8_t InnerEdges(const PolygonObject& object, int32_t polygon);

// The groups of things that are joined, each told by one of its members.
class Groups {
 public:
  explicit Groups(size_t count) : parents_(count) {
    for (size_t i = 0; i < count; ++i) parents_[i] = int32_t(i);
  }
  int32_t Find(int32_t one) {
    while (parents_[size_t(one)] != one) {
      int32_t& parent = parents_[size_t(one)];
      one = parent = parents_[size_t(parent)];
    }
    return one;
  }
  // The lower member stands for both.
  void Join(int32_t a, int32_t b) {
    a = Find(a), b = Find(b);
    parents_[size_t(std::max(a, b))] = std::min(a, b);
  }

 private:
  std::vector<int32_t> parents_;
};

}  // namespace host

#endif
