#include "scene/object.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include "boundary/host.h"
#include "evaluate/evaluate.h"
#include "evaluate/evaluation.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

uint32_t ElementSize(const NodeType& type) {
  constexpr struct {
    int32_t type;
    uint32_t size;
  } kSizes[] = {{kDataPoint, sizeof(Vector)},        {kDataPolygon, sizeof(CPolygon)},
                {kDataTangent, sizeof(Tangent)},     {kDataUVW, sizeof(UVWStruct)},
                {kDataSegment, sizeof(HostSegment)}, {kDataVertexMap, sizeof(float)},
                {kDataNormal, 12 * sizeof(int16_t)}, {kDataVertexColor, 4 * sizeof(ColorA32)}};
  for (const auto& known : kSizes)
    if (NodeTypes::Derives(type, known.type)) return known.size;
  return 1;
}

// A tag that stays with its object.
VariableTag& FixedBlock(BaseObject& object, int32_t type) {
  VariableTag& tag = AddBlock(object, type, 0);
  tag.isFixed = true;
  return tag;
}

enum Parameter : int32_t {
  kRelPosition = 903,
  kRelRotation,
  kRelScale,
  kFrozenPosition,
  kFrozenRotation,
  kFrozenScale,
  kRotationOrder = 913
};

std::atomic<int64_t> g_objects{0};

// Bytes that are free or can be made so.
size_t AvailableMemory() {
  std::ifstream file("/proc/meminfo");
  std::string name;
  size_t kilobytes = 0;
  while (file >> name >> kilobytes) {
    if (name == "MemAvailable:") return kilobytes << 10;
    file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return SIZE_MAX;
}

}  // namespace

// What is infinite or no number is nowhere.
void Box::Add(const Vector& p) {
  if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return;
  if (IsEmpty()) {
    low = high = p;
    return;
  }
  low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
  high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
}

void Box::Add(const Box& box, const Matrix& matrix) {
  if (box.IsEmpty()) return;
  for (int corner = 0; corner < 8; ++corner)
    Add(kelvar::Transformed(matrix, {corner & 1 ? box.high.x : box.low.x, corner & 2 ? box.high.y : box.low.y,
                                     corner & 4 ? box.high.z : box.low.z}));
}

VariableTag* FindBlock(const BaseObject& object, int32_t type) {
  const GeListHead* tags = FindBranch(object, kTypeTag);
  VariableTag* found = nullptr;
  for (GeListNode* tag = tags ? tags->down : nullptr; tag; tag = tag->next) {
    if (tag->type.id != type) continue;
    auto* block = As<VariableTag>(tag);
    if (block && block->isFixed) return block;  // whatever others put ahead of it
    if (!found) found = block;
  }
  return found;
}

bool HasFixedBlock(const QLXAtom& owner, int32_t type) {
  switch (type) {
    case kDataPoint:
      return As<PointObject>(&owner);
    case kDataPolygon:
      return As<PolygonObject>(&owner);
    case kDataSegment:
      return As<SplineObject>(&owner) || As<LineObject>(&owner);
    default:
      return false;
  }
}

VariableTag& AddBlock(BaseObject& object, int32_t type, int32_t count) {
  auto made = std::make_unique<VariableTag>(*FindType(type));
  made->Resize(count);
  Append(*made, *Branch(object, kTypeTag));
  return *made.release();
}

PolygonObject* NewPolygonObject(int32_t points, int32_t polygons) {
  auto made = std::make_unique<PolygonObject>(*FindType(kTypePolygonObject));
  made->points.Resize(points);
  made->polygons.Resize(polygons);
  return made.release();
}

SplineObject* NewSplineObject(int32_t points, int32_t interpolation) {
  auto made = std::make_unique<SplineObject>(*FindType(kTypeSplineObject));
  made->points.Resize(points);
  Put(made->data, kSplineType, Value::Int32(interpolation));
  if (interpolation == kSplineBezier) AddBlock(*made, kDataTangent, points);
  return made.release();
}

LineObject* NewLineObject(int32_t points, int32_t segments) {
  auto made = std::make_unique<LineObject>(*FindType(kTypeLineObject));
  made->points.Resize(points);
  made->segments.Resize(segments);
  return made.release();
}

Matrix UpMatrix(const BaseObject& object) {
  // From the outermost one inwards would need a list of them; the product is the same.
  Matrix matrix = kIdentityMatrix;
  const auto above = [](const GeListNode& node) -> const BaseObject* {
    // What deformers left stands where the shape does.
    const GeListNode* at = &node;
    while (!at->up && at->list && at->list->branch == kDeformBranch) at = at->list->owner;
    if (at->up) return As<BaseObject>(at->up);
    const bool isCached = at->list && at->list->branch == kCacheBranch;
    return isCached ? As<BaseObject>(at->list->owner) : nullptr;
  };
  for (const BaseObject* at = above(object); at; at = above(*at))
    matrix = kelvar::Product(at->place.Local(), matrix);
  return matrix;
}

Matrix GlobalMatrix(const BaseObject& object) {
  return kelvar::Product(UpMatrix(object), object.place.Local());
}

const BaseObject& ShapeOf(const BaseObject& object) {
  const GeListHead* deformed = FindBranch(object, kDeformBranch);
  return deformed && deformed->down ? static_cast<const BaseObject&>(*deformed->down) : object;
}

