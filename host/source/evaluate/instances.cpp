#include "evaluate/instances.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include "boundary/host.h"
#include "evaluate/evaluation.h"
#include "scene/kinds.h"
#include "scene/tree.h"
#include "tables/tables.h"

namespace host {
namespace {

constexpr int32_t kTypeInstance = 5126, kInstanceLink = 1000;

// An instance, which leads to its target, or a target, which leads to all instances in its tree.
struct Step {
  Step(BaseObject& ofObject, bool ofInstance) : object(&ofObject), isInstance(ofInstance) {
    if (isInstance) {
      if (BaseObject* target = TargetOf(ofObject)) next.push_back(target);
      return;
    }
    Walk(
        ofObject,
        [&](GeListNode& node) {
          auto* one = As<BaseObject>(&node);
          if (one && IsInstance(*one) && object::GetDeformMode(one)) next.push_back(one);
        },
        true, false);
  }
  static int64_t KeyOf(const BaseObject& object, bool isInstance) { return object.number * 2 + isInstance; }

  BaseObject* object;
  bool isInstance;
  std::vector<BaseObject*> next;
  size_t taken = 0;
  size_t lowest = 0;  // the first step, of those that are open, that it leads back to
  bool isOpen = true;
};

// Marks the instances; what there is to say where a circle is new, and nothing where it stays.
std::string NoteCircle(const std::vector<BaseObject*>& instances, bool isCircle) {
  bool isNew = false;
  for (BaseObject* instance : instances)
    isNew |= std::exchange(EvaluationOf(*instance).isCircular, isCircle) != isCircle;
  if (!isNew || !isCircle) return {};
  const std::string_view name = instances.front()->name;
  if (instances.size() == 1) return fmt::format("the instance '{}' shows nothing: it would show itself", name);
  return fmt::format("the instance '{}' and {} more show nothing: they would show themselves", name,
                     instances.size() - 1);
}

}  // namespace

bool IsInstance(const BaseObject& object) { return object.type.id == kTypeInstance; }

BaseObject* TargetOf(const BaseObject& instance) {
  const HostGeData* link = container::FindData(&instance.data, kInstanceLink);
  if (!link || link->type != HOST_DATA_LINK) return nullptr;
  auto* target = As<BaseObject>(static_cast<QLXAtom*>(link::GetLink(link->value.link)));
  if (!target || target == &instance) return target;
  const BaseDocument *its = DocumentAround(target), *own = DocumentAround(&instance);
  if (its && own && its != own) return nullptr;  // as scripts find it that read the link
  const bool holds = IsInside(instance, *target) && !object::SearchHierarchy(target, &instance);
  return holds || IsInside(*target, instance) ? nullptr : target;
}

// R. Tarjan, "Depth-first search and linear graph algorithms" (1972): those that lead to each other, and they
// come out behind all that they lead to.
std::vector<HostLink> InstanceOrder::Before(BaseObject& root) {
  // Most stand for what others stand for, too.
  const int64_t key = Step::KeyOf(root, true);
  if (known_.contains(key)) return {};
  const BaseObject* target = TargetOf(root);
  if (!target || known_.contains(Step::KeyOf(*target, false))) {
    EvaluationOf(root).isCircular = false;
    known_.insert(key);
    return {};
  }
  std::vector<HostLink> order;
  std::vector<std::string> lines;
  std::vector<Step> steps;
  std::vector<size_t> path, open;
  std::unordered_map<int64_t, size_t> places;
  const auto enter = [&](BaseObject& object, bool isInstance) {
    const int64_t key = Step::KeyOf(object, isInstance);
    if (known_.contains(key)) return;
    const auto [place, isNew] = places.emplace(key, steps.size());
    if (!isNew) {
      size_t& lowest = steps[path.back()].lowest;
      if (steps[place->second].isOpen) lowest = std::min(lowest, place->second);
      return;
    }
    path.push_back(steps.size());
    open.push_back(steps.size());
    steps.emplace_back(object, isInstance).lowest = place->second;
  };
  for (enter(root, true); !path.empty();) {
    const size_t at = path.back();
    if (Step& step = steps[at]; step.taken < step.next.size()) {
      enter(*step.next[step.taken++], !step.isInstance);
      continue;
    }
    path.pop_back();
    if (!path.empty()) steps[path.back()].lowest = std::min(steps[path.back()].lowest, steps[at].lowest);
    if (steps[at].lowest != at) continue;
    std::vector<BaseObject*> instances;
    const bool isCircle = open.back() != at;
    for (bool isLast = false; !isLast; open.pop_back()) {
      Step& step = steps[open.back()];
      isLast = open.back() == at;
      step.isOpen = false;
      known_.insert(Step::KeyOf(*step.object, step.isInstance));
      if (!step.isInstance) continue;
      instances.push_back(step.object);
      step.object->Link(order.emplace_back());
    }
    if (std::string line = NoteCircle(instances, isCircle); !line.empty()) lines.push_back(std::move(line));
  }
  for (const std::string& line : lines) Warn(line);
  return order;
}

}  // namespace host
