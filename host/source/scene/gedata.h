// The tagged value that the host keeps.
#ifndef HOST_SCENE_GEDATA_H
#define HOST_SCENE_GEDATA_H

#include <memory>
#include <string_view>
#include <utility>

#include "kelvar.framework/source/tables/t_gedata.h"
#include "scene/container.h"

namespace host {

// Whether the bytes of a value are all there is: those that scripts store most.
constexpr bool IsPlain(int32_t type) {
  return type == HOST_DATA_NONE || type == HOST_DATA_INT32 || type == HOST_DATA_FLOAT ||
         type == HOST_DATA_VECTOR || type == HOST_DATA_INT64;
}

// A tagged value that ends itself.
class Value {
 public:
  Value() = default;
  // A copy; no value for a type that the host doesn't know, since nobody can tell what it owns.
  explicit Value(const HostGeData& original) {
    if (IsPlain(original.type))
      data_ = original;
    else
      CopyFrom(original);
  }
  explicit Value(std::unique_ptr<BaseContainer> container) noexcept;
  // Takes over what the value owns.
  static Value Adopt(HostGeData data) noexcept {
    Value value;
    value.data_ = data;
    return value;
  }
  static Value Int32(int32_t number) { return Adopt({HOST_DATA_INT32, 0, {.integer = number}}); }
  static Value Float(double number) { return Adopt({HOST_DATA_FLOAT, 0, {.real = number}}); }
  static Value Of(const Vector& vector) { return Adopt({HOST_DATA_VECTOR, 0, {.vector = vector}}); }
  static Value Text(std::string_view text);
  Value(Value&& other) noexcept : data_(other.Release()) {}
  Value& operator=(Value&& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~Value() {
    if (!IsPlain(data_.type)) End();
  }

  HostGeData Release() noexcept { return std::exchange(data_, HostGeData{}); }
  const HostGeData& Data() const { return data_; }

 private:
  void CopyFrom(const HostGeData& original);
  void End();

  HostGeData data_{};
};

bool IsEqual(const HostGeData& a, const HostGeData& b);

// Null for a value of another type.
inline BaseContainer* ContainerOf(const HostGeData& value) {
  return value.type == HOST_DATA_CONTAINER ? static_cast<BaseContainer*>(value.value.pointer) : nullptr;
}

}  // namespace host

#endif
