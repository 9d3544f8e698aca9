// By clipping ears, with holes bridged to what is around them first. Vertices that can stand in an ear's way
// are looked up in a grid.
#include "scene/triangulate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kelvar/vector.h"

namespace host {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Point {
  double x, y;
};

// Above zero where the three turn to the left.
double Turn(const Point& a, const Point& b, const Point& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool IsSame(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }

bool IsInTriangle(const Point& a, const Point& b, const Point& c, const Point& p) {
  return Turn(a, b, p) >= 0 && Turn(b, c, p) >= 0 && Turn(c, a, p) >= 0;
}

// A vertex in a ring of them. Ones at bridges stand in it twice.
struct Vertex {
  Point at;
  size_t point;
  size_t previous, next;
  bool isGone = false;
};

using Vertices = std::vector<Vertex>;

struct Ring {
  size_t vertex;  // any one
  Point low{kInfinity, kInfinity}, high{-kInfinity, -kInfinity};
  double area = 0;
  int depth = 0;  // in how many others it is
  size_t around;  // the smallest of those
};

template <class Visit>
void ForEachVertex(const Vertices& vertices, size_t first, Visit visit) {
  size_t i = first;
  do {
    visit(i);
    i = vertices[i].next;
  } while (i != first);
}

double TurnAt(const Vertices& v, size_t i) { return Turn(v[v[i].previous].at, v[i].at, v[v[i].next].at); }

void Unlink(Vertices& v, size_t i) {
  v[v[i].previous].next = v[i].next;
  v[v[i].next].previous = v[i].previous;
  v[i].isGone = true;
}

// Vertices that may stand in the way of ears, by where they are.
class Grid {
 public:
  Grid(const Vertices& vertices, size_t first) {
    std::vector<size_t> hindering;
    ForEachVertex(vertices, first, [&](size_t i) {
      if (!(TurnAt(vertices, i) > 0)) hindering.push_back(i);
    });
    side_ = std::clamp<size_t>(size_t(std::sqrt(double(hindering.size()))), 1, 1024);
    begins_.resize(side_ * side_ + 1);
    for (size_t i : hindering) ++begins_[CellOf(vertices[i].at) + 1];
    for (size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
    std::vector<size_t> next = begins_;
    members_.resize(hindering.size());
    for (size_t i : hindering) members_[next[CellOf(vertices[i].at)]++] = i;
  }

  // Whether `test` is true for any vertex in the box, and maybe for others.
  template <class Test>
  bool Any(const Point& low, const Point& high, Test test) const {
    for (size_t y = Index(low.y); y <= Index(high.y); ++y) {
      const size_t from = begins_[y * side_ + Index(low.x)], to = begins_[y * side_ + Index(high.x) + 1];
      if (std::any_of(members_.begin() + ptrdiff_t(from), members_.begin() + ptrdiff_t(to), test)) return true;
    }
    return false;
  }

 private:
  // All points are between 0 and 1.
  size_t Index(double at) const { return std::min(size_t(at * double(side_)), side_ - 1); }
  size_t CellOf(const Point& at) const { return Index(at.y) * side_ + Index(at.x); }

  size_t side_;
  std::vector<size_t> begins_, members_;
};

bool IsEar(const Vertices& v, const Grid& grid, size_t ear) {
  const Point &a = v[v[ear].previous].at, &b = v[ear].at, &c = v[v[ear].next].at;
  if (!(Turn(a, b, c) > 0)) return false;
  const Point low = {std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})};
  const Point high = {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})};
  return !grid.Any(low, high, [&](size_t i) {
    const Point& p = v[i].at;
    return !v[i].isGone && IsInTriangle(a, b, c, p) && !IsSame(p, a) && !IsSame(p, b) && !IsSame(p, c) &&
           !(TurnAt(v, i) > 0);
  });
}

void ClipEars(Vertices& v, size_t first, std::vector<std::array<size_t, 3>>& triangles) {
  const Grid grid(v, first);
  bool isCrossed = false;  // no ears are left: lines cross, and any triangle will do
  size_t at = first, stop = first;
  while (v[at].next != v[at].previous) {
    const bool isFlat = TurnAt(v, at) == 0;
    if (isCrossed || IsEar(v, grid, at)) {
      if (!isFlat) triangles.push_back({v[v[at].previous].point, v[at].point, v[v[at].next].point});
      Unlink(v, at);
      at = stop = v[v[at].next].next;  // not the next one: it would make a fan of thin ones
      continue;
    }
    at = v[at].next;
    if (at != stop) continue;
    bool foundFlat = false;
    for (size_t i = v[at].next; i != at; i = v[i].next)
      if (TurnAt(v, i) == 0) Unlink(v, i), foundFlat = true;
    isCrossed = !foundFlat;
  }
}

