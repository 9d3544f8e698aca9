// The container of settings.
#ifndef HOST_SCENE_CONTAINER_H
#define HOST_SCENE_CONTAINER_H

#include <cstdint>
#include <functional>

#include "kelvar.framework/source/tables/t_container.h"
#include "kelvar.framework/source/tables/t_types.h"

namespace host {
struct Storage;
}

// Copies share their entries until one of them changes. Sub-containers may be nested to any depth.
// One that was found through FindData belongs to every sharer and is only read; GetContainerInstance
// answers one to be changed.
struct BaseContainer {
  explicit BaseContainer(int32_t ofId = 0) : id(ofId) {}
  BaseContainer(const BaseContainer& other);
  BaseContainer& operator=(BaseContainer other) noexcept;
  ~BaseContainer();

  bool operator==(const BaseContainer& other) const;

  int32_t id;
  uint32_t dirty = 0;
  host::Storage* storage = nullptr;  // null for no entries
};

namespace host {

// Whether there is a link in the container, at any depth.
bool HoldsLinks(const BaseContainer& container);

// Puts what `map` answers in place of each link, at any depth; whether anything changed. What was shared among
// the parts of the container stays so.
bool MapLinks(BaseContainer& container, const std::function<HostLink(HostLink)>& map);

}  // namespace host

#endif
