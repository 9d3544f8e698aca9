#include "files/scene_ngon.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "kelvar/vector.h"

namespace host {
namespace {

constexpr size_t kLargestCut = 1000;  // corners; the work grows with their square

Vector NormalOf(std::span<const Vector> corners) {
  Vector normal{};
  for (size_t i = 0; i < corners.size(); ++i)
    normal = normal + kelvar::Cross(corners[i] - corners[0], corners[(i + 1) % corners.size()] - corners[0]);
  return normal;
}

bool TurnsLeft(const Vector& a, const Vector& b, const Vector& c, const Vector& normal) {
  return kelvar::Dot(kelvar::Cross(b - a, c - a), normal) > 0;
}

// One turn of all corners about the normal, none of them to the other side.
bool IsConvex(std::span<const Vector> corners, const Vector& normal) {
  const size_t count = corners.size();
  for (size_t i = 0; i < count; ++i) {
    const Vector &a = corners[i], &b = corners[(i + 1) % count], &c = corners[(i + 2) % count];
    if (kelvar::Dot(kelvar::Cross(b - a, c - b), normal) < 0) return false;
    if (kelvar::Dot(kelvar::Cross(b - corners[0], a - corners[0]), normal) > 0) return false;
  }
  return true;
}

class Cutter {
 public:
  Cutter(std::span<const Vector> corners, std::vector<NgonPart>& parts) : corners_(corners), parts_(parts) {}

  void Fan() {
    const auto last = int32_t(corners_.size()) - 1;
    for (int32_t at = 1; at < last; at += 2) Add({0, at, at + 1, std::min(at + 2, last)});
  }

  // Cuts off corners that turn to the inside, and have no other inside.
  void Ears(const Vector& normal) {
    std::vector<int32_t> left(corners_.size());
    std::iota(left.begin(), left.end(), 0);
    while (left.size() > 3) {
      size_t ear = 0;
      while (ear < left.size() && !IsEar(left, ear, normal)) ++ear;
      if (ear == left.size()) ear = 0;  // crosses itself, or has no area
      const size_t count = left.size();
      const int32_t before = left[(ear + count - 1) % count], after = left[(ear + 1) % count];
      Add({before, left[ear], after, after});
      left.erase(left.begin() + ptrdiff_t(ear));
    }
    Add({left[0], left[1], left[2], left[2]});
  }

 private:
  bool IsEar(const std::vector<int32_t>& left, size_t at, const Vector& normal) const {
    const size_t count = left.size();
    const auto corner = [&](size_t i) -> const Vector& { return corners_[size_t(left[i % count])]; };
    const Vector &a = corner(at + count - 1), &b = corner(at), &c = corner(at + 1);
    if (!TurnsLeft(a, b, c, normal)) return false;
    for (size_t i = at + 2; i < at + count - 1; ++i) {
      const Vector& p = corner(i);
      if (p == a || p == b || p == c) continue;
      if (!TurnsLeft(b, a, p, normal) && !TurnsLeft(c, b, p, normal) && !TurnsLeft(a, c, p, normal))
        return false;
    }
    return true;
  }

  void Add(const CPolygon& polygon) {
    uint8_t inner = 0;
    for (int32_t edge = 0; edge < 4; ++edge) {
      const int32_t from = CornerOf(polygon, edge), to = CornerOf(polygon, (edge + 1) % 4);
      if (from != to && (from + 1) % int32_t(corners_.size()) != to) inner |= uint8_t(1 << edge);
    }
    parts_.push_back({polygon, inner});
  }

  std::span<const Vector> corners_;
  std::vector<NgonPart>& parts_;
};

// Sets of polygons, each known by one of them.
class Groups {
 public:
  explicit Groups(size_t count) : above_(count) { std::iota(above_.begin(), above_.end(), 0); }
  int32_t Find(int32_t one) {
    while (above_[size_t(one)] != one) one = above_[size_t(one)] = above_[size_t(above_[size_t(one)])];
    return one;
  }
  // The lower one becomes the set's.
  void Join(int32_t a, int32_t b) {
    a = Find(a), b = Find(b);
    above_[size_t(std::max(a, b))] = std::min(a, b);
  }