// Whether the way from a vertex to a point begins inside of its ring.
bool IsInside(const Vertices& v, size_t i, const Point& to) {
  const Point &at = v[i].at, &previous = v[v[i].previous].at, &next = v[v[i].next].at;
  if (TurnAt(v, i) > 0) return Turn(at, next, to) >= 0 && Turn(at, to, previous) >= 0;
  return Turn(at, to, previous) > 0 || Turn(at, next, to) > 0;
}

// The vertex of the ring around it that a hole's leftmost vertex sees: at the edge to its left, or what stands
// between both. None is the answer for a ring that is not around it.
size_t FindBridge(const Vertices& v, size_t hole, size_t outer, size_t none) {
  const Point h = v[hole].at;
  size_t found = none;
  double hit = -kInfinity;
  ForEachVertex(v, outer, [&](size_t i) {
    const Point &a = v[i].at, &b = v[v[i].next].at;
    if (!(a.y >= h.y && h.y >= b.y && a.y != b.y)) return;
    const double x = a.x + (h.y - a.y) * (b.x - a.x) / (b.y - a.y);
    if (!(x <= h.x && x > hit)) return;
    hit = x;
    found = a.x < b.x ? i : v[i].next;
  });
  if (found == none || hit == h.x) return found;
  const Point m = v[found].at, side = {hit, h.y};
  const Point &low = h.y < m.y ? h : side, &high = h.y < m.y ? side : h;
  double flattest = kInfinity;
  ForEachVertex(v, outer, [&](size_t i) {
    const Point& p = v[i].at;
    if (!(p.x < h.x && p.x >= m.x)) return;
    if (!IsInTriangle(low, high, m, p) && !IsInTriangle(low, m, high, p)) return;
    const double slope = std::abs(h.y - p.y) / (h.x - p.x);
    const bool isBetter = slope < flattest || (slope == flattest && p.x > v[found].at.x);
    if (isBetter && IsInside(v, i, h)) found = i, flattest = slope;
  });
  return found;
}

void JoinHole(Vertices& v, size_t outer, size_t hole) {
  const size_t outerAgain = v.size(), holeAgain = outerAgain + 1;
  v.push_back({v[outer].at, v[outer].point, holeAgain, v[outer].next});
  v.push_back({v[hole].at, v[hole].point, v[hole].previous, outerAgain});
  v[v[outer].next].previous = outerAgain;
  v[v[hole].previous].next = holeAgain;
  v[outer].next = hole;
  v[hole].previous = outer;
}

size_t Leftmost(const Vertices& v, size_t ring) {
  size_t left = ring;
  ForEachVertex(v, ring, [&](size_t i) {
    const Point &a = v[i].at, &b = v[left].at;
    if (a.x < b.x || (a.x == b.x && a.y < b.y)) left = i;
  });
  return left;
}

void Reverse(Vertices& v, size_t ring) {
  ForEachVertex(v, ring, [&](size_t i) { std::swap(v[i].previous, v[i].next); });
}

bool Contains(const Vertices& v, const Ring& ring, const Point& p) {
  bool isIn = false;
  if (p.x < ring.low.x || p.x > ring.high.x || p.y < ring.low.y || p.y > ring.high.y) return false;
  ForEachVertex(v, ring.vertex, [&](size_t i) {
    const Point &a = v[i].at, &b = v[v[i].next].at;
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) isIn = !isIn;
  });
  return isIn;
}

// Twice the area that a line goes around, along the normal.
Vector Area(std::span<const Vector> line) {
  Vector sum{};
  for (size_t i = 0; i < line.size(); ++i)
    sum = sum + kelvar::Cross(line[i] - line[0], line[(i + 1) % line.size()] - line[0]);
  return sum;
}

