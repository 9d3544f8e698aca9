#include "scene/gedata.h"

#include <cstring>
#include <type_traits>

#include "boundary/host.h"
#include "kelvar/descid.h"
#include "kelvar/matrix.h"
#include "kelvar/vector.h"
#include "tables/values.h"

namespace host {
namespace {

// What a type of values can do. The bytes of a value are copied ahead of `copy`.
struct TypeOperations {
  int32_t type;
  bool (*isEqual)(const HostGeData& a, const HostGeData& b);
  void (*copy)(HostGeData& value) = nullptr;     // makes the value an owner of its own
  void (*destroy)(HostGeData& value) = nullptr;  // null as `copy` is where the bytes are all
  void* (*make)(const void* plain) = nullptr;    // custom data: a new object, or null for a wrong struct
};

bool operator==(const ColorA& a, const ColorA& b) {
  return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

// An id behind the struct by which others see it.
struct DescIDData {
  HostDescID word;
  DescID id;

  explicit DescIDData(const DescID& from = {}) : id(from) { word = id.Word(); }
  explicit DescIDData(const HostDescID& from) : DescIDData(DescID::Copy(from)) {}
  DescIDData(const DescIDData& other) : DescIDData(other.id) {}
  DescIDData& operator=(const DescIDData&) = delete;
  bool operator==(const DescIDData& other) const { return id == other.id; }
};

template <class Plain>
bool IsWhole(const Plain&) {
  return true;
}
bool IsWhole(const HostDescID& id) { return id.depth == 0 || (id.depth > 0 && id.level); }

Matrix* MatrixOf(const HostGeData& value) {
  return value.type == HOST_DATA_MATRIX ? static_cast<Matrix*>(value.value.pointer) : nullptr;
}

// For types whose value is one object of the heap; a null pointer is no value.
template <class Object, Object* (*Get)(const HostGeData&)>
constexpr TypeOperations OnHeap(int32_t type) {
  return {type, [](const HostGeData& a, const HostGeData& b) { return Get(a) && Get(b) && *Get(a) == *Get(b); },
          [](HostGeData& value) {
            if (const Object* object = Get(value)) {
              value.value.pointer = new Object(*object);
            } else {
              value = {};
            }
          },
          [](HostGeData& value) { delete Get(value); }};
}

template <class Object, int32_t kType>
Object* CustomOf(const HostGeData& value) {
  return value.type == kType ? static_cast<Object*>(value.value.pointer) : nullptr;
}

// Custom data: an object that begins with the struct that the boundary has for its type.
template <int32_t kType, class Plain, class Object = Plain>
constexpr TypeOperations Custom() {
  static_assert(std::is_standard_layout_v<Object>);
  TypeOperations operations = OnHeap<Object, CustomOf<Object, kType>>(kType);
  operations.make = [](const void* plain) -> void* {
    if (!plain) return new Object();
    const auto& value = *static_cast<const Plain*>(plain);
    return IsWhole(value) ? new Object(value) : nullptr;
  };
  return operations;
}

template <class Word, Word decltype(HostGeData::value)::*Member>
constexpr TypeOperations OfText(int32_t type) {
  return {type,
          [](const HostGeData& a, const HostGeData& b) {
            return View(&(a.value.*Member)) == View(&(b.value.*Member));
          },
          [](HostGeData& value) { value.value.*Member = Share(&(value.value.*Member)); },
          [](HostGeData& value) { Drop(value.value.*Member); }};
}

using Union = decltype(HostGeData::value);

bool IsSameInteger(const HostGeData& a, const HostGeData& b) { return a.value.integer == b.value.integer; }

// Every type that the host knows, the frequent ones first. A new type is one more row.
constexpr TypeOperations kTypes[] = {
    {HOST_DATA_INT32, IsSameInteger},
    {HOST_DATA_FLOAT, [](const HostGeData& a, const HostGeData& b) { return a.value.real == b.value.real; }},
    OfText<HostString, &Union::string>(HOST_DATA_STRING),
    OnHeap<BaseContainer, ContainerOf>(HOST_DATA_CONTAINER),
    {HOST_DATA_VECTOR,
     [](const HostGeData& a, const HostGeData& b) { return a.value.vector == b.value.vector; }},
    {HOST_DATA_INT64, IsSameInteger},
    {HOST_DATA_NONE, [](const HostGeData&, const HostGeData&) { return true; }},
    OfText<HostFilename, &Union::filename>(HOST_DATA_FILENAME),
    {HOST_DATA_LINK,
     [](const HostGeData& a, const HostGeData& b) {
       return link::GetLink(a.value.link) == link::GetLink(b.value.link);
     },
     [](HostGeData&) {},  // a second link is the same bytes
     [](HostGeData& value) { link::FreeLink(&value.value.link); }},
    OnHeap<Matrix, MatrixOf>(HOST_DATA_MATRIX),
    {HOST_DATA_TIME,
     [](const HostGeData& a, const HostGeData& b) {
       return a.value.time.numerator == b.value.time.numerator &&
              a.value.time.denominator == b.value.time.denominator;
     }},
    {HOST_DATA_UUID,
     [](const HostGeData& a, const HostGeData& b) {
       return !std::memcmp(a.value.uuid.bytes, b.value.uuid.bytes, sizeof(Uuid));
     }},
    {HOST_DATA_POINTER,
     [](const HostGeData& a, const HostGeData& b) { return a.value.pointer == b.value.pointer; }},
    Custom<HOST_CUSTOM_DESCID, HostDescID, DescIDData>(),
    Custom<HOST_CUSTOM_VECTOR4D, Vector4d>(),
    Custom<HOST_CUSTOM_COLORA, ColorA>(),
};

const TypeOperations* Find(int32_t type) {
  for (const TypeOperations& operations : kTypes)
    if (operations.type == type) return &operations;
  return nullptr;
}

void End(HostGeData& data) {
  const TypeOperations* operations = Find(data.type);
  if (operations && operations->destroy) operations->destroy(data);
  data = {};
}

}  // namespace

void Value::CopyFrom(const HostGeData& original) {
  const TypeOperations* operations = Find(original.type);
  if (!operations) return;
  HostGeData copy = original;
  if (operations->copy) operations->copy(copy);
  data_ = copy;
}

Value::Value(std::unique_ptr<BaseContainer> container) noexcept {
  data_.type = HOST_DATA_CONTAINER;
  data_.value.pointer = container.release();
}

void Value::End() { host::End(data_); }

Value Value::Text(std::string_view text) { return Adopt({HOST_DATA_STRING, 0, {.string = MakeString(text)}}); }

bool IsEqual(const HostGeData& a, const HostGeData& b) {
  const TypeOperations* operations = a.type == b.type ? Find(a.type) : nullptr;
  return operations && operations->isEqual(a, b);
}

}  // namespace host

namespace host::gedata {

HostGeData Copy(const HostGeData* self) { return self ? Value(*self).Release() : HostGeData{}; }

void Destroy(HostGeData* self) {
  if (self) End(*self);
}

HostBool IsEqual(const HostGeData* self, const HostGeData* other) {
  return self && other && host::IsEqual(*self, *other);
}

HostGeData FromMatrix(const Matrix* matrix) {
  HostGeData made{};
  if (!matrix) return made;
  made.value.pointer = new Matrix(*matrix);
  made.type = HOST_DATA_MATRIX;
  return made;
}

const Matrix* GetMatrix(const HostGeData* self) noexcept { return self ? MatrixOf(*self) : nullptr; }

HostGeData FromContainer(const BaseContainer* container) {
  return container ? Value(std::make_unique<BaseContainer>(*container)).Release() : HostGeData{};
}

BaseContainer* GetContainer(const HostGeData* self) noexcept { return self ? ContainerOf(*self) : nullptr; }

HostGeData FromCustom(int32_t type, const void* value) {
  const TypeOperations* operations = Find(type);
  HostGeData made{};
  made.value.pointer = operations && operations->make ? operations->make(value) : nullptr;
  if (made.value.pointer) made.type = type;
  return made;
}

const void* GetCustom(const HostGeData* self, int32_t type) noexcept {
  const TypeOperations* operations = self && self->type == type ? Find(type) : nullptr;
  return operations && operations->make ? self->value.pointer : nullptr;
}

}  // namespace host::gedata
