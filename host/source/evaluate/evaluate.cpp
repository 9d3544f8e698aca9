#include "evaluate/evaluate.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <deque>
#include <unordered_map>
#include <utility>

#include "boundary/host.h"
#include "evaluate/deformers.h"
#include "evaluate/evaluation.h"
#include "evaluate/instances.h"
#include "evaluate/mesh.h"
#include "evaluate/primitives.h"
#include "evaluate/state.h"
#include "scene/geometry.h"
#include "scene/kinds.h"
#include "scene/links.h"
#include "scene/tree.h"
#include "tables/tables.h"
#include "threads/thread.h"

// Valid while the generator makes its objects.
struct HierarchyHelp {
  BaseDocument* document;
};

namespace host {
namespace {

constexpr int32_t kUseGenerators = 1006, kUseDeformers = 1007;  // of a document
constexpr auto kTurn = std::chrono::milliseconds(5);
constexpr int kMostNested = 64;             // trees of instances, where those are not in their order
constexpr size_t kMostInstanced = 1 << 17;  // objects of one instance
constexpr size_t kMostOfAll = 1 << 19;      // objects of all instances of a pass

std::atomic<uint64_t> g_passes{0};
std::atomic<bool> g_haveDeformers{false};

bool IsOn(const BaseList2D* node, int32_t parameter) { return !node || NumberOf(*node, parameter, 1) != 0; }

const NodeRecord* RecordOf(const QLXAtom& atom) { return PluginOf(atom); }

// The caller's is no longer in its list; what was there goes, and that may run the code of others.
void SetBranch(BaseObject& object, int32_t branch, BaseObject* made) {
  GeListHead* head = made ? Branch(object, branch) : FindBranch(object, branch);
  if (!head) return DestroyNow(made);
  const Hold hold(*head);
  while (head->down && !head->down->isEnding) {
    DestroyNow(head->down);
    if (!hold.IsAlive()) return DestroyNow(made);
  }
  if (!made) return;
  // Until it is built anew, whatever a script does to it.
  Walk(
      *made, [](GeListNode& node) { node.isFixed = true; }, true, false);
  Append(*made, *head);
}

// Those among the children of a node, kept until they change.
const std::vector<BaseObject*>& DeformersBelow(BaseObject& object) {
  Evaluation& evaluation = EvaluationOf(object);
  const uint64_t now = uint64_t(object.dirty[4]) + 1;  // DIRTYFLAGS_CHILDREN
  if (evaluation.deformersAt == now) return evaluation.deformers;
  evaluation.deformers.clear();
  for (GeListNode* child = object.down; child; child = child->next)
    if (auto* deformer = As<BaseObject>(child); deformer && IsDeformer(*deformer))
      evaluation.deformers.push_back(deformer);
  evaluation.deformersAt = now;
  return evaluation.deformers;
}

// Of points that are going to move nobody knows where.
void DropNormals(const PointObject& shape) {
  for (VariableTag* tag; (tag = FindBlock(shape, kDataNormal)) && !tag->isEnding;) DestroyNow(tag);
}

// What the turns of one evaluation share.
struct Pass {
  const uint64_t number = ++g_passes;
  size_t instanced = 0;  // objects that instances show
  bool isWarned = false;
  InstanceOrder order;
  std::unordered_map<int64_t, uint64_t> targets;  // the states of what instances show, by the objects' numbers
};

// What acts on an object and on all below it: the deformers among its children, then those further out.
struct Deformers {
  const std::vector<BaseObject*>* own;
  Deformers* outer;
  bool isKnown = false;  // what follows
  bool haveOthersCode = false;
  uint64_t state = 0;  // of all of them that are on; 0 for none
};

struct Surroundings {
  Matrix global;
  Deformers* deformers;
};

class Evaluator {
 public:
  Evaluator(BaseDocument* document, Pass& pass) : document_(document), pass_(pass) {}

