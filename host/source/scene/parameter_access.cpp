// Reading and writing parameters.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "boundary/host.h"
#include "scene/kinds.h"

namespace host {
namespace {

// The parameter that an address leads to, or through; null for one that the element does not have.
struct Step {
  const Parameter* parameter;
  int32_t levels;  // that were used up
};

Step FirstStep(const BaseList2D& node, const HostDescID& id) {
  const int32_t first = id.level[0].id;
  if (first == ID_USERDATA && id.depth > 1 && node.dynamic)
    if (const Parameter* added = node.dynamic->Find(id.level[1].id)) return {added, 2};
  return {node.type.Find(first), 1};
}

double* ComponentOf(HostGeData& value, int32_t id) {
  if (value.type != HOST_DATA_VECTOR) return nullptr;
  Vector& vector = value.value.vector;
  switch (id) {
    case VECTOR_X:
      return &vector.x;
    case VECTOR_Y:
      return &vector.y;
    case VECTOR_Z:
      return &vector.z;
    default:
      return nullptr;
  }
}

// Reads along the levels. The answer lies in the element or its type, or in `made`; null where it ends.
class Reader {
 public:
  const HostGeData* Read(const BaseList2D& node, const HostDescID& id) {
    const Step step = FirstStep(node, id);
    const HostGeData* value = container::FindData(&node.data, id.level[0].id);
    if (step.levels == 2) value = Below(value, id.level[1].id);
    if (step.parameter && step.parameter->isOfMatrix && node.GetOwn(step.parameter->Number(), made_))
      value = &made_.Data();
    if (step.parameter) value = Typed(value, *step.parameter);
    for (int32_t i = step.levels; value && i < id.depth; ++i) value = Below(value, id.level[i].id);
    return value;
  }

 private:
  // Scripts may store anything in an element's container.
  const HostGeData* Typed(const HostGeData* value, const Parameter& parameter) {
    if (parameter.IsGroup() || (value && value->type == parameter.valueType))
      return parameter.IsGroup() ? nullptr : value;
    if (value) made_ = Convert(*value, parameter.valueType);
    return value && made_.Data().type != HOST_DATA_NONE ? &made_.Data() : &parameter.standard->Data();
  }

  const HostGeData* Below(const HostGeData* value, int32_t id) {
    if (!value) return nullptr;
    if (const BaseContainer* inner = ContainerOf(*value)) return container::FindData(inner, id);
    if (value->type != HOST_DATA_VECTOR) return nullptr;
    HostGeData vector = *value;
    const double* component = ComponentOf(vector, id);
    if (!component) return nullptr;
    made_ = Value::Float(*component);
    return &made_.Data();
  }

