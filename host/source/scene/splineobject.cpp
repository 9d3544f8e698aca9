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

// The segments may say anything; each has those of the points that are left for it. Answers the first point.
size_t FirstPoint(std::span<const HostSegment> segments, size_t segment, size_t points) {
  size_t first = 0;
  for (size_t i = 0; i < segment && first < points; ++i)
    first += std::min(size_t(std::max(segments[i].cnt, 0)), points - first);
  return first;
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

}  // namespace

Curve CurveOf(const SplineObject& spline, int32_t segment) {
  const auto points = spline.Points();
  const auto segments = spline.Segments();
  if (segment < 0 || size_t(segment) >= std::max<size_t>(segments.size(), 1)) return {};
  Curve curve;
  curve.interpolation = Interpolation(splineobject::GetInterpolationType(&spline));
  size_t first = 0, count = points.size();
  if (segments.empty()) {
    curve.isClosed = NumberOf(spline, kSplineClosed, 0) != 0;
  } else {
    const HostSegment& own = segments[size_t(segment)];
    first = FirstPoint(segments, size_t(segment), points.size());
    count = std::min(size_t(std::max(own.cnt, 0)), points.size() - first);
    curve.isClosed = own.closed != 0;
  }
  curve.points = points.subspan(first, count);
  if (const VariableTag* tag = TangentsOf(spline)) {
    const auto tangents = tag->Items<Tangent>();
    if (first < tangents.size()) curve.tangents = tangents.subspan(first, std::min(count, tangents.size() - first));
  }
  return curve;
}

}  // namespace host

namespace host::splineobject {

SplineObject* Alloc(int32_t pcnt, int32_t type) { return pcnt < 0 ? nullptr : NewSplineObject(pcnt, type); }

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
  const Vector* base = spline->Points().data();
  for (int32_t i = 0; i < std::max(GetSegmentCount(self), 1); ++i) {
    const Curve curve = CurveOf(*spline, i);
    for (size_t k = 0; k < curve.points.size(); ++k)
      tangents[size_t(curve.points.data() - base) + k] = curve.SmoothTangent(int32_t(k));
  }
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
  for (int32_t i = 0; i < std::max(GetSegmentCount(spline), 1); ++i) length += CurveOf(*spline, i).Length();
  return length;
}

}  // namespace host::splineobject
