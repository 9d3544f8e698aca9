// The tagged value of the boundary as a C++ class.
#ifndef KELVAR_VALUE_H
#define KELVAR_VALUE_H

#include <utility>

#include "kelvar/filename.h"
#include "kelvar/gedata.h"
#include "kelvar/string.h"

// The type of custom data whose values are of that struct.
template <class Plain>
inline constexpr int32_t kCustomType = 0;
template <>
inline constexpr int32_t kCustomType<HostDescID> = HOST_CUSTOM_DESCID;
template <>
inline constexpr int32_t kCustomType<Vector4d> = HOST_CUSTOM_VECTOR4D;
template <>
inline constexpr int32_t kCustomType<ColorA> = HOST_CUSTOM_COLORA;

// An accessor answers zero, or the empty value, for a value of another type.
class GeData {
 public:
  GeData() = default;
  GeData(const GeData& other) : GeData(Copy(other.data_)) {}
  GeData(GeData&& other) noexcept : data_(other.Release()) {}
  GeData& operator=(GeData other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~GeData() {
    if (!IsPlain(data_.type)) kelvar::gedata::Destroy(&data_);
  }

  static GeData Adopt(HostGeData data) {
    GeData value;
    value.data_ = data;
    return value;
  }
  // Of a value that somebody else keeps.
  static GeData Copy(const HostGeData& data) {
    return Adopt(IsPlain(data.type) ? data : kelvar::gedata::Copy(&data));
  }
  HostGeData Release() { return std::exchange(data_, HostGeData{}); }
  const HostGeData* Data() const { return &data_; }
  // For an entry that fills it.
  HostGeData* Out() {
    *this = GeData();
    return &data_;
  }

  static GeData Int32(int32_t value) { return Adopt({HOST_DATA_INT32, 0, {.integer = value}}); }
  static GeData Int64(int64_t value) { return Adopt({HOST_DATA_INT64, 0, {.integer = value}}); }
  static GeData Float(double value) { return Adopt({HOST_DATA_FLOAT, 0, {.real = value}}); }
  static GeData Vector(const ::Vector& value) { return Adopt({HOST_DATA_VECTOR, 0, {.vector = value}}); }
  static GeData Time(const BaseTime& value) { return Adopt({HOST_DATA_TIME, 0, {.time = value}}); }
  static GeData String(::String value) { return Adopt({HOST_DATA_STRING, 0, {.string = value.Release()}}); }
  static GeData Filename(::Filename value) {
    return Adopt({HOST_DATA_FILENAME, 0, {.filename = value.Release()}});
  }
  static GeData Uuid(const ::Uuid& value) { return Adopt({HOST_DATA_UUID, 0, {.uuid = value}}); }
  static GeData Pointer(void* value) { return Adopt({HOST_DATA_POINTER, 0, {.pointer = value}}); }
  static GeData Matrix(const ::Matrix& value) { return Adopt(kelvar::gedata::FromMatrix(&value)); }
  static GeData Container(const BaseContainer* value) { return Adopt(kelvar::gedata::FromContainer(value)); }
  // Takes the link over.
  static GeData Link(HostLink value) { return Adopt({HOST_DATA_LINK, 0, {.link = value}}); }

  // Custom data; empty when the host doesn't know the type.
  template <class Plain>
  static GeData Custom(const Plain& value) {
    static_assert(kCustomType<Plain> != 0);
    return Adopt(kelvar::gedata::FromCustom(kCustomType<Plain>, &value));
  }
  // Of a value that somebody else keeps, and that keeps the result; null for another type.
  template <class Plain>
  static const Plain* CustomOf(const HostGeData& data) {
    static_assert(kCustomType<Plain> != 0);
    return static_cast<const Plain*>(kelvar::gedata::GetCustom(&data, kCustomType<Plain>));
  }

  int32_t Type() const { return data_.type; }
  int32_t GetInt32() const { return int32_t(Get(HOST_DATA_INT32, data_.value.integer)); }
  int64_t GetInt64() const { return Get(HOST_DATA_INT64, data_.value.integer); }
  double GetFloat() const { return Get(HOST_DATA_FLOAT, data_.value.real); }
  ::Vector GetVector() const { return Get(HOST_DATA_VECTOR, data_.value.vector); }
  BaseTime GetTime() const { return Get(HOST_DATA_TIME, data_.value.time); }
  ::String GetString() const {
    const HostString word = Get(HOST_DATA_STRING, data_.value.string);
    return ::String::Adopt(tables::string.Copy(&word));
  }
  ::Filename GetFilename() const {
    const HostFilename word = Get(HOST_DATA_FILENAME, data_.value.filename);
    return ::Filename::Adopt(tables::filename.Copy(&word));
  }
  ::Uuid GetUuid() const { return Get(HOST_DATA_UUID, data_.value.uuid); }
  void* GetPointer() const { return Get(HOST_DATA_POINTER, data_.value.pointer); }
  // These three stay the value's.
  const ::Matrix* GetMatrix() const { return kelvar::gedata::GetMatrix(&data_); }
  BaseContainer* GetContainer() const { return kelvar::gedata::GetContainer(&data_); }
  HostLink GetLink() const { return Get(HOST_DATA_LINK, data_.value.link); }
  template <class Plain>
  const Plain* GetCustom() const {
    return CustomOf<Plain>(data_);
  }

  bool operator==(const GeData& other) const { return kelvar::gedata::IsEqual(&data_, &other.data_); }

 private:
  // Whether the bytes are all there is.
  static constexpr bool IsPlain(int32_t type) {
    switch (type) {
      case HOST_DATA_NONE:
      case HOST_DATA_POINTER:
      case HOST_DATA_INT32:
      case HOST_DATA_FLOAT:
      case HOST_DATA_TIME:
      case HOST_DATA_VECTOR:
      case HOST_DATA_INT64:
      case HOST_DATA_UUID:
        return true;
      default:
        return false;
    }
  }

  template <class Held>
  Held Get(int32_t type, const Held& held) const {
    return data_.type == type ? held : Held{};
  }

  HostGeData data_{};
};

#endif
