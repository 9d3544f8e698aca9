#include "scene/aliastrans.h"

#include <utility>

#include "boundary/host.h"
#include "scene/extras.h"

// What was never linked can't be the goal of a link that was copied.
void AliasTrans::Record(const QLXAtom& original, BaseList2D& copy) {
  HostLink from{}, to{};
  if (original.IsLinked()) {
    const_cast<QLXAtom&>(original).Link(from);
    copy.Link(to);
    copies[from] = to;
  }
  const bool hasLayer = copy.extras && copy.extras->layer.slot;
  if (!hasLayer && !host::HoldsLinks(copy.data)) return;
  copy.Link(to);
  holders.insert(to);
}

namespace host::aliastrans {

AliasTrans* Alloc() { return new AliasTrans; }

void Free(AliasTrans* self) { delete self; }

// Copies are known by their originals, in whatever document these are.
HostBool Init(AliasTrans* self, BaseDocument*) {
  if (!self) return 0;
  self->copies.clear();
  self->holders.clear();
  return 1;
}

void Translate(AliasTrans* self, HostBool connectOutside) {
  if (!self) return;
  const auto map = [&](HostLink link) {
    const auto found = self->copies.find(link);
    if (found != self->copies.end()) return found->second;
    return connectOutside ? link : HostLink{};
  };
  for (const HostLink& holder : std::exchange(self->holders, {})) {
    auto* copy = static_cast<BaseList2D*>(link::GetLink(holder));
    if (copy) MapLinksOf(*copy, map);
  }
}

}  // namespace host::aliastrans