  Value made_;
};

enum class Written { kRefused, kSame, kChanged };

// Numbers to the last bit, so that a zero may get another sign.
bool IsSame(const HostGeData& a, const HostGeData& b) {
  if (a.type != b.type || !IsPlain(a.type)) return IsEqual(a, b);
  return std::memcmp(&a.value, &b.value, a.type == HOST_DATA_VECTOR ? sizeof(Vector) : sizeof(int64_t)) == 0;
}

// Stores, or with no value removes, what the address names. Containers on the way are there already, or are
// those of a parameter that still has its default.
Written Store(BaseList2D& node, const Step& step, const HostDescID& id, const Value& value) {
  if (step.parameter && step.parameter->isOfMatrix && node.SetOwn(step.parameter->Number(), value.Data()))
    return Written::kChanged;
  BaseContainer* into = &node.data;
  for (int32_t i = 0; i + 1 < id.depth; ++i) {
    const int32_t at = id.level[i].id;
    const HostGeData* present = container::FindData(into, at);
    if (!present || !ContainerOf(*present)) {
      const bool isOfParameter = step.parameter && i + 1 == step.levels;
      Put(*into, at,
          isOfParameter ? Value(step.parameter->standard->Data()) : Value(std::make_unique<BaseContainer>()));
    }
    into = container::GetContainerInstance(into, at);
  }
  const int32_t last = id.level[id.depth - 1].id;
  const HostGeData* present = container::FindData(into, last);
  if (present ? IsSame(*present, value.Data()) : value.Data().type == HOST_DATA_NONE) return Written::kSame;
  if (value.Data().type == HOST_DATA_NONE) {
    container::RemoveData(into, last);
  } else {
    Put(*into, last, value);
  }
  return Written::kChanged;
}

// As Write, where the address may be one of a vector's component; then it becomes the vector's.
Written WriteComponent(BaseList2D& node, const Step& step, HostDescID id, const HostGeData* data) {
  const int32_t component = id.level[--id.depth].id;
  Reader reader;
  const HostGeData* present = reader.Read(node, id);
  if (!present || present->type != HOST_DATA_VECTOR) return Written::kRefused;
  HostGeData vector = *present;
  double* number = ComponentOf(vector, component);
  const Parameter* parameter = step.levels == id.depth ? step.parameter : nullptr;
  HostGeData standard{};
  if (parameter) standard = parameter->standard->Data();
  const double* reset = ComponentOf(standard, component);
  const Value wanted = data ? Convert(*data, HOST_DATA_FLOAT) : Value::Float(reset ? *reset : 0);
  if (!number || wanted.Data().type == HOST_DATA_NONE) return Written::kRefused;
  *number = wanted.Data().value.real;
  const Value fitting = parameter ? parameter->Fit(vector) : Value(vector);
  if (fitting.Data().type == HOST_DATA_NONE) return Written::kRefused;
  return Store(node, step, id, fitting);
}

// `data` is null for the default.
Written Write(BaseList2D& node, const Step& step, const HostDescID& id, const HostGeData* data) {
  if (step.parameter && step.parameter->IsGroup()) return Written::kRefused;
  if (step.parameter && step.levels == id.depth) {
    const Value& standard = *step.parameter->standard;
    const Value fitting = step.parameter->Fit(data ? *data : standard.Data());
    if (fitting.Data().type == HOST_DATA_NONE) return Written::kRefused;
    return Store(node, step, id, fitting);
  }
  Reader reader;
  const HostGeData* current = reader.Read(node, id);
  if (!current) return Written::kRefused;
  HostDescID parent = id;
  Reader above;
  if (--parent.depth >= step.levels)
    if (const HostGeData* value = above.Read(node, parent); value && value->type == HOST_DATA_VECTOR)
      return WriteComponent(node, step, id, data);
  const Value fitting = data ? Convert(*data, current->type) : Value();
  if (data && fitting.Data().type == HOST_DATA_NONE) return Written::kRefused;
  return Store(node, step, id, fitting);
}

// The number, or vector, of an address of one level: what scripts read most. Null for all that Reader is for.
const HostGeData* QuickNumber(const BaseList2D& node, const HostDescID& id) {
  if (id.depth != 1) return nullptr;
  const HostGeData* value = container::FindData(&node.data, id.level[0].id);
  if (!value ||
      (value->type != HOST_DATA_FLOAT && value->type != HOST_DATA_INT32 && value->type != HOST_DATA_VECTOR))
    return nullptr;
  const Parameter* parameter = node.type.Find(id.level[0].id);
  return !parameter || parameter->valueType == value->type ? value : nullptr;
}

bool IsAddress(const HostDescID* id) { return id && id->level && id->depth > 0; }

// False where there is nothing between the two.
bool Mix(const HostGeData& a, const HostGeData& b, double mix, HostGeData& mixed) {
  const auto between = [mix](double from, double to) { return std::lerp(from, to, mix); };
  const auto isInteger = [](int32_t type) { return type == HOST_DATA_INT32 || type == HOST_DATA_INT64; };
  mixed = a;
  if (a.type != b.type && isInteger(a.type) && isInteger(b.type)) {
    mixed.type = HOST_DATA_INT64;
  } else if (a.type != b.type) {
    const Value from = Convert(a, HOST_DATA_FLOAT), to = Convert(b, HOST_DATA_FLOAT);
    if (from.Data().type != HOST_DATA_FLOAT || to.Data().type != HOST_DATA_FLOAT) return false;
    mixed = Value::Float(between(from.Data().value.real, to.Data().value.real)).Release();
    return true;
  }
  switch (a.type) {
    case HOST_DATA_INT32:
    case HOST_DATA_INT64:
      // Long numbers keep all their digits at the ends.
      if (mix >= 1) mixed = b;
      if (mix > 0 && mix < 1) {
        const auto [least, most] = std::minmax(a.value.integer, b.value.integer);
        const double number = std::round(between(double(a.value.integer), double(b.value.integer)));
        mixed.value.integer = number <= double(least) ? least : number >= double(most) ? most : int64_t(number);
      }
      return true;
    case HOST_DATA_FLOAT:
      mixed.value.real = between(a.value.real, b.value.real);
      return true;
    case HOST_DATA_VECTOR: {
      const Vector &from = a.value.vector, &to = b.value.vector;
      mixed.value.vector = {between(from.x, to.x), between(from.y, to.y), between(from.z, to.z)};
      return true;
    }
    default:
      return false;
  }
}

}  // namespace
}  // namespace host

