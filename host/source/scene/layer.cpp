#include "boundary/host.h"
#include "files/hyperfile.h"
#include "scene/kinds.h"
#include "scene/tree.h"

LayerObject::LayerObject(const host::NodeType& ofType)
    : BaseList2D(ofType),
      says{.solo = 0,
           .view = 1,
           .render = 1,
           .manager = 1,
           .locked = 0,
           .generators = 1,
           .deformers = 1,
           .expressions = 1,
           .animation = 1,
           .xref = 1,
           .color = {1, 1, 1}} {}

namespace {

constexpr HostBool HostLayerData::*kSaid[] = {&HostLayerData::solo,      &HostLayerData::view,
                                              &HostLayerData::render,    &HostLayerData::manager,
                                              &HostLayerData::locked,    &HostLayerData::generators,
                                              &HostLayerData::deformers, &HostLayerData::expressions,
                                              &HostLayerData::animation, &HostLayerData::xref};

}  // namespace

bool LayerObject::WriteOwn(HyperFile& file) const {
  for (const auto member : kSaid)
    if (!file.Write(HYPERFILE_VALUE_BOOL, uint8_t(says.*member != 0))) return false;
  return file.Write(HYPERFILE_VALUE_VECTOR64, says.color);
}

bool LayerObject::ReadOwn(HyperFile& file) {
  for (const auto member : kSaid) {
    uint8_t byte;
    if (!file.Read(HYPERFILE_VALUE_BOOL, byte)) return false;
    says.*member = byte != 0;
  }
  return file.Read(HYPERFILE_VALUE_VECTOR64, says.color);
}

namespace host::layer {

LayerObject* Alloc(BaseDocument*) { return As<LayerObject>(NewNode(*FindType(kTypeLayer))); }

}  // namespace host::layer

namespace host::baselist {
namespace {

// What may be allowed, and what may be asked for.
constexpr HostBool HostLayerData::*kAllowed[] = {&HostLayerData::view,      &HostLayerData::render,
                                                 &HostLayerData::manager,   &HostLayerData::generators,
                                                 &HostLayerData::deformers, &HostLayerData::expressions,
                                                 &HostLayerData::animation, &HostLayerData::xref};
constexpr HostBool HostLayerData::*kAsked[] = {&HostLayerData::solo, &HostLayerData::locked};

LayerObject* LayerOf(const BaseList2D* self, BaseDocument* document) {
  return As<LayerObject>(GetLayerObject(self, document));
}

}  // namespace

BaseList2D* GetLayerObject(const BaseList2D* self, BaseDocument* document) {
  if (As<LayerObject>(self)) return const_cast<BaseList2D*>(self);
  if (!self || !self->extras) return nullptr;
  auto* layer = static_cast<BaseList2D*>(link::GetLink(self->extras->layer));
  return layer && (!document || listnode::GetDocument(layer) == document) ? layer : nullptr;
}

HostBool SetLayerObject(BaseList2D* self, BaseList2D* layer) {
  if (!self || As<LayerObject>(self) || (layer && !As<LayerObject>(layer))) return 0;
  HostLink link{};
  if (layer) layer->Link(link);
  if (layer || self->extras) self->Extra().layer = link;
  Touch(*self, DIRTYFLAGS_DATA);
  return 1;
}

HostBool GetLayerData(const BaseList2D* self, BaseDocument* document, HostLayerData* data, HostBool raw) {
  const LayerObject* layer = LayerOf(self, document);
  if (!layer || !data) return 0;
  *data = layer->says;
  for (const GeListNode* up = layer->up; up && !raw; up = up->up) {
    const auto* above = As<LayerObject>(up);
    if (!above) continue;
    for (const auto member : kAllowed) data->*member = data->*member && above->says.*member;
    for (const auto member : kAsked) data->*member = data->*member || above->says.*member;
  }
  return 1;
}

HostBool SetLayerData(BaseList2D* self, BaseDocument* document, const HostLayerData* data) {
  LayerObject* layer = LayerOf(self, document);
  if (!layer || !data) return 0;
  layer->says = *data;
  Touch(*layer, DIRTYFLAGS_DATA);
  return 1;
}

}  // namespace host::baselist

void LayerObject::CopyOwn(BaseList2D& to) const { static_cast<LayerObject&>(to).says = says; }
