#include "boundary/host.h"
#include "kelvar.framework/source/tables/t_messages.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

// Tells those who asked for it that the message came.
void Notify(QLXAtom& atom, const Hold& hold, int32_t id) {
  if (!atom.extras || id == HOST_MSG_EVENT_NOTIFICATION || IsHead(atom)) return;
  std::vector<Notification> told;
  for (const Notification& one : atom.extras->notifications)
    if (one.event == id) told.push_back(one);
  for (const Notification& one : told) {
    if (!hold.IsAlive()) return;
    const Hold receiver(one.receiver);
    if (!receiver.Object()) continue;
    HostEventNotification event{static_cast<BaseList2D*>(&atom), id, one.flags, &one.data};
    static_cast<QLXAtom*>(receiver.Object())->Answer(HOST_MSG_EVENT_NOTIFICATION, &event);
  }
}

bool Send(QLXAtom& atom, int32_t id, void* data) {
  if (!atom.AsksOthers()) return atom.Answer(id, data);
  const Hold hold(atom);
  const bool isAnswered = atom.Answer(id, data);
  if (hold.IsAlive()) Notify(atom, hold, id);
  return isAnswered;
}

}  // namespace
}  // namespace host

bool QLXAtom::Answer(int32_t id, void* data) {
  const bool isChange = id == HOST_MSG_CHANGE;
  if (isChange) host::Touch(*this, DIRTYFLAGS_DATA);
  const NodeRecord* plugin = host::PluginOf(*this);
  if (!plugin) return isChange;
  return !plugin->Message || plugin->Message(host::PluginData(*this), &host::NodeOf(*this), id, data);
}

bool QLXAtom::AsksOthers() const { return isPlugin || (extras && !extras->notifications.empty()); }

bool QLXAtom::BelongsToDocuments() const {
  const NodeRecord* plugin = host::PluginOf(*this);
  HostBool isRelated = 1;
  if (!plugin || !plugin->IsDocumentRelated) return true;
  const host::Hold hold(const_cast<QLXAtom&>(*this));
  return !plugin->IsDocumentRelated(host::PluginData(*this), &host::NodeOf(*this), &isRelated) || isRelated;
}

namespace host::atom {

HostBool Message(QLXAtom* self, int32_t type, void* data) { return self && Send(*self, type, data); }

// What runs no code of others is told while the scene is walked; the rest behind that, because it may change
// the scene.
HostBool MultiMessage(QLXAtom* self, int32_t flags, int32_t type, void* data) {
  if (!self) return 0;
  bool isAnswered = false;
  std::vector<HostLink> others;
  const auto tell = [&](GeListNode& node) {
    if (node.AsksOthers()) {
      node.Link(others.emplace_back());
    } else if (!IsHead(node) || &node == self) {
      isAnswered |= node.Answer(type, data);
    }
  };
  Walk(NodeOf(*self), tell, flags & MULTIMSG_DOWN, flags & MULTIMSG_BRANCHES);
  if (flags & MULTIMSG_UP)
    for (GeListNode* up = NodeOf(*self).up; up; up = up->up) tell(*up);
  for (const HostLink& link : others) {
    const Hold hold(link);
    if (hold.Object()) isAnswered |= Send(*static_cast<QLXAtom*>(hold.Object()), type, data);
  }
  return isAnswered;
}

}  // namespace host::atom
