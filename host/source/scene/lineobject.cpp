#include <algorithm>

#include "boundary/host.h"
#include "kelvar/vector.h"
#include "scene/geometry.h"
#include "scene/triangulate.h"

namespace host {
namespace {

using Triangle = std::array<Vector, 3>;

constexpr size_t kMaxTriangles = 1 << 20;  // a side that is too short for the lines ends here

std::vector<Triangle> TrianglesOf(const LineObject& lines) {
  std::vector<Vector> points;
  std::vector<size_t> ends;
  auto rest = lines.Points();
  for (const HostSegment& segment : std::as_const(lines.segments).Items<HostSegment>()) {
    const auto line = rest.first(std::min(size_t(std::max(segment.cnt, 0)), rest.size()));
    rest = rest.subspan(line.size());
    if (!segment.closed) continue;
    points.insert(points.end(), line.begin(), line.end());
    ends.push_back(points.size());
  }
  std::vector<Triangle> triangles;
  for (const auto& [a, b, c] : Triangulate(points, ends))
    triangles.push_back({points[a], points[b], points[c]});
  return triangles;
}

// Halves triangles at their longest sides until none is longer. Triangles at one side halve it at the same
// point, so that they fit afterwards. False when there are too many.
bool Refine(std::vector<Triangle>& triangles, double longest) {
  std::vector<Triangle> done;
  while (!triangles.empty()) {
    if (triangles.size() + done.size() > kMaxTriangles) return false;
    auto [a, b, c] = triangles.back();
    triangles.pop_back();
    const double ab = kelvar::Distance(a, b), bc = kelvar::Distance(b, c), ca = kelvar::Distance(c, a);
    if (!(std::max({ab, bc, ca}) > longest)) {
      done.push_back({a, b, c});
      continue;
    }
    if (bc > ab && bc >= ca)
      std::tie(a, b, c) = std::tuple{b, c, a};
    else if (ca > ab)
      std::tie(a, b, c) = std::tuple{c, a, b};
    const Vector middle = (a + b) * 0.5;
    triangles.push_back({a, middle, c});
    triangles.push_back({middle, b, c});
  }
  triangles.swap(done);
  return true;
}

}  // namespace
}  // namespace host

namespace host::lineobject {

LineObject* Alloc(int32_t pcnt, int32_t scnt) {
  return pcnt < 0 || scnt < 0 ? nullptr : NewLineObject(pcnt, scnt);
}

HostBool ResizeSegments(LineObject* self, int32_t pcnt, int32_t scnt) {
  auto* lines = As<LineObject>(self);
  return lines && pcnt >= 0 && scnt >= 0 && ResizeBlocks(*lines, {.points = pcnt, .segments = scnt});
}

int32_t GetSegmentCount(const LineObject* self) {
  const auto* lines = As<LineObject>(self);
  return lines ? lines->segments.Count() : 0;
}

LineObject* Triangulate(const LineObject* self, double regular) {
  const auto* lines = As<LineObject>(self);
  if (!lines) return nullptr;
  std::vector<Triangle> triangles = TrianglesOf(*lines);
  if (triangles.empty() || (regular > 0 && !Refine(triangles, regular))) return nullptr;
  if (triangles.size() > size_t(INT32_MAX / 3)) return nullptr;
  LineObject* made = NewLineObject(3 * int32_t(triangles.size()), int32_t(triangles.size()));
  const auto points = made->Points();
  for (size_t i = 0; i < triangles.size(); ++i)
    std::copy(triangles[i].begin(), triangles[i].end(), &points[3 * i]);
  std::ranges::fill(made->segments.Items<HostSegment>(), HostSegment{3, 1});
  return made;
}

}  // namespace host::lineobject
