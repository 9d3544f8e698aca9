// qlx.SplineObject: a spline of segments, with tangents where its interpolation has them.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

// A segment equal to their number passes on purpose and goes to the host: the only one of a spline without
// segments has the number 0.
template <Vector (SplineObject::*kGet)(double, int32_t) const>
PyObject* GetOnSpline(SplineObject* self, double t, int32_t segment) {
  if (segment < 0 || segment > self->GetSegmentCount()) return RaiseOutOfRange("segment index");
  return NewVector((self->*kGet)(t, segment));
}

// -1: the segments stay.
bool ResizeObject(SplineObject* self, int32_t pcnt, int32_t scnt) {
  return scnt == -1 ? self->ResizeObject(pcnt) : self->ResizeSegments(pcnt, scnt);
}

PyObject* GetSegment(SplineObject* self, int32_t id) {
  HostSegment segment{};
  if (!self->GetSegment(id, &segment)) return RaiseOutOfRange("segment index");
  return Py_BuildValue("{s:i,s:N}", "cnt", segment.cnt, "closed", ToPython(segment.closed != 0));
}

PyObject* SetSegment(SplineObject* self, int32_t id, int32_t cnt, bool closed) {
  const HostSegment segment{cnt, closed};
  return self->SetSegment(id, &segment) ? NewNone() : RaiseOutOfRange("segment index");
}

PyObject* GetTangent(SplineObject* self, int32_t id) {
  Tangent tangent{};
  if (!self->GetTangent(id, &tangent)) return RaiseOutOfRange("tangent index");
  return Py_BuildValue("{s:N,s:N}", "vl", NewVector(tangent.vl), "vr", NewVector(tangent.vr));
}

PyObject* SetTangent(SplineObject* self, int32_t id, const Vector& vl, const Vector& vr) {
  const Tangent tangent{vl, vr};
  return self->SetTangent(id, &tangent) ? NewNone() : RaiseOutOfRange("tangent index");
}

using SegmentInRange = Row<InRange<"id", &SplineObject::GetSegmentCount, "segment index">>;
using TangentInRange = Row<InRange<"id", &SplineObject::GetTangentCount, "tangent index">>;

PyMethodDef g_methods[] = {
    Method<&SplineObject::GetInterpolationType>("GetInterpolationType",
                                                "GetInterpolationType() -> int\n\n0 linear, 1 cubic, 2 Akima, "
                                                "3 B-spline, 4 Bezier: SPLINEOBJECT_TYPE."),
    Method<&SplineObject::IsClosed>("IsClosed",
                                    "IsClosed() -> bool\n\nWhether the spline, all its segments, is closed."),
    Method<&GetOnSpline<&SplineObject::GetSplinePoint>, "f|i", "t", "segment=0">(
        "GetSplinePoint",
        "GetSplinePoint(t, segment=0) -> qlx.Vector\n\n"
        "The point at a parameter from 0 to 1 of a segment, in the object's system. Raises IndexError for a "
        "segment out of range."),
    Method<&GetOnSpline<&SplineObject::GetSplineTangent>, "f|i", "t", "segment=0">(
        "GetSplineTangent",
        "GetSplineTangent(t, segment=0) -> qlx.Vector\n\nThe direction there, of length 1."),
    Method<&SplineObject::SetDefaultCoeff>(
        "SetDefaultCoeff", "SetDefaultCoeff() -> None\n\nGives a Bezier spline tangents that make it smooth."),
    Method<&ResizeObject, "i|i", "pcnt", "scnt=-1">("ResizeObject",
                                                    "ResizeObject(pcnt, scnt=-1) -> bool\n\n"
                                                    "Gives the spline that many points and segments; new ones "
                                                    "are zero. -1 leaves the segments as they are."),
    Method<&SplineObject::GetSegmentCount>(
        "GetSegmentCount", "GetSegmentCount() -> int\n\nHow many segments there are; 0: one of all points."),
    Method<SegmentInRange, &GetSegment, "i", "id">("GetSegment",
                                                   "GetSegment(id) -> dict\n\n"
                                                   "How many points a segment has, \"cnt\", and whether it is "
                                                   "\"closed\". Raises IndexError out of range."),
    Method<SegmentInRange, &SetSegment, "iib", "id", "cnt", "closed">(
        "SetSegment", "SetSegment(id, cnt, closed) -> None\n\nSets that. Raises IndexError out of range."),
    Method<&SplineObject::GetTangentCount>(
        "GetTangentCount",
        "GetTangentCount() -> int\n\nHow many points have tangents: all of a Bezier spline, else none."),
    Method<TangentInRange, &GetTangent, "i", "id">("GetTangent",
                                                   "GetTangent(id) -> dict\n\n"
                                                   "The tangents of a point, from the point: \"vl\" to the "
                                                   "left and \"vr\" to the right, each a qlx.Vector. "
                                                   "Raises IndexError out of range."),
    Method<TangentInRange, &SetTangent, "iVV", "id", "vl", "vr">(
        "SetTangent", "SetTangent(id, vl, vr) -> None\n\nSets them. Raises IndexError out of range."),
    {},
};

}  // namespace

PyTypeObject g_SplineObjectType = MakeType<AtomWrapper>({
    .name = "qlx.SplineObject",
    .doc = "SplineObject(pcnt, type)\n\nA spline; a new one has that many points, all zero, and that "
           "interpolation: SPLINEOBJECT_TYPE.",
    .base = &g_PointObjectType,
    .methods = g_methods,
    .create = CreateKind<&SplineObject::Alloc, 5101, "ii", "pcnt", "type">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_SplineObjectType);
}

}  // namespace qlx
