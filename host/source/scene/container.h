// The container of settings.
#ifndef HOST_SCENE_CONTAINER_H
#define HOST_SCENE_CONTAINER_H

#include <cstdint>

#include "kelvar.framework/source/tables/t_container.h"

struct BaseContainer {
  int32_t id = 0;

  bool operator==(const BaseContainer& other) const { return id == other.id; }
};

#endif
