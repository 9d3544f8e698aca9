// Elements made larger or smaller.

#include <cmath>
#include <memory>

#include "boundary/host.h"
#include "scene/description.h"

namespace host {
namespace {

bool IsLength(const Parameter& parameter) {
  const HostGeData* unit = container::FindData(&parameter.settings, DESC_UNIT);
  return unit && unit->type == HOST_DATA_INT32 && unit->value.integer == DESC_UNIT_LENGTH;
}

// False for what is no number.
bool Multiply(HostGeData& value, double scale) {
  if (value.type == HOST_DATA_FLOAT) {
    value.value.real *= scale;
  } else if (value.type == HOST_DATA_VECTOR) {
    Vector& vector = value.value.vector;
    vector = {vector.x * scale, vector.y * scale, vector.z * scale};
  } else {
    return false;
  }
  return true;
}

}  // namespace
}  // namespace host

namespace host::baselist {

// Each step may run the code of a plug-in, which may destroy the element.
void Scale(BaseList2D* self, double scale) {
  if (!self || !std::isfinite(scale)) return;
  const Hold hold(*self);
  const std::unique_ptr<const Description> description(atom::GetDescription(self, 0));
  const int32_t count = description ? description->Count() : 0;
  for (int32_t i = 0; i < count && hold.IsAlive(); ++i) {
    const Parameter& parameter = *description->At(i);
    if (!IsLength(parameter)) continue;
    const HostDescID id = parameter.Id();
    HostGeData value{};
    atom::GetParameter(self, &id, &value, 0);
    if (hold.IsAlive() && Multiply(value, scale)) atom::SetParameter(self, &id, &value, 0);
    gedata::Destroy(&value);
  }
}

}  // namespace host::baselist