  // Between these others may change anything.
  void BeginTurn(BaseDocument* document) {
    document_ = document;
    isStale_ = isStale_ || moves_ != CountMoves() || stamps_ != CountStamps();
  }
  void EndTurn() {
    moves_ = CountMoves();
    stamps_ = CountStamps();
  }

  // Of an object and what it is made from, which may be anywhere. It may run the code of others.
  void Update(BaseObject& object) {
    Evaluation& evaluation = EvaluationOf(object);
    if (evaluation.pass == pass_.number || evaluation.isRunning) return;
    evaluation.pass = pass_.number;
    const Hold hold(object);
    evaluation.isRunning = true;
    UpdateCache(object, evaluation);
    if (!hold.IsAlive()) return;
    UpdateDeformed(object, evaluation);
    if (!hold.IsAlive()) return;
    evaluation.isRunning = false;
    for (int i = 0; i < 6; ++i) evaluation.dirty[i] = atom::GetDirty(&object, 1 << (i + 1));
  }

  void UpdateTree(BaseObject& root) {
    std::vector<HostLink> links;
    Walk(
        root,
        [&](GeListNode& node) {
          if (As<BaseObject>(&node)) node.Link(links.emplace_back());
        },
        true, false);
    for (const HostLink& link : links)
      if (auto* object = static_cast<BaseObject*>(link::GetLink(link))) Update(*object);
  }

 private:
  // Looked up once for each object while nobody else changes the scene, so that depth costs nothing.
  const Surroundings& SurroundingsOf(BaseObject& object) {
    if (std::exchange(isStale_, false)) {
      surroundings_.clear();
      deformers_.clear();
    }
    std::vector<BaseObject*> path;
    const Surroundings* known = nullptr;
    for (BaseObject* at = &object; at && !known; at = As<BaseObject>(at->up)) {
      const auto found = surroundings_.find(at);
      if (found != surroundings_.end())
        known = &found->second;
      else
        path.push_back(at);
    }
    while (!path.empty()) {
      BaseObject& at = *path.back();
      Surroundings made{known ? kelvar::Product(known->global, at.place.Local()) : GlobalMatrix(at),
                        known ? known->deformers : nullptr};
      if (const auto& own = DeformersBelow(at); !own.empty())
        made.deformers = &deformers_.emplace_back(Deformers{&own, made.deformers});
      known = &surroundings_.emplace(&at, made).first->second;
      path.pop_back();
    }
    return *known;
  }

  // Those that act on the object; null for none. Each is looked at once, however many objects it acts on.
  const Deformers* DeformersOf(BaseObject& object) {
    if (!HaveDeformers() || IsDeformer(object) || !IsOn(document_, kUseDeformers)) return nullptr;
    Deformers* const innermost = SurroundingsOf(object).deformers;
    std::vector<Deformers*> path;
    for (Deformers* at = innermost; at && !at->isKnown; at = at->outer) path.push_back(at);
    for (; !path.empty(); path.pop_back()) Know(*path.back());
    return innermost && innermost->state ? innermost : nullptr;
  }

  void Know(Deformers& deformers) {
    const Deformers* outer = deformers.outer;
    deformers.state = outer ? outer->state : 0;
    deformers.haveOthersCode = outer && outer->haveOthersCode;
    bool isFirst = true;  // of its level: what acts first depends on it
    for (BaseObject* deformer : *deformers.own) {
      if (!object::GetDeformMode(deformer)) continue;
      State state;
      state.Add(deformers.state);
      state.Add(std::exchange(isFirst, false));
      deformers.haveOthersCode |= RecordOf(*deformer) != nullptr;
      state.Add(deformer->number);
      state.Add(ContentOf(*deformer));
      state.Add(SurroundingsOf(*deformer).global);
      deformers.state = state.Sum();
    }
    deformers.isKnown = true;
  }

