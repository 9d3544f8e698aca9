// Containers and tagged values as bytes: a list of tables, each behind those that its entries name.

#include <cstring>
#include <memory>
#include <unordered_map>

#include "boundary/host.h"
#include "files/hyperfile.h"
#include "kelvar/basetime.h"
#include "scene/storage.h"
#include "tables/values.h"

namespace host {
namespace {

class Encoder {
 public:
  explicit Encoder(const std::function<uint64_t(HostLink)>& numberOf) : numberOf_(numberOf) {}

  std::string Encode(const BaseContainer& container) {
    std::vector<const Storage*> tables;
    if (container.storage)
      for (const Storage* storage : InnermostFirst(container)) {
        if (storage->Count() == 0) continue;
        tables.push_back(storage);
        numbers_[storage] = uint32_t(tables.size());
      }
    Put(uint32_t(tables.size()));
    for (const Storage* table : tables) {
      Put(table->Count());
      for (const Entry& entry : table->entries)
        if (!entry.isGap) PutEntry(entry.id, entry.value.Data());
    }
    PutContainer(container);
    return std::move(bytes_);
  }

 private:
  template <class Plain>
  void Put(const Plain& value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void PutText(std::string_view text) {
    Put(uint64_t(text.size()));
    bytes_ += text;
  }
  void PutContainer(const BaseContainer& container) {
    const auto found = numbers_.find(container.storage);
    Put(container.id);
    Put(found == numbers_.end() ? uint32_t(0) : found->second);
  }
  template <class Plain>
  void PutCustom(const HostGeData& data) {
    Put(*static_cast<const Plain*>(gedata::GetCustom(&data, data.type)));
  }

  // A pointer means nothing in a file; nor does a type that has no line here.
  void PutEntry(int32_t id, const HostGeData& data) {
    Put(id);
    const size_t typeAt = bytes_.size();
    Put(data.type);
    const auto& value = data.value;
    switch (data.type) {
      case HOST_DATA_INT32:
        return Put(int32_t(value.integer));
      case HOST_DATA_INT64:
        return Put(value.integer);
      case HOST_DATA_FLOAT:
        return Put(value.real);
      case HOST_DATA_TIME:
        return Put(value.time);
      case HOST_DATA_VECTOR:
        return Put(value.vector);
      case HOST_DATA_MATRIX:
        return Put(*gedata::GetMatrix(&data));
      case HOST_DATA_STRING:
        return PutText(View(&value.string));
      case HOST_DATA_FILENAME:
        return PutText(View(&value.filename));
      case HOST_DATA_CONTAINER:
        return PutContainer(*ContainerOf(data));
      case HOST_DATA_LINK:
        return Put(numberOf_ ? numberOf_(value.link) : uint64_t(0));
      case HOST_DATA_UUID:
        return Put(value.uuid);
      case HOST_CUSTOM_VECTOR4D:
        return PutCustom<Vector4d>(data);
      case HOST_CUSTOM_COLORA:
        return PutCustom<ColorA>(data);
      case HOST_CUSTOM_DESCID: {
        const auto& id = *static_cast<const HostDescID*>(gedata::GetCustom(&data, data.type));
        Put(id.depth);
        for (int32_t i = 0; i < id.depth; ++i) Put(id.level[i]);
        return;
      }
      default:
        bytes_.resize(typeAt);
        Put(int32_t(HOST_DATA_NONE));
    }
  }

  const std::function<uint64_t(HostLink)>& numberOf_;
  std::unordered_map<const Storage*, uint32_t> numbers_;  // from 1 on
  std::string bytes_;
};

class Decoder {
 public:
  Decoder(std::string_view bytes, bool keepsNumbers) : rest_(bytes), keepsNumbers_(keepsNumbers) {}

  bool Decode(BaseContainer& container) {
    uint32_t count;
    if (!Get(count)) return false;
    for (uint32_t i = 0; i < count; ++i) {
      BaseContainer table;
      int32_t entries;
      if (!Get(entries) || entries < 1) return false;  // an empty one would be many for few bytes
      for (int32_t entry = 0; entry < entries; ++entry) {
        int32_t id;
        Value value;
        if (!Get(id) || !GetValue(value)) return false;
        container::InsData(&table, id, &value.Data());
      }
      tables_.push_back(std::move(table));
    }
    return GetContainer(container) && rest_.empty();
  }

 private:
  template <class Plain>
  bool Get(Plain& value) {
    if (rest_.size() < sizeof value) return false;
    std::memcpy(&value, rest_.data(), sizeof value);
    rest_.remove_prefix(sizeof value);
    return true;
  }
  bool GetText(std::string_view& text) {
    uint64_t size;
    if (!Get(size) || size > rest_.size()) return false;
    text = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return true;
  }
  bool GetContainer(BaseContainer& container) {
    int32_t id;
    uint32_t number;
    if (!Get(id) || !Get(number) || number > tables_.size()) return false;
    container = number ? tables_[number - 1] : BaseContainer();
    container.id = id;
    return true;
  }

