// A program of bytes makes polygons, selections, splines and lines with wild numbers and calls everything that
// works on them. What comes back is in order, and every number that is told of is one that there is.

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include "app/settings.h"
#include "scene/geometry.h"
#include "scene/spline.h"

namespace {

namespace lineobject = host::lineobject;
namespace neighbor = host::neighbor;
namespace pointobject = host::pointobject;
namespace polygonobject = host::polygonobject;
namespace select = host::select;
namespace splineobject = host::splineobject;

void Require(bool held) {
  if (!held) std::abort();
}

struct FreeElement {
  void operator()(BaseList2D* element) const { host::baselist::Free(element); }
};
template <class Object>
using Owned = std::unique_ptr<Object, FreeElement>;

class Program {
 public:
  Program(const uint8_t* data, size_t size) : data_(data, size) {
    for (auto& one : polygons_) one.reset(polygonobject::Alloc(Count(), Count()));
    spline_.reset(splineobject::Alloc(Count(), data_.ConsumeIntegralInRange(0, 4)));
    lines_.reset(lineobject::Alloc(Count(), Count()));
    for (const auto& [object, type] : {std::pair{Polygons(), host::kDataVertexMap},
                                       {Polygons(), host::kDataUVW},
                                       {Polygons(), host::kDataNormal},
                                       {Polygons(), host::kDataVertexColor}})
      host::AddBlock(*object, type, pointobject::GetPointCount(object));
  }

  void Run() {
    for (int steps = 0; steps < 400 && data_.remaining_bytes() > 0; ++steps) {
      const int op = data_.ConsumeIntegralInRange(0, 7);
      if (op < 2) {
        ChangeSelection();
      } else if (op == 2) {
        WriteObject();
      } else if (op == 3) {
        Resize();
      } else if (op == 4) {
        UseEdges();
      } else if (op == 5) {
        UsePolygons();
      } else if (op == 6) {
        UseNeighbor();
      } else {
        UseCurves();
      }
    }
  }

 private:
  int32_t Small() { return data_.ConsumeIntegralInRange(-2, 12); }
  int32_t Count() { return data_.ConsumeIntegralInRange(0, 24); }
  bool Flag() { return data_.ConsumeBool(); }

  // Mostly one that something has.
  int32_t Number() {
    constexpr int32_t kWild[] = {-1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min(),
                                 std::numeric_limits<int32_t>::max() - 1, host::kMaxPolygons + 1};
    if (data_.ConsumeIntegralInRange(0, 15) == 0) return data_.PickValueInArray(kWild);
    return data_.ConsumeIntegralInRange(0, 30);
  }

  double Real() {
    constexpr double kWild[] = {NAN,    HUGE_VAL, -HUGE_VAL, 1e308, -1e308, 1e-308,
                                1e-320, 1e160,    -1e-160,   1e16,  0.1};
    const int kind = data_.ConsumeIntegralInRange(0, 15);
    if (kind == 0) return data_.PickValueInArray(kWild);
    if (kind == 1) return data_.ConsumeFloatingPoint<double>();
    return data_.ConsumeIntegralInRange(-8, 8);
  }
  Vector Place() { return {Real(), Real(), Flag() ? Real() : 0}; }

  PolygonObject* Polygons() { return polygons_[Flag()].get(); }

  BaseSelect* Selection() {
    PolygonObject* object = Polygons();
    switch (data_.ConsumeIntegralInRange(0, 9)) {
      case 0:
        return pointobject::GetPointS(object);
      case 1:
        return polygonobject::GetPolygonS(object);
      case 2:
        return polygonobject::GetPolygonH(object);
      case 3:
        return polygonobject::GetEdgeS(object);
      case 4:
        return polygonobject::GetEdgeH(object);
      case 5:
        return polygonobject::GetPhongBreak(object);
      default:
        return &selections_[data_.ConsumeIntegralInRange(0, 3)];
    }
  }

  static void Check(const BaseSelect& selection) {
    int64_t last = -2;
    for (const host::Run& run : selection.runs) {
      Require(run.first > last + 1 && run.first >= 0 && run.last >= run.first);
      last = run.last;
    }
    Require(select::GetLastElement(&selection) == (last < 0 ? -1 : last));
  }