  void UpdateCache(BaseObject& object, Evaluation& evaluation) {
    const Hold hold(object);
    const uint64_t state = InputOf(object);
    if (!hold.IsAlive()) return;
    if (state == evaluation.cached) {
      pass_.instanced += evaluation.instanced;
      return;
    }
    evaluation.instanced = 0;
    BaseObject* made = state ? Make(object) : nullptr;
    if (!hold.IsAlive()) return DestroyNow(made);
    evaluation.cached = state;
    ++evaluation.version;
    if (made && made == FirstIn(&object, kCacheBranch)) return;  // a plug-in's, as good as new
    Replace(object, kCacheBranch, made);
  }

  // What a plug-in's generator took for its input last is seen, unless it takes it again.
  static void FreeInputs(BaseObject& generator) {
    Walk(
        generator,
        [&](GeListNode& node) {
          if (auto* input = As<BaseObject>(&node); input && input->inputOf == generator.number)
            input->inputOf = 0;
        },
        true, false);
  }

  // What the object's cache is made from; 0 when it makes nothing.
  uint64_t InputOf(BaseObject& object) {
    if (!IsGenerator(object) || !object::GetDeformMode(&object) || !IsOn(document_, kUseGenerators)) return 0;
    if (IsInstance(object)) return InputOfInstance(object);
    const NodeRecord* record = RecordOf(object);
    if (!record) return ContentOf(object);
    if (record->CheckDirty) {
      const Hold hold(object);
      isStale_ = true;
      record->CheckDirty(PluginData(object), &object, document_);
      if (!hold.IsAlive()) return 0;
    }
    State state;
    state.Add(ContentOf(object));
    // A plug-in may take what is below it for its input.
    for (GeListNode* child = object.down; child; child = child->next) {
      auto* input = As<BaseObject>(child);
      if (!input) continue;
      state.Add(StateOf(*input, DIRTYFLAGS_DATA | DIRTYFLAGS_MATRIX | DIRTYFLAGS_CACHE, true));
      state.Add(kelvar::Length(input->place.Local().off));
    }
    return state.Sum();
  }

  // Those that it shows come first, so that its target needs no more than what is no instance.
  uint64_t InputOfInstance(BaseObject& object) {
    const Hold hold(object);
    for (const HostLink& link : pass_.order.Before(object))
      if (auto* shown = static_cast<BaseObject*>(link::GetLink(link))) Update(*shown);
    BaseObject* target = hold.IsAlive() && !object.evaluation->isCircular ? TargetOf(object) : nullptr;
    if (!target || (target->evaluation && target->evaluation->isRunning)) return 0;
    const int64_t number = target->number;
    if (!pass_.targets.contains(number)) {
      // Plug-ins may have linked instances anew: the next pass knows their order.
      if (nested_ >= kMostNested) return 0;
      const Hold targetHold(*target);
      ++nested_;
      UpdateTree(*target);
      --nested_;
      if (!targetHold.IsAlive()) return 0;
      pass_.targets[number] = StateOf(*target, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE, true, true);
    }
    State state;
    state.Add(number);
    state.Add(pass_.targets[number]);
    return state.Sum();
  }

  BaseObject* Make(BaseObject& object) {
    if (const NodeRecord* record = RecordOf(object)) return MakeByPlugin(object, *record);
    try {
      if (IsInstance(object)) return MakeInstance(object);
      if (const auto mesh = MakePrimitive(object)) return NewObject(*mesh);
      if (const auto shape = MakeSplinePrimitive(object)) return NewObject(*shape, object.data);
    } catch (const std::bad_alloc&) {
      Warn(fmt::format("there is not enough memory for the geometry of '{}'", std::string_view(object.name)));
    }
    return nullptr;
  }

  BaseObject* MakeInstance(BaseObject& object) {
    BaseObject* target = TargetOf(object);
    const size_t left = kMostOfAll - std::min(kMostOfAll, pass_.instanced);
    size_t count = 0;
    BaseObject* made = target ? NewShape(*target, true, std::min(left, kMostInstanced), &count) : nullptr;
    if (made) {
      made->place = ObjectPlace();
      pass_.instanced += EvaluationOf(object).instanced = count;
    } else if (target && !std::exchange(pass_.isWarned, true)) {
      Warn(fmt::format("the instance '{}' shows nothing: one shows at most {} objects, and all together {}",
                       std::string_view(object.name), kMostInstanced, kMostOfAll));
    }
    return made;
  }