 private:
  std::vector<int32_t> above_;
};

int32_t EndOf(const CPolygon& polygon, int32_t edge) {
  const int32_t next = edge == 2 && CornerCount(polygon) == 3 ? 0 : (edge + 1) % 4;
  return CornerOf(polygon, next);
}

template <class Visit>
void ForEdges(const CPolygon& polygon, Visit visit) {
  const int32_t count = CornerCount(polygon);
  // The last edge of a triangle is the one from c, and has the number 3.
  for (int32_t i = 0; i < count; ++i) visit(i, count == 3 && i == 2 ? 3 : i);
}

bool IsInner(std::span<const uint8_t> inner, int32_t polygon, int32_t edge) {
  return size_t(polygon) < inner.size() && (inner[size_t(polygon)] >> edge & 1);
}

// The outer edges of the polygons as one ring; false where they are none.
bool FindRing(std::span<const CPolygon> polygons, std::span<const uint8_t> inner,
              const std::vector<int32_t>& members, std::vector<Corner>& ring) {
  std::unordered_map<int32_t, Corner> from;
  Corner first{-1, 0};
  for (const int32_t member : members) {
    bool isSimple = true;
    ForEdges(polygons[size_t(member)], [&](int32_t corner, int32_t edge) {
      if (IsInner(inner, member, edge)) return;
      if (first.polygon < 0) first = {member, corner};
      isSimple &= from.try_emplace(CornerOf(polygons[size_t(member)], corner), Corner{member, corner}).second;
    });
    if (!isSimple) return false;
  }
  if (from.size() < 3) return false;
  ring.clear();
  Corner at = first;
  for (size_t i = 0; i < from.size(); ++i) {
    ring.push_back(at);
    const auto next = from.find(EndOf(polygons[size_t(at.polygon)], at.corner));
    if (next == from.end()) return false;
    at = next->second;
    if (at.polygon == first.polygon && at.corner == first.corner) return i + 1 == from.size();
  }
  return false;
}

}  // namespace

void CutNgon(std::span<const Vector> corners, std::vector<NgonPart>& parts) {
  const Vector normal = NormalOf(corners);
  Cutter cutter(corners, parts);
  if (corners.size() > kLargestCut || IsConvex(corners, normal))
    cutter.Fan();
  else
    cutter.Ears(normal);
}

void JoinNgons(std::span<const CPolygon> polygons, std::span<const uint8_t> inner, std::vector<Corner>& corners,
               std::vector<uint32_t>& sizes) {
  const auto count = int32_t(polygons.size());
  Groups groups(polygons.size());
  std::unordered_map<uint64_t, int32_t> edges;  // inner ones, by their ends
  const auto key = [](int32_t from, int32_t to) { return uint64_t(uint32_t(from)) << 32 | uint32_t(to); };
  for (int32_t i = 0; i < count; ++i) {
    if (size_t(i) >= inner.size() || !inner[size_t(i)]) continue;
    const CPolygon& polygon = polygons[size_t(i)];
    ForEdges(polygon, [&](int32_t corner, int32_t edge) {
      if (!IsInner(inner, i, edge)) return;
      const int32_t from = CornerOf(polygon, corner), to = EndOf(polygon, corner);
      if (const auto other = edges.find(key(to, from)); other != edges.end())
        groups.Join(i, other->second);
      else
        edges.emplace(key(from, to), i);
    });
  }
  std::unordered_map<int32_t, std::vector<int32_t>> members;
  for (int32_t i = 0; !edges.empty() && i < count; ++i)
    if (size_t(i) < inner.size() && inner[size_t(i)]) members[groups.Find(i)].push_back(i);

  std::vector<Corner> ring;
  const auto addSingle = [&](int32_t polygon) {
    const int32_t own = CornerCount(polygons[size_t(polygon)]);
    for (int32_t corner = 0; corner < own; ++corner) corners.push_back({polygon, corner});
    sizes.push_back(uint32_t(own));
  };
  for (int32_t i = 0; i < count; ++i) {
    const auto group = edges.empty() ? members.end() : members.find(groups.Find(i));
    if (group == members.end() || group->second.size() == 1) {
      addSingle(i);
    } else if (group->first == i) {  // it comes where its first polygon stands
      if (FindRing(polygons, inner, group->second, ring)) {
        corners.insert(corners.end(), ring.begin(), ring.end());
        sizes.push_back(uint32_t(ring.size()));
      } else {
        for (const int32_t member : group->second) addSingle(member);
      }
    }
  }
}

}  // namespace host