Box BoxOf(const BaseObject& object) {
  Box box;
  std::vector<std::pair<const GeListNode*, Matrix>> pending{{&object, kIdentityMatrix}};
  while (!pending.empty()) {
    const auto [node, up] = pending.back();
    pending.pop_back();
    if (node != &object && node->next) pending.emplace_back(node->next, up);
    const auto* one = As<BaseObject>(node);
    if (!one) continue;
    const Matrix matrix = one == &object ? up : kelvar::Product(up, one->place.Local());
    const BaseObject& shape = ShapeOf(*one);
    box.Add(shape.OwnBox(), matrix);
    if (one != &object && one->down) pending.emplace_back(one->down, matrix);
    const GeListHead* cache = &shape == one ? FindBranch(*one, kCacheBranch) : nullptr;
    if (cache && cache->down) pending.emplace_back(cache->down, matrix);
  }
  return box;
}

}  // namespace host

using namespace host;

VariableTag::VariableTag(const NodeType& ofType) : BaseTag(ofType), elementSize(ElementSize(ofType)) {}

// The system may promise memory that it hasn't got, and end the process when it is used.
void VariableTag::Resize(int32_t count) {
  constexpr size_t kMuch = size_t(1) << 28;
  const size_t wanted = size_t(count) * elementSize;
  if (wanted > bytes.size() + kMuch && wanted - bytes.size() > AvailableMemory() / 4 * 3)
    throw std::bad_alloc();
  bytes.resize(wanted);
}

void VariableTag::CopyOwn(BaseList2D& to) const { static_cast<VariableTag&>(to).bytes = bytes; }

void SelectionTag::CopyOwn(BaseList2D& to) const { static_cast<SelectionTag&>(to).selection = selection; }

BaseObject::BaseObject(const NodeType& ofType) : BaseList2D(ofType), number(++g_objects) { MeetObject(ofType); }

BaseObject::~BaseObject() = default;

bool BaseObject::GetOwn(int32_t parameter, Value& value) const {
  switch (parameter) {
    case kRelPosition:
      value = Value::Of(place.Relative().position);
      return true;
    case kRelRotation:
      value = Value::Of(place.Relative().rotation);
      return true;
    case kRelScale:
      value = Value::Of(place.Relative().scale);
      return true;
    case kFrozenPosition:
      value = Value::Of(place.Frozen().position);
      return true;
    case kFrozenRotation:
      value = Value::Of(place.Frozen().rotation);
      return true;
    case kFrozenScale:
      value = Value::Of(place.Frozen().scale);
      return true;
    case kRotationOrder:
      value = Value::Int32(place.Order());
      return true;
    default:
      return false;
  }
}

bool BaseObject::SetOwn(int32_t parameter, const HostGeData& value) {
  if (parameter == kRotationOrder) {
    place.SetOrder(int32_t(value.value.integer));
    return true;
  }
  const bool isFrozen = parameter >= kFrozenPosition;
  if (parameter < kRelPosition || parameter > kFrozenScale) return false;
  Placement changed = isFrozen ? place.Frozen() : place.Relative();
  const int32_t part = isFrozen ? parameter - kFrozenPosition : parameter - kRelPosition;
  (part == 0 ? changed.position : part == 1 ? changed.rotation : changed.scale) = value.value.vector;
  isFrozen ? place.SetFrozen(changed) : place.SetRelative(changed);
  return true;
}

void BaseObject::CopyOwn(BaseList2D& to) const {
  auto& object = static_cast<BaseObject&>(to);
  object.place = place;
  object.axis = axis ? std::make_unique<Matrix>(*axis) : nullptr;
  object.uniqueIP = uniqueIP;
  object.turnsShortest = turnsShortest;
}

PointObject::PointObject(const NodeType& ofType) : BaseObject(ofType), points(FixedBlock(*this, kDataPoint)) {}

Box PointObject::OwnBox() const {
  Box box;
  for (const Vector& point : Points()) box.Add(point);
  return box;
}

void PointObject::CopyOwn(BaseList2D& to) const {
  BaseObject::CopyOwn(to);
  auto& object = static_cast<PointObject&>(to);
  object.selected = selected;
  object.hidden = hidden;
}

PolygonObject::PolygonObject(const NodeType& ofType)
    : PointObject(ofType), polygons(FixedBlock(*this, kDataPolygon)) {}

uint32_t PolygonObject::SelectionChanges() const {
  uint32_t changes = PointObject::SelectionChanges();
  for (const BaseSelect* one : {&selectedPolygons, &hiddenPolygons, &selectedEdges, &hiddenEdges, &phongBreak})
    changes += uint32_t(one->dirty);
  return changes;
}

void PolygonObject::CopyOwn(BaseList2D& to) const {
  PointObject::CopyOwn(to);
  auto& object = static_cast<PolygonObject&>(to);
  object.selectedPolygons = selectedPolygons;
  object.hiddenPolygons = hiddenPolygons;
  object.selectedEdges = selectedEdges;
  object.hiddenEdges = hiddenEdges;
  object.phongBreak = phongBreak;
  object.ngonEdges = ngonEdges;
}

SplineObject::SplineObject(const NodeType& ofType)
    : PointObject(ofType), segments(FixedBlock(*this, kDataSegment)) {}

LineObject::LineObject(const NodeType& ofType)
    : PointObject(ofType), segments(FixedBlock(*this, kDataSegment)) {}
