#include "scene/container.h"

#include "boundary/host.h"

namespace host::container {

BaseContainer* Alloc(int32_t id) { return new BaseContainer{id}; }

void Free(BaseContainer* self) { delete self; }

BaseContainer* GetClone(const BaseContainer* self) { return self ? new BaseContainer(*self) : nullptr; }

HostBool IsEqual(const BaseContainer* self, const BaseContainer* other) {
  return self && other ? *self == *other : self == other;
}

int32_t GetId(const BaseContainer* self) noexcept { return self ? self->id : 0; }

void SetId(BaseContainer* self, int32_t id) noexcept {
  if (self) self->id = id;
}

}  // namespace host::container