  // What it answers has to be new, or the cache that it has.
  BaseObject* MakeByPlugin(BaseObject& object, const NodeRecord& record) {
    const Hold hold(object);
    FreeInputs(object);
    isStale_ = true;
    BaseObject* made = nullptr;
    HierarchyHelp help{document_};
    if (record.GetVirtualObjects) made = record.GetVirtualObjects(PluginData(object), &object, &help);
    if (!made && hold.IsAlive() && record.GetContour)
      made = record.GetContour(PluginData(object), &object, document_, 1, CurrentThread());
    if (!made || !hold.IsAlive() || made == FirstIn(&object, kCacheBranch)) return made;
    const bool isLoose = !made->up && !made->list && !made->pred && !made->next && !made->isFixed;
    if (isLoose && As<BaseObject>(made)) return made;
    Warn(fmt::format("'{}' made an object that stands in a scene: it is left there",
                     std::string_view(object.name)));
    return nullptr;
  }

  void UpdateDeformed(BaseObject& object, Evaluation& evaluation) {
    const auto* shape = As<PointObject>(&object);
    BaseObject* cache = shape ? nullptr : FirstIn(&object, kCacheBranch);
    const Deformers* deformers = shape || cache ? DeformersOf(object) : nullptr;
    if (!deformers && !evaluation.deformed) return;
    const uint64_t knownAt = evaluation.contentAt;
    State state;
    if (deformers) {
      state.Add(shape ? ContentOf(object, shape) : evaluation.cached);
      if (shape) AddTags(state, object);
      // The code of a plug-in may look at anything of the object.
      if (deformers->haveOthersCode) state.Add(atom::GetDirty(&object, DIRTYFLAGS_DATA));
      state.Add(SurroundingsOf(object).global);
      state.Add(deformers->state);
    }
    const uint64_t wanted = deformers ? state.Sum() : 0;
    if (wanted == evaluation.deformed) {
      auto* copy = shape ? FirstIn(&object, kDeformBranch) : nullptr;
      if (!copy) return;
      copy->place = object.place;  // the parent may have moved the other way
      if (evaluation.contentAt == knownAt) return;
      copy->name = object.name;
      copy->data = object.data;
      return;
    }
    evaluation.deformed = wanted;
    ++evaluation.version;
    std::vector<HostLink> shapes;
    Walk(
        cache ? *cache : object,
        [&](GeListNode& node) {
          if (As<PointObject>(&node)) node.Link(shapes.emplace_back());
        },
        cache != nullptr, false);
    std::vector<HostLink> acting;  // in their order
    for (; deformers; deformers = deformers->outer)
      for (BaseObject* deformer : *deformers->own)
        if (object::GetDeformMode(deformer)) deformer->Link(acting.emplace_back());
    for (const HostLink& link : shapes) DeformShape(link, object, acting);
  }

  // Of the object itself, or of something in its cache.
  Matrix GlobalOf(const BaseObject& shape, BaseObject& object) {
    Matrix matrix = kIdentityMatrix;
    for (const BaseObject* at = &shape; at && at != &object; at = As<BaseObject>(at->up))
      matrix = kelvar::Product(at->place.Local(), matrix);
    return kelvar::Product(SurroundingsOf(object).global, matrix);
  }