  void ChangeSelection() {
    BaseSelect* a = Selection();
    const BaseSelect* b = Selection();
    const int32_t number = Number(), other = Number();
    switch (data_.ConsumeIntegralInRange(0, 11)) {
      case 0:
        Require(select::Select(a, number) == (number >= 0) && select::IsSelected(a, number) == (number >= 0));
        break;
      case 1:
        Require(select::Deselect(a, number) == (number >= 0) && !select::IsSelected(a, number));
        break;
      case 2:
        select::SelectAll(a, number, other);
        break;
      case 3:
        select::Toggle(a, number);
        break;
      case 4:
        select::ToggleAll(a, number, other);
        break;
      case 5:
        select::Merge(a, b);
        break;
      case 6:
        select::DeselectOf(a, b);
        break;
      case 7:
        select::Cross(a, b);
        break;
      case 8:
        select::CopyTo(a, &selections_[0]);
        break;
      case 9: {
        auto bytes = data_.ConsumeBytes<uint8_t>(12);
        select::FromArray(a, bytes.data(), int32_t(bytes.size()));
        select::ToArray(b, bytes.data(), int32_t(bytes.size()));
        break;
      }
      case 10: {
        int32_t first = 0, last = 0;
        if (select::GetRange(a, number, other, &first, &last))
          Require(select::IsSelected(a, last) && first <= last);
        break;
      }
      default:
        select::DeselectAll(a);
    }
    Check(*a);
  }

  // As scripts and files write: anything, anywhere.
  void WriteObject() {
    PolygonObject* object = Polygons();
    PointObject* const all[] = {object, spline_.get(), lines_.get()};
    for (Vector& point : data_.PickValueInArray(all)->Points()) {
      if (data_.remaining_bytes() == 0) break;
      point = Place();
    }
    for (CPolygon& polygon : object->Polygons()) {
      if (data_.remaining_bytes() == 0) break;
      polygon = {Number(), Number(), Number(), 0};
      polygon.d = Flag() ? polygon.c : Number();
    }
    HostSegment segment{Number(), Flag()};
    splineobject::SetSegment(spline_.get(), Small(), &segment);
    for (HostSegment& one : lines_->segments.Items<HostSegment>()) one = {Flag() ? Count() : Number(), !Flag()};
    const Tangent tangent{Place(), Place()};
    splineobject::SetTangent(spline_.get(), Small(), &tangent);
    host::Put(spline_->data, host::kSplineType, host::Value::Int32(Small()));
    host::Put(spline_->data, host::kSplineClosed, host::Value::Int32(Flag()));
    const auto edges = data_.ConsumeBytes<uint8_t>(size_t(Flag() ? object->polygons.Count() : Count()));
    const bool isSame = int32_t(edges.size()) == object->polygons.Count();
    Require(polygonobject::SetNgonEdges(object, edges.data(), int32_t(edges.size())) == isSame);
    host::object::SetPhong(object, Flag(), Flag(), Real());
  }

  void Resize() {
    const auto count = [this] { return Flag() ? Count() : Small(); };
    PolygonObject* object = Polygons();
    bool wasResized = false;
    switch (data_.ConsumeIntegralInRange(0, 4)) {
      case 0:
        pointobject::ResizeObject(object, count());
        return;
      case 1:
        wasResized = polygonobject::ResizePolygons(object, count(), Flag() ? count() : Number());
        break;
      case 2:
        wasResized = polygonobject::ResizeNgons(object, count(), count(), Number(), Number());
        break;
      case 3:
        splineobject::ResizeSegments(spline_.get(), count(), count());
        break;
      default:
        lineobject::ResizeSegments(lines_.get(), count(), count());
    }
    const int32_t points = pointobject::GetPointCount(object),
                  polygons = polygonobject::GetPolygonCount(object);
    if (!wasResized) return;
    Require(select::GetLastElement(&object->selected) < points);
    Require(select::GetLastElement(&object->selectedPolygons) < polygons);
    Require(select::GetLastElement(&object->phongBreak) < 4 * polygons);
    const VariableTag* normals = host::FindBlock(*object, host::kDataNormal);
    Require(!normals || normals->Count() == polygons);
  }

  void UseEdges() {
    PolygonObject* object = Polygons();
    BaseSelect* selection = Selection();
    const int32_t kind = data_.ConsumeIntegralInRange(-1, 3);
    std::unique_ptr<BaseSelect> made;
    switch (data_.ConsumeIntegralInRange(0, 5)) {
      case 0:
        made.reset(polygonobject::GetSelectedEdges(object, &neighbor_, kind));
        break;
      case 1:
        made.reset(polygonobject::ConvertEdges(object, &neighbor_, selection));
        break;
      case 2:
        polygonobject::SetSelectedEdges(object, &neighbor_, selection, kind);
        break;
      case 3:
        polygonobject::ValidateEdgeSelection(object, Flag() ? selection : nullptr);
        break;
      case 4:
        polygonobject::GetEdgeSelection(object, selection, kind);
        break;
      default:
        made.reset(polygonobject::GetShadingBreak(object, Flag(), Flag(), Flag(), Real(), Real()));
    }
    Check(*selection);
    if (made) Check(*made);
  }

