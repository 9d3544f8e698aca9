#include <algorithm>

#include "boundary/host.h"
#include "files/hyperfile.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

// Below 0, 0 or above 0. The types of the levels are not looked at.
int Compare(const CTrack& track, const HostDescID& id) {
  const auto& levels = track.parameter;
  for (size_t i = 0; i < levels.size() && i < size_t(id.depth); ++i)
    if (levels[i].id != id.level[i].id) return levels[i].id < id.level[i].id ? -1 : 1;
  return int(levels.size()) - id.depth;
}

HostDescID IdOf(const CTrack& track) { return {track.parameter.data(), int32_t(track.parameter.size()), 0}; }

}  // namespace
}  // namespace host

bool CTrack::WriteOwn(HyperFile& file) const { return file.WriteArray(parameter); }
bool CTrack::ReadOwn(HyperFile& file) { return file.ReadArray(parameter); }

namespace host::track {

CTrack* Alloc(BaseList2D* node, const HostDescID* id) {
  if (!node || !id || id->depth <= 0) return nullptr;
  auto* made = As<CTrack>(NewNode(*FindType(kTypeTrack)));
  if (made) made->parameter.assign(id->level, id->level + id->depth);
  return made;
}

HostBool GetDescriptionID(const CTrack* self, HostDescID* id) {
  self = As<CTrack>(self);
  if (!self || !id) return 0;
  *id = IdOf(*self);
  return 1;
}

}  // namespace host::track

namespace host::baselist {

BaseList2D* FindCTrack(const BaseList2D* self, const HostDescID* id) {
  if (!id) return nullptr;
  for (GeListNode* node = GetFirstCTrack(self); node; node = node->next)
    if (auto* track = As<CTrack>(node); track && Compare(*track, *id) == 0) return track;
  return nullptr;
}

HostBool InsertTrackSorted(BaseList2D* self, BaseList2D* track) {
  const auto* own = As<CTrack>(track);
  GeListHead* head = self && own ? Branch(*self, kTypeTrack) : nullptr;
  if (!head) return 0;
  const auto isHigher = [&](const GeListNode* node) {
    const auto* other = As<CTrack>(node);
    return node == track || (other && Compare(*other, IdOf(*own)) > 0);
  };
  GeListNode* pred = head->downLast;
  while (pred && isHigher(pred)) pred = pred->pred;
  return Place(*track, *head, pred);
}

}  // namespace host::baselist

void CTrack::CopyOwn(BaseList2D& to) const { static_cast<CTrack&>(to).parameter = parameter; }