  template <class Plain>
  bool GetCustom(int32_t type, Value& value) {
    Plain plain;
    if (!Get(plain)) return false;
    value = Value::Adopt(gedata::FromCustom(type, &plain));
    return true;
  }

  bool GetDescID(Value& value) {
    int32_t depth;
    if (!Get(depth) || depth < 0 || uint64_t(depth) > rest_.size() / sizeof(DescLevel)) return false;
    std::vector<DescLevel> levels(size_t(depth) + 1);
    for (int32_t i = 0; i < depth; ++i) Get(levels[size_t(i)]);
    const HostDescID id{levels.data(), depth, 0};
    value = Value::Adopt(gedata::FromCustom(HOST_CUSTOM_DESCID, &id));
    return true;
  }

  bool GetValue(Value& value) {
    HostGeData data{};
    if (!Get(data.type)) return false;
    switch (data.type) {
      case HOST_DATA_NONE:
        return true;
      case HOST_DATA_INT32: {
        int32_t number;
        if (!Get(number)) return false;
        data.value.integer = number;
        break;
      }
      case HOST_DATA_INT64:
        if (!Get(data.value.integer)) return false;
        break;
      case HOST_DATA_FLOAT:
        if (!Get(data.value.real)) return false;
        break;
      case HOST_DATA_TIME: {
        BaseTime time;
        if (!Get(time)) return false;
        data.value.time = kelvar::MakeTime(time.numerator, time.denominator);
        break;
      }
      case HOST_DATA_VECTOR:
        if (!Get(data.value.vector)) return false;
        break;
      case HOST_DATA_UUID:
        if (!Get(data.value.uuid)) return false;
        break;
      case HOST_DATA_LINK:
        if (!Get(data.value.link.generation)) return false;
        if (!keepsNumbers_) data.value.link = {};
        break;
      case HOST_DATA_MATRIX: {
        Matrix matrix;
        if (!Get(matrix)) return false;
        data = gedata::FromMatrix(&matrix);
        break;
      }
      case HOST_DATA_STRING:
      case HOST_DATA_FILENAME: {
        std::string_view text;
        if (!GetText(text)) return false;
        if (data.type == HOST_DATA_STRING)
          data.value.string = MakeString(text);
        else
          data.value.filename = MakeFilename(text);
        break;
      }
      case HOST_DATA_CONTAINER: {
        auto made = std::make_unique<BaseContainer>();
        if (!GetContainer(*made)) return false;
        value = Value(std::move(made));
        return true;
      }
      case HOST_CUSTOM_VECTOR4D:
        return GetCustom<Vector4d>(data.type, value);
      case HOST_CUSTOM_COLORA:
        return GetCustom<ColorA>(data.type, value);
      case HOST_CUSTOM_DESCID:
        return GetDescID(value);
      default:
        return false;
    }
    value = Value::Adopt(data);
    return true;
  }

  std::string_view rest_;
  const bool keepsNumbers_;
  std::vector<BaseContainer> tables_;
};

// A value is written as the one entry of a container.
constexpr int32_t kOnly = 0;

bool ReadAs(HyperFile& file, int32_t tag, BaseContainer& container) {
  const auto place = file.Here();
  std::string bytes;
  if (!file.ReadSized(tag, bytes)) return false;
  BaseContainer made;
  if (Decoder(bytes, file.keepsNumbers).Decode(made)) {
    container = std::move(made);
    return true;
  }
  file.GoTo(place);
  return file.Fail(HYPERFILE_ERROR_FORMAT);
}

}  // namespace
}  // namespace host

bool HyperFile::WriteContainer(const BaseContainer& container) {
  return WriteSized(HYPERFILE_VALUE_CONTAINER, host::Encoder(numberOf).Encode(container));
}

bool HyperFile::ReadContainer(BaseContainer& container) {
  return host::ReadAs(*this, HYPERFILE_VALUE_CONTAINER, container);
}

bool HyperFile::WriteData(const HostGeData& data) {
  BaseContainer one;
  host::container::SetData(&one, host::kOnly, &data);
  return WriteSized(HYPERFILE_VALUE_DATA, host::Encoder(numberOf).Encode(one));
}

bool HyperFile::ReadData(host::Value& data) {
  const Place place = Here();
  BaseContainer one;
  if (!host::ReadAs(*this, HYPERFILE_VALUE_DATA, one)) return false;
  const HostGeData* value = host::container::FindData(&one, host::kOnly);
  if (value) {
    data = host::Value(*value);
    return true;
  }
  GoTo(place);
  return Fail(HYPERFILE_ERROR_FORMAT);
}