namespace host::atom {

HostBool GetParameter(const QLXAtom* self, const HostDescID* id, HostGeData* data, int32_t flags) {
  if (!data) return 0;
  *data = {};
  const BaseList2D* node = AsElement(self);
  if (!node || !IsAddress(id)) return 0;
  if (const NodeRecord* record = PluginOf(*node); record && record->GetDParameter) {
    const Hold running(const_cast<BaseList2D&>(*node));
    if (record->GetDParameter(PluginData(*node), node, id, data, &flags)) return 1;
    gedata::Destroy(data);
    if (!running.IsAlive()) return 0;
  }
  if (const HostGeData* number = QuickNumber(*node, *id)) {
    *data = *number;
    return 1;
  }
  Reader reader;
  const HostGeData* value = reader.Read(*node, *id);
  if (!value) return 0;
  *data = Value(*value).Release();
  return 1;
}

HostBool SetParameter(QLXAtom* self, const HostDescID* id, const HostGeData* data, int32_t flags) {
  BaseList2D* node = AsElement(self);
  if (!node || !IsAddress(id) || !data) return 0;
  Step step = FirstStep(*node, *id);
  const int32_t changed =
      DIRTYFLAGS_DATA | (step.parameter && step.parameter->isOfMatrix ? DIRTYFLAGS_MATRIX : 0);
  if (const NodeRecord* record = PluginOf(*node); record && record->SetDParameter) {
    const Hold running(const_cast<BaseList2D&>(*node));
    const bool isDone = record->SetDParameter(PluginData(*node), node, id, data, &flags);
    if (!running.IsAlive()) return isDone;
    if (isDone) {
      Touch(*node, changed);
      return 1;
    }
    step = FirstStep(*node, *id);
  }
  const Written written = Write(*node, step, *id, data->type == HOST_DATA_NONE ? nullptr : data);
  if (written == Written::kChanged) Touch(*node, changed);
  return written != Written::kRefused;
}

}  // namespace host::atom

namespace host::baselist {

HostBool SetAnimatedParameter(BaseList2D* self, BaseList2D*, const HostDescID* id, const HostGeData* data1,
                              const HostGeData* data2, double mix, int32_t flags) {
  if (!data1 || !data2 || std::isnan(mix)) return 0;
  // Nothing is between a value and none, which resets.
  if ((data1->type == HOST_DATA_NONE) != (data2->type == HOST_DATA_NONE)) return 0;
  mix = std::clamp(mix, 0.0, 1.0);
  HostGeData mixed{};
  if (Mix(*data1, *data2, mix, mixed)) return atom::SetParameter(self, id, &mixed, flags);
  return atom::SetParameter(self, id, mix < 1 ? data1 : data2, flags);
}

// An element has one value at a time: the animation alone has two.
HostBool GetAnimatedParameter(const BaseList2D* self, const HostDescID* id, HostGeData* data1,
                              HostGeData* data2, double* mix, int32_t flags) {
  if (!data1 || !data2 || !mix) return 0;
  *data2 = {};
  *mix = 0;
  if (!atom::GetParameter(self, id, data1, flags)) return 0;
  *data2 = gedata::Copy(data1);
  return 1;
}

}  // namespace host::baselist
