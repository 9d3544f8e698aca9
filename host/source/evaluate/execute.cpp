// Expressions: the code of plug-ins that runs ahead of the caches.

#include <algorithm>

#include "boundary/host.h"
#include "evaluate/evaluate.h"
#include "scene/kinds.h"
#include "scene/tree.h"
#include "threads/thread.h"

// Who takes part in the execution, and when.
struct PriorityList {
  struct Entry {
    HostLink node;
    int32_t priority, flags;
  };
  std::vector<Entry> entries;
};

namespace host {

bool Execute(const HostLink& link, const std::function<bool()>& isStopped) {
  PriorityList list;
  {
    const SceneTurn turn;
    auto* document = static_cast<BaseDocument*>(link::GetLink(link));
    if (!document || !HavePluginNodes()) return true;
    std::vector<HostLink> nodes;
    Walk(*document, [&](GeListNode& node) {
      const NodeRecord* record = PluginOf(node);
      if (record && record->Execute) node.Link(nodes.emplace_back());
    });
    for (const HostLink& one : nodes) {
      const Hold hold(one);
      auto* node = static_cast<GeListNode*>(hold.Object());
      const NodeRecord* record = node ? PluginOf(*node) : nullptr;
      if (!record) continue;
      if (!record->AddToExecution || !record->AddToExecution(PluginData(*node), node, &list))
        list.entries.push_back({one, 0, 0});
    }
  }
  std::stable_sort(list.entries.begin(), list.entries.end(),
                   [](const auto& a, const auto& b) { return a.priority < b.priority; });
  for (const auto& entry : list.entries) {
    if (isStopped && isStopped()) return false;
    const SceneTurn turn;
    const Hold hold(entry.node);
    auto* node = static_cast<GeListNode*>(hold.Object());
    const NodeRecord* record = node ? PluginOf(*node) : nullptr;
    auto* document = static_cast<BaseDocument*>(link::GetLink(link));
    if (record && document && record->Execute)
      record->Execute(PluginData(*node), node, document, CurrentThread(), entry.priority, entry.flags);
  }
  return true;
}

}  // namespace host

namespace host::prioritylist {

HostBool Add(PriorityList* self, GeListNode* node, int32_t priority, int32_t flags) {
  if (!self || !node) return 0;
  node->Link(self->entries.emplace_back(PriorityList::Entry{{}, priority, flags}).node);
  return 1;
}

}  // namespace host::prioritylist
