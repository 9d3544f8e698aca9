// What objects show, as objects of their own.

#include <memory>

#include "boundary/host.h"
#include "evaluate/evaluate.h"
#include "evaluate/evaluation.h"
#include "evaluate/state.h"
#include "scene/aliastrans.h"
#include "scene/geometry.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

constexpr int32_t kAlone = COPYFLAGS_NO_HIERARCHY | COPYFLAGS_NO_ANIMATION;

BaseObject* FirstCached(const BaseObject& object) { return FirstIn(&object, kCacheBranch); }

// What is on the generator is on what it made, too.
void CopyTags(const BaseObject& from, BaseObject& to) { object::CopyTagsTo(&from, &to, 1, 0, 1); }

// The shape of the object alone: of a generator the root of what it made.
BaseObject* NewOne(const BaseObject& object) {
  const BaseObject* shape = &ShapeOf(object);
  Matrix place = object.place.Local();
  if (shape == &object)
    for (const BaseObject* made = FirstCached(object); made; made = FirstCached(*made)) {
      place = kelvar::Product(place, made->place.Local());
      shape = &ShapeOf(*made);
      if (shape != made) break;
    }
  BaseObject* copy = nullptr;
  if (shape == &object && IsGenerator(object))
    copy = object::Alloc(kTypeNull);
  else
    copy = static_cast<BaseObject*>(atom::GetClone(shape, kAlone, nullptr));
  if (!copy) return nullptr;
  copy->name = object.name;
  if (&object != shape && !As<PointObject>(&object)) CopyTags(object, *copy);
  copy->bits = object.bits;
  if (place == object.place.Local())
    copy->place = object.place;
  else
    copy->place.SetLocal(place);
  return copy;
}

// The last object of the chain of caches, whose children are part of what is shown.
const BaseObject& MadeOf(const BaseObject& object) {
  const BaseObject* made = &object;
  while (&ShapeOf(*made) == made && FirstCached(*made)) made = FirstCached(*made);
  return *made;
}

// Whether a generator above took it for its input, and is evaluated.
bool IsInput(const BaseObject& object) {
  const BaseObject* above = object.inputOf ? As<BaseObject>(object.up) : nullptr;
  while (above && above->number != object.inputOf) above = As<BaseObject>(above->up);
  return above && above->evaluation && (above->evaluation->cached || above->evaluation->isRunning);
}

struct EndObject {
  void operator()(BaseObject* object) const { DestroyNow(object); }
};

}  // namespace

BaseObject* NewShape(const BaseObject& root, bool children, size_t most, size_t* total) {
  if (most == 0) return nullptr;
  std::unique_ptr<BaseObject, EndObject> made(NewOne(root));
  if (!made) return nullptr;
  size_t count = 1;
  struct Pending {
    HostLink from;
    BaseObject* to;
  };
  std::vector<Pending> pending;
  const auto addBelow = [&](const BaseObject& from, BaseObject& to) {
    std::vector<Pending> below;
    const BaseObject& cache = MadeOf(from);
    for (const BaseObject* parent : {&cache != &from ? &cache : nullptr, &from}) {
      if (!parent || (parent == &root && !children)) continue;
      for (GeListNode* child = parent->down; child; child = child->next) {
        const auto* object = As<BaseObject>(child);
        if (!object || IsInput(*object) || IsDeformer(*object)) continue;
        child->Link(below.emplace_back(Pending{{}, &to}).from);
      }
    }
    pending.insert(pending.end(), below.rbegin(), below.rend());
  };
  addBelow(root, *made);
  while (!pending.empty()) {
    const Pending one = pending.back();
    pending.pop_back();
    const Hold hold(one.from);
    const auto* from = static_cast<const BaseObject*>(hold.Object());
    if (!from) continue;
    BaseObject* copy = ++count > most ? nullptr : NewOne(*from);
    if (!copy) return nullptr;
    Append(*copy, *one.to);
    if (hold.IsAlive()) addBelow(*from, *copy);
  }
  if (total) *total = count;
  return made.release();
}

// How it is split, too: what is made of the object tells it.
static void AddPlace(State& state, const ObjectPlace& place) {
  state.Add(place.Local());
  state.Add(place.Order());
  for (const Vector& part : {place.Frozen().position, place.Frozen().rotation, place.Frozen().scale})
    state.Add(part);
}

uint64_t StateOf(const BaseObject& root, int32_t dirtyFlags, bool below, bool selections) {
  State state;
  const auto add = [&](const BaseObject& object, bool isRoot) {
    state.Add(uint64_t(object.number));
    if (const auto* parent = As<BaseObject>(object.up); parent && !isRoot) state.Add(parent->number);
    state.Add(atom::GetDirty(&object, dirtyFlags & ~DIRTYFLAGS_MATRIX));
    if (!isRoot || dirtyFlags & DIRTYFLAGS_MATRIX) AddPlace(state, object.place);
    if (object.evaluation) state.Add(object.evaluation->version);
    if (selections) state.Add(object.SelectionChanges());
    AddTags(state, object);
  };
  add(root, true);
  if (!below) return state.Sum();
  Walk(
      const_cast<BaseObject&>(root),
      [&](GeListNode& node) {
        if (const auto* object = As<BaseObject>(&node); object && object != &root) add(*object, false);
      },
      true, false);
  return state.Sum();
}

// Objects of a copy are taken for those of their shapes, so that links to materials stay within it.
BaseDocument* Polygonize(BaseDocument& document, bool keepAnimation) {
  AliasTrans trans;
  auto* made = As<BaseDocument>(atom::GetClone(&document, keepAnimation ? 0 : COPYFLAGS_NO_ANIMATION, &trans));
  if (!made) return nullptr;
  aliastrans::Translate(&trans, 1);
  Evaluate(*made, {.animation = false});
  GeListHead* objects = FindBranch(*made, kTypeObject);
  std::vector<HostLink> roots;
  for (GeListNode* node = objects ? objects->down : nullptr; node; node = node->next)
    node->Link(roots.emplace_back());
  for (const HostLink& link : roots) {
    auto* object = static_cast<BaseObject*>(link::GetLink(link));
    if (!object) continue;
    BaseObject* shape = IsDeformer(*object) ? nullptr : NewShape(*object, true);
    if (!shape && !IsDeformer(*object)) {
      DestroyNow(made);
      return nullptr;
    }
    if (shape) Place(*shape, *objects, objects->downLast);
    DestroyNow(object);
  }
  return made;
}

}  // namespace host
