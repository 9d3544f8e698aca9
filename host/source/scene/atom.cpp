#include "scene/atom.h"

#include "boundary/host.h"
#include "tables/values.h"

namespace host {

// Changes are not counted yet.
void Touch(QLXAtom&, int32_t) {}

}  // namespace host

namespace host::atom {

HostBool SetLink(QLXAtom* self, HostLink* link) {
  if (!self || !link) return 0;
  self->Link(*link);
  return 1;
}

int32_t GetType(const QLXAtom* self) noexcept { return self ? self->type.id : 0; }

int32_t GetRealType(const QLXAtom* self) noexcept { return self ? self->type.id : 0; }

HostBool IsInstanceOf(const QLXAtom* self, int32_t id) { return self && NodeTypes::Derives(self->type, id); }

}  // namespace host::atom

namespace host::baselist {

BaseList2D* Alloc(int32_t id) {
  const NodeType* type = AllNodeTypes().Find(id);
  return type && !type->isAbstract ? new BaseList2D(*type) : nullptr;
}

void Free(BaseList2D* self) { DestroyNow(self); }

HostString GetName(const BaseList2D* self) { return self ? MakeString(self->name) : HostString{}; }

void SetName(BaseList2D* self, const HostString* name) {
  if (self) self->name = View(name);
}

BaseContainer* GetDataInstance(BaseList2D* self) { return self ? &self->data : nullptr; }

}  // namespace host::baselist
