#include "evaluate/state.h"

#include <functional>
#include <string_view>

#include "boundary/host.h"
#include "evaluate/evaluation.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

constexpr int32_t kFirstOwn = 1000;  // ahead of it is what all objects have, and what users add

// Its own parameters. What is no number counts as changed with every change of the object.
void AddSettings(State& state, const BaseObject& object, uint64_t changes) {
  for (int32_t i = 0; i < container::GetCount(&object.data); ++i) {
    const int32_t id = container::GetIndexId(&object.data, i);
    if (id < kFirstOwn) continue;
    const HostGeData& data = *container::GetIndexData(&object.data, i);
    state.Add(id);
    state.Add(data.type);
    if (!IsPlain(data.type))
      state.Add(changes);
    else if (data.type == HOST_DATA_VECTOR)
      state.Add(data.value.vector);
    else
      state.Add(data.value.integer);
  }
}

void AddGeometry(State& state, const PointObject& object) {
  for (const GeListNode* tag = object::GetFirstTag(&object); tag; tag = tag->next)
    if (const auto* block = As<VariableTag>(tag)) state.Add(std::span(block->bytes));
  const auto add = [&](std::initializer_list<const BaseSelect*> selections) {
    for (const BaseSelect* one : selections) state.Add(std::span(one->runs));
  };
  add({&object.selected, &object.hidden});
  const auto* polygons = As<PolygonObject>(&object);
  if (!polygons) return;
  add({&polygons->selectedPolygons, &polygons->hiddenPolygons, &polygons->selectedEdges, &polygons->hiddenEdges,
       &polygons->phongBreak});
  state.Add(std::span(polygons->ngonEdges));
}

}  // namespace

void State::AddBytes(std::span<const std::byte> bytes) {
  Add(bytes.size());
  Add(std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
}

uint64_t ContentOf(BaseObject& object, const PointObject* points) {
  uint64_t changes = atom::GetDirty(&object, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE);
  if (points) changes |= uint64_t(atom::GetDirty(points, DIRTYFLAGS_SELECT)) << 32;
  Evaluation& known = EvaluationOf(object);
  if (known.content && known.contentAt == changes) return known.content;
  State state;
  if (PluginOf(object)) {
    state.Add(changes);
  } else {
    state.Add(atom::GetDirty(&object, DIRTYFLAGS_CACHE));
    AddSettings(state, object, changes);
    if (points) AddGeometry(state, *points);
  }
  known.contentAt = changes;
  return known.content = state.Sum();
}

void AddTags(State& state, const BaseObject& object) {
  state.Add(atom::GetDirty(FindBranch(object, kTypeTag), DIRTYFLAGS_CHILDREN));
  for (const GeListNode* tag = object::GetFirstTag(&object); tag; tag = tag->next) {
    state.Add(atom::GetDirty(tag, DIRTYFLAGS_DATA));
    if (const auto* selection = As<SelectionTag>(tag)) state.Add(selection->selection.dirty);
  }
}

}  // namespace host
