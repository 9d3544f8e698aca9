#include <algorithm>

#include "boundary/host.h"
#include "kelvar.framework/source/tables/t_messages.h"
#include "scene/kinds.h"
#include "scene/tree.h"
#include "tables/values.h"

namespace host {

void MapLinksOf(BaseList2D& element, const std::function<HostLink(HostLink)>& map) {
  MapLinks(element.data, map);
  if (auto* document = As<BaseDocument>(&element))
    for (auto& [id, container] : document->settings) MapLinks(container, map);
  if (!element.extras) return;
  HostLink& layer = element.extras->layer;
  const HostLink mapped = map(layer);
  auto* object = static_cast<QLXAtom*>(link::GetLink(mapped));
  if (!object || As<LayerObject>(object)) layer = mapped;
}

}  // namespace host

namespace host::baselist {
namespace {

constexpr int32_t kBitActive = 1 << 1;

void ChangeBits(BaseList2D* self, int32_t bits) {
  if (!self || self->bits == bits) return;
  if ((self->bits ^ bits) & kBitActive) Touch(*self, DIRTYFLAGS_SELECT);
  self->bits = bits;
}

BaseList2D* FirstOf(const BaseList2D* self, int32_t branch) {
  const GeListHead* head = self ? FindBranch(*self, branch) : nullptr;
  return head ? static_cast<BaseList2D*>(head->down) : nullptr;
}

std::vector<int32_t> IdsOf(const HostDescID* id) {
  std::vector<int32_t> ids;
  for (int32_t i = 0; id && i < id->depth; ++i) ids.push_back(id->level[i].id);
  return ids;
}

Notification* FindNotification(const BaseList2D* self, const BaseList2D* node, int32_t event) {
  if (!self || !node || !node->extras) return nullptr;
  for (Notification& one : node->extras->notifications)
    if (one.event == event && link::GetLink(one.receiver) == self) return &one;
  return nullptr;
}

}  // namespace

BaseList2D* Alloc(int32_t id) { return MakeElement(id); }

void Free(BaseList2D* self) {
  if (self && !IsKept(*self)) DestroyNow(self);
}

HostString GetName(const BaseList2D* self) noexcept { return self ? Share(&self->name.Word()) : HostString{}; }

void SetName(BaseList2D* self, const HostString* name) {
  if (!self || std::string_view(self->name) == View(name)) return;
  self->name = Text(name);
  Touch(*self, DIRTYFLAGS_DATA);
}

BaseContainer* GetDataInstance(BaseList2D* self) { return self ? &self->data : nullptr; }

BaseContainer* GetData(const BaseList2D* self) { return self ? new BaseContainer(self->data) : nullptr; }

void SetData(BaseList2D* self, const BaseContainer* data, HostBool add) {
  if (!self || !data) return;
  if (add) {
    container::MergeContainer(&self->data, data);
  } else {
    container::CopyTo(data, &self->data, 0);
  }
}

void SetBit(BaseList2D* self, int32_t mask) {
  if (self) ChangeBits(self, self->bits | mask);
}

HostBool GetBit(const BaseList2D* self, int32_t mask) { return self && (self->bits & mask) == mask; }

void DelBit(BaseList2D* self, int32_t mask) {
  if (self) ChangeBits(self, self->bits & ~mask);
}

void ToggleBit(BaseList2D* self, int32_t mask) {
  if (self) ChangeBits(self, self->bits ^ mask);
}

int32_t GetAllBits(const BaseList2D* self) { return self ? self->bits : 0; }

void SetAllBits(BaseList2D* self, int32_t mask) { ChangeBits(self, mask); }

HostString GetBubbleHelp(const BaseList2D* self) {
  if (!self) return {};
  const NodeType& type = self->type;
  if (const NodeRecord* plugin = PluginOf(*self); plugin && plugin->GetBubbleHelp) {
    const Hold hold(const_cast<BaseList2D&>(*self));
    HostString text{};
    if (plugin->GetBubbleHelp(PluginData(*self), self, &text)) return text;
  }
  return type.help.empty() ? MakeString(type.typeName.empty() ? type.name : type.typeName)
                           : MakeString(type.help);
}

HostString GetTypeName(const BaseList2D* self) {
  if (!self) return {};
  return MakeString(self->type.typeName.empty() ? self->type.name : self->type.typeName);
}

BaseList2D* GetMain(const BaseList2D* self) {
  const GeListHead* head = self ? HeadOf(*self) : nullptr;
  return head ? As<BaseList2D>(OwnerOf(*head)) : nullptr;
}

BaseList2D* GetFirstShader(const BaseList2D* self) { return FirstOf(self, kTypeShader); }

HostBool InsertShader(BaseList2D* self, BaseList2D* shader, BaseList2D* pred) {
  GeListHead* head = self && shader ? Branch(*self, kTypeShader) : nullptr;
  if (!head || pred == shader || (pred && ParentOf(*pred) != head)) return 0;
  return Place(*shader, *head, pred);
}

BaseList2D* GetFirstCTrack(const BaseList2D* self) { return FirstOf(self, kTypeTrack); }

GeListHead* GetCTrackRoot(BaseList2D* self) { return self ? Branch(*self, kTypeTrack) : nullptr; }

GeListHead* GetNLARoot(BaseList2D* self) { return self ? Branch(*self, kTypeNLA) : nullptr; }

// No type has an icon yet, nor an editor.

void GetIcon(const BaseList2D*, HostIcon* icon) {
  if (icon) *icon = {};
}

HostString GetIconEx(const BaseList2D* self) { return self ? MakeString(self->type.icon) : HostString{}; }

HostBool Edit(BaseList2D*) { return 0; }

int32_t GetInfo(const BaseList2D* self) { return self ? self->type.info : 0; }

HostBool AddEventNotification(BaseList2D* self, BaseList2D* node, int32_t event, int32_t flags,
                              const BaseContainer* data) {
  if (!self || !node || event == HOST_MSG_EVENT_NOTIFICATION) return 0;
  Notification made{{}, event, flags, data ? *data : BaseContainer()};
  self->Link(made.receiver);
  auto& all = node->Extra().notifications;
  std::erase_if(all, [&](const Notification& one) {
    return !link::GetLink(one.receiver) || (one.event == event && link::GetLink(one.receiver) == self);
  });
  all.push_back(std::move(made));
  return 1;
}

HostBool RemoveEventNotification(BaseList2D* self, BaseDocument*, BaseList2D* node, int32_t event) {
  Notification* found = FindNotification(self, node, event);
  if (!found) return 0;
  auto& all = node->extras->notifications;
  all.erase(all.begin() + (found - all.data()));
  return 1;
}

HostBool FindEventNotification(const BaseList2D* self, BaseDocument*, BaseList2D* node, int32_t event) {
  return FindNotification(self, node, event) != nullptr;
}

HostBool FindKeyframeSelection(const BaseList2D* self, const HostDescID* id) {
  return self && self->extras && self->extras->keyframes.contains(IdsOf(id));
}

HostBool SetKeyframeSelection(BaseList2D* self, const HostDescID* id, HostBool selection) {
  std::vector<int32_t> ids = IdsOf(id);
  if (!self) return 0;
  // Also of what is no parameter any longer.
  if (!selection && self->extras && self->extras->keyframes.erase(ids)) return 1;
  const Hold hold(*self);
  HostGeData value{};
  const bool isParameter = atom::GetParameter(self, id, &value, 0);
  gedata::Destroy(&value);
  if (!isParameter || !hold.IsAlive()) return 0;
  if (selection) self->Extra().keyframes.insert(std::move(ids));
  return 1;
}

HostBool KeyframeSelectionContent(const BaseList2D* self) {
  return self && self->extras && !self->extras->keyframes.empty();
}

void ClearKeyframeSelection(BaseList2D* self) {
  if (self && self->extras) self->extras->keyframes.clear();
}

HostBool TransferGoal(BaseList2D* self, BaseList2D* dst, HostBool /*undolink*/) {
  BaseDocument* document = dst ? listnode::GetDocument(self) : nullptr;
  if (!document) return 0;
  const BaseDocument* other = listnode::GetDocument(dst);
  if (other && other != document) return 0;  // nothing of this document would find it
  if (!self->IsLinked() || self == dst) return 1;
  HostLink to{};
  dst->Link(to);
  const auto map = [&](HostLink link) { return link::GetLink(link) == self ? to : link; };
  Walk(*document, [&](GeListNode& node) {
    if (!IsHead(node)) MapLinksOf(static_cast<BaseList2D&>(node), map);
  });
  return 1;
}

}  // namespace host::baselist
