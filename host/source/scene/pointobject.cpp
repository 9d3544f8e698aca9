#include <new>

#include "boundary/host.h"
#include "scene/geometry.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

enum SelectionType : int32_t { kPolygonSelection = 5673, kPointSelection = 5674, kEdgeSelection = 5701 };

constexpr int32_t kColorsOfPoints = 1000;

// How many elements a block has to have; -1: whatever it has.
int32_t WantedCount(const VariableTag& tag, const Counts& counts) {
  switch (tag.type.id) {
    case kDataPoint:
    case kDataTangent:
    case kDataVertexMap:
      return counts.points;
    case kDataPolygon:
    case kDataUVW:
    case kDataNormal:
      return counts.polygons;
    case kDataVertexColor:
      return NumberOf(tag, kColorsOfPoints, 0) != 0 ? counts.points : counts.polygons;
    case kDataSegment:
      return counts.segments;
    default:
      return -1;
  }
}

// How many elements of the object its selections of that kind can hold; -1: that has not changed.
int32_t SelectableCount(int32_t selectionType, const Counts& counts) {
  switch (selectionType) {
    case kPointSelection:
      return counts.points;
    case kPolygonSelection:
      return counts.polygons;
    case kEdgeSelection:
      return counts.polygons < 0 ? -1 : 4 * counts.polygons;
    default:
      return -1;
  }
}

void CutSelections(PointObject& object, const Counts& counts) {
  bool isCut = false;
  const auto cut = [&](BaseSelect& selection, int32_t type) {
    const int32_t count = SelectableCount(type, counts);
    return count >= 0 && Cut(selection, count);
  };
  for (BaseSelect* own : {&object.selected, &object.hidden}) isCut |= cut(*own, kPointSelection);
  if (auto* polygons = As<PolygonObject>(&object)) {
    for (BaseSelect* own : {&polygons->selectedPolygons, &polygons->hiddenPolygons})
      isCut |= cut(*own, kPolygonSelection);
    for (BaseSelect* own : {&polygons->selectedEdges, &polygons->hiddenEdges, &polygons->phongBreak})
      isCut |= cut(*own, kEdgeSelection);
  }
  const GeListHead* tags = FindBranch(object, kTypeTag);
  for (GeListNode* node = tags ? tags->down : nullptr; node; node = node->next)
    if (auto* tag = As<SelectionTag>(node); tag && cut(tag->selection, tag->type.id))
      Touch(*tag, DIRTYFLAGS_DATA);
  if (isCut) Touch(object, DIRTYFLAGS_SELECT);
}

}  // namespace

double NumberOf(const BaseList2D& element, int32_t parameter, double standard) {
  const HostGeData* data = container::FindData(&element.data, parameter);
  if (!data) return standard;
  if (data->type == HOST_DATA_FLOAT) return data->value.real;
  const bool isWhole = data->type == HOST_DATA_INT32 || data->type == HOST_DATA_INT64;
  return isWhole ? double(data->value.integer) : standard;
}

bool ResizeBlocks(PointObject& object, Counts counts) {
  struct Resized {
    VariableTag* tag;
    int32_t before, wanted;
  };
  std::vector<Resized> blocks;
  const GeListHead* tags = FindBranch(object, kTypeTag);
  for (GeListNode* node = tags ? tags->down : nullptr; node; node = node->next) {
    auto* tag = As<VariableTag>(node);
    const int32_t wanted = tag ? WantedCount(*tag, counts) : -1;
    if (wanted >= 0 && wanted != tag->Count()) blocks.push_back({tag, tag->Count(), wanted});
  }
  // First those that grow: that can fail, and be taken back.
  size_t done = 0;
  try {
    for (; done < blocks.size(); ++done)
      if (blocks[done].wanted > blocks[done].before) blocks[done].tag->Resize(blocks[done].wanted);
  } catch (const std::bad_alloc&) {
    for (size_t i = 0; i < done; ++i)
      if (blocks[i].wanted > blocks[i].before) blocks[i].tag->Resize(blocks[i].before);
    return false;
  }
  for (const Resized& block : blocks) {
    if (block.wanted < block.before) block.tag->Resize(block.wanted);
    Touch(*block.tag, DIRTYFLAGS_DATA);
  }
  CutSelections(object, counts);
  Touch(object, DIRTYFLAGS_DATA);
  return true;
}

}  // namespace host

namespace host::pointobject {

BaseSelect* GetPointS(PointObject* self) {
  auto* object = As<PointObject>(self);
  return object ? &object->selected : nullptr;
}

BaseSelect* GetPointH(PointObject* self) {
  auto* object = As<PointObject>(self);
  return object ? &object->hidden : nullptr;
}

int32_t GetPointCount(const PointObject* self) {
  const auto* object = As<PointObject>(self);
  return object ? object->points.Count() : 0;
}

HostBool ResizeObject(PointObject* self, int32_t pcnt) {
  auto* object = As<PointObject>(self);
  return object && pcnt >= 0 && ResizeBlocks(*object, {.points = pcnt});
}

// No tag of this host restricts a modifier.
float* CalcVertexMap(PointObject*, BaseObject*) { return nullptr; }

}  // namespace host::pointobject
