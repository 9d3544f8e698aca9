#include <algorithm>
#include <cmath>

#include "boundary/host.h"
#include "scene/geometry.h"
#include "scene/spline.h"

namespace host {
namespace {

bool IsBezier(const SplineObject& spline) {
  return splineobject::GetInterpolationType(&spline) == kSplineBezier;
}

VariableTag* TangentsOf(const SplineObject& spline) {
  return IsBezier(spline) ? FindBlock(spline, kDataTangent) : nullptr;
}

// A tangent for each point, made where the tag is missing or of another count. Only of a Bezier spline.
std::span<Tangent> MakeTangents(SplineObject& spline) {
  const int32_t count = spline.points.Count();
  VariableTag* tag = FindBlock(spline, kDataTangent);
  if (!tag) tag = &AddBlock(spline, kDataTangent, count);
  if (tag->Count() != count) tag->Resize(count);
  return tag->Items<Tangent>();
}

// The curve of so many of the points.
Curve MakeCurve(const SplineObject& spline, size_t first, size_t count, bool isClosed) {
  Curve curve = {.points = spline.Points().subspan(first, count),
                 .tangents = {},
                 .interpolation = Interpolation(splineobject::GetInterpolationType(&spline)),
                 .isClosed = isClosed};
  if (const VariableTag* tag = TangentsOf(spline)) {
    const auto tangents = tag->Items<Tangent>();
    if (first < tangents.size())
      curve.tangents = tangents.subspan(first, std::min(count, tangents.size() - first));
  }
  return curve;
}

// The points of a segment. The segments may say anything: each has those of the points that are left for it.
struct Range {
  size_t first, count;
};

Range RangeBehind(const Range& range, const HostSegment& segment, size_t points) {
  const size_t first = range.first + range.count;
  return {first, std::min(size_t(std::max(segment.cnt, 0)), points - first)};
}

template <class Visit>
void ForEachCurve(const SplineObject& spline, Visit visit) {
  if (spline.Segments().empty()) return visit(size_t(0), CurveOf(spline, 0));
  Range range{};
  for (const HostSegment& segment : spline.Segments()) {
    range = RangeBehind(range, segment, spline.Points().size());
    visit(range.first, MakeCurve(spline, range.first, range.count, segment.closed != 0));
  }
}

}  // namespace

Curve CurveOf(const SplineObject& spline, int32_t segment) {
  const size_t points = spline.Points().size();
  const auto segments = spline.Segments();
  if (segment < 0 || size_t(segment) >= std::max<size_t>(segments.size(), 1)) return {};
  if (segments.empty()) return MakeCurve(spline, 0, points, NumberOf(spline, kSplineClosed, 0) != 0);
  Range range{};
  for (const HostSegment& one : segments.first(size_t(segment) + 1)) range = RangeBehind(range, one, points);
  return MakeCurve(spline, range.first, range.count, segments[size_t(segment)].closed != 0);
}

}  // namespace host

host::Box SplineObject::OwnBox() const {
  host::Box box;
  host::ForEachCurve(*this,
                     [&](size_t, const host::Curve& curve) { box.Add(curve.Bounds(), kIdentityMatrix); });
  return box;
}