bool IsFinite(const Vector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// The lines as rings in the plane of the largest, between 0 and 1.
struct Plane {
  Plane(std::span<const Vector> points, std::span<const size_t> ends) {
    std::vector<std::span<const Vector>> lines;
    Vector normal{};
    double largest = 0;
    Vector low{kInfinity, kInfinity, kInfinity}, high = -low;
    size_t begin = 0;
    for (size_t end : ends) {
      const auto line = points.subspan(begin, end - begin);
      begin = end;
      const Vector area = line.size() < 3 ? Vector{} : Area(line);
      const double size = kelvar::Length(area);
      if (!(size > 0) || !std::isfinite(size) || !std::all_of(line.begin(), line.end(), IsFinite)) continue;
      lines.push_back(line);
      if (size > largest) largest = size, normal = area * (1 / size);
      for (const Vector& p : line) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
      }
    }
    const double size = kelvar::Length(high - low);
    if (lines.empty() || !std::isfinite(size)) return;
    const Vector least = std::abs(normal.x) < 0.6 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    const Vector u = kelvar::Normalized(kelvar::Cross(least, normal)), v = kelvar::Cross(normal, u);
    const Vector middle = low + (high - low) * 0.5;
    for (const auto& line : lines) {
      const auto offset = size_t(line.data() - points.data());
      AddRing(line, offset, [&](const Vector& p) {
        const Vector at = (p - middle) * (1 / size);
        return Point{std::clamp(kelvar::Dot(at, u) + 0.5, 0.0, 1.0),
                     std::clamp(kelvar::Dot(at, v) + 0.5, 0.0, 1.0)};
      });
    }
  }

  template <class Project>
  void AddRing(std::span<const Vector> line, size_t offset, Project project) {
    const size_t first = vertices.size();
    Ring ring{.vertex = first, .around = 0};
    for (size_t i = 0; i < line.size(); ++i) {
      const Point at = project(line[i]);
      const bool isAgain = vertices.size() > first && IsSame(vertices.back().at, at);
      if (isAgain || (i + 1 == line.size() && vertices.size() > first && IsSame(vertices[first].at, at)))
        continue;
      vertices.push_back({at, offset + i, vertices.size() - 1, vertices.size() + 1});
      ring.low = {std::min(ring.low.x, at.x), std::min(ring.low.y, at.y)};
      ring.high = {std::max(ring.high.x, at.x), std::max(ring.high.y, at.y)};
    }
    if (vertices.size() < first + 3) return vertices.resize(first);
    vertices[first].previous = vertices.size() - 1;
    vertices.back().next = first;
    const Point origin = vertices[first].at;
    ForEachVertex(vertices, first,
                  [&](size_t i) { ring.area += Turn(origin, vertices[i].at, vertices[vertices[i].next].at); });
    if (ring.area < 0) Reverse(vertices, first);
    ring.area = std::abs(ring.area);
    rings.push_back(ring);
  }

  // Finds for each ring what is around it.
  void Nest() {
    for (Ring& ring : rings) {
      double smallest = kInfinity;
      for (size_t i = 0; i < rings.size(); ++i) {
        const Ring& other = rings[i];
        if (&other == &ring || !Contains(vertices, other, vertices[ring.vertex].at)) continue;
        ++ring.depth;
        if (other.area < smallest) smallest = other.area, ring.around = i;
      }
    }
  }

  Vertices vertices;  // all rings turn to the left
  std::vector<Ring> rings;
};

}  // namespace

std::vector<std::array<size_t, 3>> Triangulate(std::span<const Vector> points, std::span<const size_t> ends) {
  Plane plane(points, ends);
  plane.Nest();
  auto& vertices = plane.vertices;
  std::vector<size_t> holes;  // their leftmost vertices, with the rings that they are in
  std::vector<size_t> around(vertices.size());
  for (const Ring& ring : plane.rings) {
    if (ring.depth % 2 == 0) continue;
    Reverse(vertices, ring.vertex);
    holes.push_back(Leftmost(vertices, ring.vertex));
    around[holes.back()] = plane.rings[ring.around].vertex;
  }
  std::sort(holes.begin(), holes.end(),
            [&](size_t a, size_t b) { return vertices[a].at.x < vertices[b].at.x; });
  const size_t none = std::numeric_limits<size_t>::max();
  for (size_t hole : holes)
    if (const size_t bridge = FindBridge(vertices, hole, around[hole], none); bridge != none)
      JoinHole(vertices, bridge, hole);
  std::vector<std::array<size_t, 3>> triangles;
  for (const Ring& ring : plane.rings)
    if (ring.depth % 2 == 0) ClipEars(vertices, ring.vertex, triangles);
  return triangles;
}

}  // namespace host
