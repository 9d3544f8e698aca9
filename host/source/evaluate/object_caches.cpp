// The calls of objects that are about their evaluation.

#include <algorithm>

#include "boundary/host.h"
#include "evaluate/evaluate.h"
#include "evaluate/evaluation.h"
#include "scene/geometry.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

constexpr int32_t kAllOfShape = DIRTYFLAGS_DATA | DIRTYFLAGS_MATRIX | DIRTYFLAGS_CACHE;

// A spline, or the first that is found in what a generator made.
SplineObject* FindSpline(const BaseObject* object) {
  for (int depth = 0; object && depth < 64; ++depth) {
    if (const auto* spline = As<SplineObject>(&ShapeOf(*object))) return const_cast<SplineObject*>(spline);
    object = FirstIn(object, kCacheBranch);
  }
  return nullptr;
}

// One level of a group of clones.
BaseObject* CloneOf(const BaseObject& op, int32_t flags, AliasTrans* trans) {
  if (flags & HIERARCHYCLONEFLAGS_ASIS) return As<BaseObject>(atom::GetClone(&op, 0, trans));
  if (!(flags & HIERARCHYCLONEFLAGS_ASSPLINE)) return NewShape(op, true);
  const SplineObject* spline = FindSpline(&op);
  return spline ? As<BaseObject>(atom::GetClone(spline, COPYFLAGS_NO_HIERARCHY, trans)) : nullptr;
}

// 0 for what was never asked for, in that form.
uint64_t& StateOfClone(BaseObject& generator, BaseObject& op, int32_t flags, int32_t dirtyFlags) {
  flags &= HIERARCHYCLONEFLAGS_ASIS | HIERARCHYCLONEFLAGS_ASPOLY | HIERARCHYCLONEFLAGS_ASLINE |
           HIERARCHYCLONEFLAGS_ASSPLINE;
  dirtyFlags &= 0x7e;  // DIRTYFLAGS
  auto& clones = EvaluationOf(generator).clones;
  HostLink link{};
  op.Link(link);
  for (auto& known : clones)
    if (known.object.slot == link.slot && known.object.generation == link.generation && known.flags == flags &&
        known.dirtyFlags == dirtyFlags)
      return known.state;
  constexpr size_t kMany = 64;
  if (clones.size() >= kMany) std::erase_if(clones, [](const auto& one) { return !link::GetLink(one.object); });
  return clones.emplace_back(Evaluation::Cloned{link, flags, dirtyFlags, 0}).state;
}

// Only of what frees it again when it is evaluated anew.
void UseAsInput(BaseObject& op, const BaseObject& generator) {
  const bool isPlugin = PluginOf(generator) && IsGenerator(generator);
  if (isPlugin && &op != &generator && IsInside(op, generator)) op.inputOf = generator.number;
}

}  // namespace
}  // namespace host