namespace host::splineobject {

SplineObject* Alloc(int32_t pcnt, int32_t type) {
  return pcnt < 0 || type < 0 || type > kSplineBezier ? nullptr : NewSplineObject(pcnt, type);
}

int32_t GetInterpolationType(const SplineObject* self) {
  const auto* spline = As<SplineObject>(self);
  if (!spline) return 0;
  const double type = NumberOf(*spline, kSplineType, kSplineBezier);
  return type >= 0 && type <= kSplineBezier ? int32_t(type) : 0;
}

HostBool IsClosed(const SplineObject* self) {
  const auto* spline = As<SplineObject>(self);
  if (!spline) return 0;
  const auto segments = spline->Segments();
  if (segments.empty()) return NumberOf(*spline, kSplineClosed, 0) != 0;
  return std::all_of(segments.begin(), segments.end(), [](const HostSegment& one) { return one.closed != 0; });
}

Vector GetSplinePoint(const SplineObject* self, double t, int32_t segment) {
  const auto* spline = As<SplineObject>(self);
  return spline ? CurveOf(*spline, segment).PointAt(t) : Vector{};
}

Vector GetSplineTangent(const SplineObject* self, double t, int32_t segment) {
  const auto* spline = As<SplineObject>(self);
  return spline ? CurveOf(*spline, segment).TangentAt(t) : Vector{};
}

void SetDefaultCoeff(SplineObject* self) {
  auto* spline = As<SplineObject>(self);
  if (!spline || !IsBezier(*spline)) return;
  const auto tangents = MakeTangents(*spline);
  std::fill(tangents.begin(), tangents.end(), Tangent{});
  ForEachCurve(*spline, [&](size_t first, const Curve& curve) {
    for (size_t i = 0; i < curve.points.size(); ++i) tangents[first + i] = curve.SmoothTangent(int32_t(i));
  });
  Touch(*spline, DIRTYFLAGS_DATA);
}

HostBool ResizeObject(SplineObject* self, int32_t pcnt) { return pointobject::ResizeObject(self, pcnt); }

HostBool ResizeSegments(SplineObject* self, int32_t pcnt, int32_t scnt) {
  auto* spline = As<SplineObject>(self);
  return spline && pcnt >= 0 && scnt >= 0 && ResizeBlocks(*spline, {.points = pcnt, .segments = scnt});
}

int32_t GetSegmentCount(const SplineObject* self) {
  const auto* spline = As<SplineObject>(self);
  return spline ? spline->segments.Count() : 0;
}

HostBool GetSegment(const SplineObject* self, int32_t id, HostSegment* segment) {
  const auto* spline = As<SplineObject>(self);
  if (!segment || id < 0 || id >= GetSegmentCount(spline)) return 0;
  *segment = spline->Segments()[size_t(id)];
  return 1;
}

HostBool SetSegment(SplineObject* self, int32_t id, const HostSegment* segment) {
  auto* spline = As<SplineObject>(self);
  if (!segment || id < 0 || id >= GetSegmentCount(spline)) return 0;
  spline->Segments()[size_t(id)] = *segment;
  Touch(*spline, DIRTYFLAGS_DATA);
  return 1;
}

int32_t GetTangentCount(const SplineObject* self) {
  const auto* spline = As<SplineObject>(self);
  return spline && IsBezier(*spline) ? spline->points.Count() : 0;
}

HostBool GetTangent(const SplineObject* self, int32_t id, Tangent* tangent) {
  const auto* spline = As<SplineObject>(self);
  if (!tangent || id < 0 || id >= GetTangentCount(spline)) return 0;
  const VariableTag* tag = TangentsOf(*spline);
  *tangent = tag && id < tag->Count() ? tag->Items<Tangent>()[size_t(id)] : Tangent{};
  return 1;
}

HostBool SetTangent(SplineObject* self, int32_t id, const Tangent* tangent) {
  auto* spline = As<SplineObject>(self);
  if (!tangent || id < 0 || id >= GetTangentCount(spline)) return 0;
  MakeTangents(*spline)[size_t(id)] = *tangent;
  Touch(*spline, DIRTYFLAGS_DATA);
  return 1;
}

double GetSplineLength(const SplineObject* self, int32_t segment) {
  const auto* spline = As<SplineObject>(self);
  if (!spline) return 0;
  if (segment >= 0) return CurveOf(*spline, segment).Length();
  if (segment != -1) return 0;
  double length = 0;
  ForEachCurve(*spline, [&](size_t, const Curve& curve) { length += curve.Length(); });
  return length;
}

}  // namespace host::splineobject