  void UsePolygons() {
    PolygonObject* object = Polygons();
    const int32_t count = polygonobject::GetPolygonCount(object);
    if (Vector32* normals = polygonobject::CreatePhongNormals(object)) {
      for (int32_t i = 0; i < 4 * count; ++i) {
        const double length = std::hypot(normals[i].x, normals[i].y, normals[i].z);
        Require(length == 0 || std::abs(length - 1) < 1e-3);
      }
      host::general::Free(normals);
    }
    int32_t ngons = 0, words = 0;
    int32_t* map = polygonobject::GetPolygonTranslationMap(object, &ngons);
    for (int32_t i = 0; i < count; ++i) Require(map[i] >= 0 && map[i] < ngons);
    if (count > 0 && Flag()) map[0] = Number();
    if (int32_t* back = polygonobject::GetNGonTranslationMap(object, Flag() ? ngons : Number(), map, &words)) {
      for (int32_t at = 0; at < words; at += back[at] + 1)
        for (int32_t i = 1; i <= back[at]; ++i) Require(back[at + i] >= 0 && back[at + i] < count);
      host::general::Free(back);
    }
    host::general::Free(map);
    Require(polygonobject::GetNgonCount(object) <= ngons);
    BaseSelect selected;
    Require(polygonobject::GetSelectedNgons(object, &selected) && select::GetLastElement(&selected) < ngons);
    Require(polygonobject::GetHiddenNgons(object, &selected) && select::GetLastElement(&selected) < ngons);
    host::general::Free(polygonobject::GetNgonEdgesCompact(object));
  }

  void UseNeighbor() {
    PolygonObject* object = Polygons();
    Require(neighbor::Init(&neighbor_, object, Flag() ? Selection() : nullptr));
    const int32_t edges = neighbor::GetEdgeCount(&neighbor_), count = polygonobject::GetPolygonCount(object);
    for (int32_t i = 0; i < count; ++i) {
      HostPolyInfo info;
      Require(neighbor::GetPolyInfo(&neighbor_, i, &info));
      for (int k = 0; k < 4; ++k) {
        Require(info.edge[k] >= -1 && info.edge[k] < edges);
        Require(info.face[k] >= -1 && info.face[k] < count && info.face[k] != i);
      }
    }
    const int32_t a = Number(), b = Number(), polygon = Number();
    const int32_t* polygons = nullptr;
    const int32_t around = neighbor::GetPointPolys(&neighbor_, a, &polygons);
    for (int32_t i = 0; i < around; ++i) Require(polygons[i] >= 0 && polygons[i] < count);
    int32_t first = 0, second = 0;
    const bool isEdge = neighbor::GetEdgePolys(&neighbor_, a, b, &first, &second);
    Require(isEdge == (first >= 0) && first < count && second < count);
    Require(isEdge || neighbor::GetNeighbor(&neighbor_, a, b, polygon) == -1);
    if (Flag()) neighbor::Flush(&neighbor_);
  }

  void UseCurves() {
    SplineObject* spline = spline_.get();
    const int32_t segment = Flag() ? Small() : Number();
    if (Flag()) splineobject::SetDefaultCoeff(spline);
    splineobject::GetSplinePoint(spline, Real() / 8, segment);
    const double length = kelvar::Length(splineobject::GetSplineTangent(spline, Real() / 8, segment));
    Require(length == 0 || std::abs(length - 1) < 1e-9);
    Require(!(splineobject::GetSplineLength(spline, segment) < 0));
    splineobject::GetSplineLength(spline, -1);
    Tangent tangent;
    splineobject::GetTangent(spline, segment, &tangent);
    splineobject::IsClosed(spline);
    constexpr double kRegular[] = {0, 0, 0, -1, NAN, HUGE_VAL, 1e299};
    Owned<LineObject> made(lineobject::Triangulate(lines_.get(), data_.PickValueInArray(kRegular)));
    if (made) Require(pointobject::GetPointCount(made.get()) == 3 * lineobject::GetSegmentCount(made.get()));
  }

  FuzzedDataProvider data_;
  Owned<PolygonObject> polygons_[2];
  Owned<SplineObject> spline_;
  Owned<LineObject> lines_;
  BaseSelect selections_[4];
  Neighbor neighbor_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  host::GetSettings().startup = HOST_STARTUP;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Program(data, size).Run();
  return 0;
}