namespace host::object {

BaseObject* GetCache(const BaseObject* self, HierarchyHelp*) { return FirstIn(self, kCacheBranch); }

BaseObject* GetDeformCache(const BaseObject* self) { return FirstIn(self, kDeformBranch); }

BaseObject* GetCacheParent(const BaseObject* self) {
  const GeListHead* head = self ? HeadOf(*self) : nullptr;
  const bool isCache = head && (head->branch == kCacheBranch || head->branch == kDeformBranch);
  return isCache ? As<BaseObject>(head->owner) : nullptr;
}

HostBool CheckCache(BaseObject* self, HierarchyHelp*) {
  return GetCache(self, nullptr) && !IsDirty(self, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE | DIRTYFLAGS_CHILDREN);
}

HostBool IsDirty(BaseObject* self, int32_t flags) {
  if (!self) return 0;
  if (!self->evaluation || self->evaluation->pass == 0) return 1;
  for (int i = 0; i < 6; ++i) {
    const int32_t flag = 1 << (i + 1);
    if (flags & flag && atom::GetDirty(self, flag) != self->evaluation->dirty[i]) return 1;
  }
  return 0;
}

void Touch(BaseObject* self) {
  if (!self) return;
  const Hold hold(*self);
  host::Touch(*self, DIRTYFLAGS_CACHE);
  if (self->evaluation) self->evaluation->cached = self->evaluation->deformed = 0;
  for (const int32_t branch : {kDeformBranch, kCacheBranch})
    if (hold.IsAlive()) DestroyNow(FirstIn(self, branch));
}

SplineObject* GetRealSpline(const BaseObject* self) { return FindSpline(self); }

// The clone shows `op` as it is now, whoever was asked first.
BaseObject* GetHierarchyClone(BaseObject* self, HierarchyHelp*, BaseObject* op, int32_t flags, HostBool* dirty,
                              AliasTrans* trans, int32_t dirtyflags) {
  if (!self || !op || self == op) return nullptr;
  const Hold hold(*self), opHold(*op);
  UseAsInput(*op, *self);
  EvaluateTree(*op);
  if (!hold.IsAlive() || !opHold.IsAlive()) return nullptr;
  const uint64_t state = StateOf(*op, dirtyflags, true);
  uint64_t& known = StateOfClone(*self, *op, flags, dirtyflags);
  const bool isWanted = known != state || (dirty && *dirty);
  known = state;
  if (dirty) *dirty = isWanted;
  return isWanted || !dirty ? CloneOf(*op, flags, trans) : nullptr;
}

BaseObject* GetAndCheckHierarchyClone(BaseObject* self, HierarchyHelp* hh, BaseObject* op, int32_t flags,
                                      HostBool* dirty, HostBool allchildren, AliasTrans* trans) {
  if (!self || !op || self == op) return nullptr;
  const Hold hold(*self);
  std::vector<HostLink> inputs;
  for (GeListNode* node = op; node; node = allchildren ? node->next : nullptr) {
    auto* input = As<BaseObject>(node);
    if (!input || IsDeformer(*input)) continue;
    input->Link(inputs.emplace_back());
  }
  NewDependenceList(self);
  for (const HostLink& link : inputs) {
    auto* input = static_cast<BaseObject*>(link::GetLink(link));
    if (input && hold.IsAlive()) AddDependence(self, hh, input, kAllOfShape);
  }
  if (!hold.IsAlive()) return nullptr;
  const bool isSame = CompareDependenceList(self) && !IsDirty(self, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE);
  BaseObject* cache = GetCache(self, hh);
  const bool isWanted = !isSame || !cache || (dirty && *dirty);
  if (dirty) *dirty = isWanted;
  if (!isWanted) return cache;
  BaseObject* group = nullptr;
  for (const HostLink& link : inputs) {
    auto* input = static_cast<BaseObject*>(link::GetLink(link));
    BaseObject* clone = input ? CloneOf(*input, flags, trans) : nullptr;
    if (!clone) continue;
    if (inputs.size() == 1) return clone;
    if (!group) group = Alloc(kTypeNull);
    if (!group) {
      DestroyNow(clone);
      return nullptr;
    }
    Append(*clone, *group);
  }
  return group;
}

void NewDependenceList(BaseObject* self) {
  if (self) EvaluationOf(*self).nextDependences.clear();
}

void AddDependence(BaseObject* self, HierarchyHelp*, BaseObject* op, int32_t dirtyflags) {
  if (!self || !op) return;
  const Hold hold(*self), opHold(*op);
  UseAsInput(*op, *self);
  EvaluateTree(*op);
  if (!hold.IsAlive() || !opHold.IsAlive()) return;
  EvaluationOf(*self).nextDependences.push_back({op->number, dirtyflags, StateOf(*op, dirtyflags, true)});
}

HostBool CompareDependenceList(BaseObject* self) {
  if (!self) return 0;
  Evaluation& evaluation = EvaluationOf(*self);
  const bool isSame = !evaluation.isTouched && evaluation.dependences == evaluation.nextDependences;
  evaluation.dependences = evaluation.nextDependences;
  evaluation.isTouched = false;
  return isSame;
}

void TouchDependenceList(BaseObject* self) {
  if (self) EvaluationOf(*self).isTouched = true;
}

}  // namespace host::object