  void DeformShape(const HostLink& link, BaseObject& object, const std::vector<HostLink>& deformers) {
    const Hold hold(link), objectHold(object);
    auto* shape = static_cast<PointObject*>(hold.Object());
    if (!shape) return;
    if (deformers.empty()) return Replace(*shape, kDeformBranch, nullptr);
    auto* copy = static_cast<PointObject*>(
        atom::GetClone(shape, COPYFLAGS_NO_HIERARCHY | COPYFLAGS_NO_ANIMATION, nullptr));
    if (!copy || !hold.IsAlive() || !objectHold.IsAlive()) return DestroyNow(copy);
    const Matrix global = GlobalOf(*shape, object);
    for (const HostLink& one : deformers) {
      const Hold acting(one);
      auto* deformer = static_cast<BaseObject*>(acting.Object());
      if (!deformer) continue;
      const Matrix its = SurroundingsOf(*deformer).global;
      const NodeRecord* record = RecordOf(*deformer);
      isStale_ = isStale_ || record;
      if (!record) Deform(*deformer, its, global, *copy);
      if (!record || !record->ModifyObject) continue;
      DropNormals(*copy);
      record->ModifyObject(PluginData(*deformer), deformer, document_, copy, &global, &its, 1, 0,
                           CurrentThread());
    }
    if (!hold.IsAlive()) return DestroyNow(copy);
    Replace(*shape, kDeformBranch, copy);
  }

  // What goes may have belonged to plug-ins.
  void Replace(BaseObject& object, int32_t branch, BaseObject* made) {
    isStale_ = isStale_ || HavePluginNodes();
    SetBranch(object, branch, made);
  }

  BaseDocument* document_;
  Pass& pass_;
  int nested_ = 0;
  uint64_t moves_ = 0, stamps_ = 0;  // at the end of the latest turn
  bool isStale_ = false;             // the code of others has run
  std::unordered_map<const BaseObject*, Surroundings> surroundings_;
  std::deque<Deformers> deformers_;
};

std::vector<HostLink> ObjectsOf(const HostLink& link) {
  const SceneTurn turn;
  std::vector<HostLink> links;
  auto* document = static_cast<BaseDocument*>(link::GetLink(link));
  GeListHead* objects = document ? FindBranch(*document, kTypeObject) : nullptr;
  if (!objects) return links;
  Walk(
      *objects,
      [&](GeListNode& node) {
        if (As<BaseObject>(&node)) node.Link(links.emplace_back());
      },
      true, false);
  return links;
}

}  // namespace

bool IsGenerator(const BaseObject& object) {
  if (const NodeRecord* record = RecordOf(object)) return record->GetVirtualObjects || record->GetContour;
  return IsInstance(object) || IsPrimitive(object.type.id) || IsSplinePrimitive(object.type.id);
}

bool IsDeformer(const BaseObject& object) {
  if (const NodeRecord* record = RecordOf(object)) return record->ModifyObject != nullptr;
  return IsBuiltInDeformer(object.type.id);
}

bool HaveDeformers() { return g_haveDeformers.load(std::memory_order_relaxed); }

void MeetObject(const NodeType& type) {
  if (!HaveDeformers() && (type.record ? type.record->ModifyObject != nullptr : IsBuiltInDeformer(type.id)))
    g_haveDeformers = true;
}

bool Evaluate(BaseDocument& document, const Passes& passes, const std::function<bool()>& isStopped) {
  HostLink link{};
  document.Link(link);
  if (passes.expressions && !Execute(link, isStopped)) return false;
  if (!passes.caches) return true;
  const std::vector<HostLink> objects = ObjectsOf(link);
  Pass pass;
  Evaluator evaluator(nullptr, pass);
  for (size_t next = 0; next < objects.size();) {
    if (isStopped && isStopped()) return false;
    const SceneTurn turn;
    evaluator.BeginTurn(static_cast<BaseDocument*>(link::GetLink(link)));
    const auto end = std::chrono::steady_clock::now() + kTurn;
    do {
      if (auto* object = static_cast<BaseObject*>(link::GetLink(objects[next++]))) evaluator.Update(*object);
    } while (next < objects.size() && (next % 16 != 0 || std::chrono::steady_clock::now() < end));
    evaluator.EndTurn();
  }
  return true;
}

void EvaluateTree(BaseObject& root) {
  Pass pass;
  Evaluator(listnode::GetDocument(&root), pass).UpdateTree(root);
}

}  // namespace host
