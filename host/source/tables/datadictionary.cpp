#include <map>
#include <string>
#include <variant>

#include "boundary/host.h"
#include "tables/values.h"

struct DataDictionary {
  std::map<std::string, std::variant<int64_t, std::string>, std::less<>> values;

  template <class Value>
  const Value* Get(const char* key) const {
    const auto found = values.find(std::string_view(key));
    return found == values.end() ? nullptr : std::get_if<Value>(&found->second);
  }
};

namespace host::datadictionary {

DataDictionary* Create() { return new DataDictionary; }

void Free(DataDictionary* self) { delete self; }

int32_t SetInt(DataDictionary* self, const char* key, int64_t value) {
  if (!self || !key) return 0;
  self->values[key] = value;
  return 1;
}

int64_t GetInt(const DataDictionary* self, const char* key, int64_t fallback) {
  const auto* value = self && key ? self->Get<int64_t>(key) : nullptr;
  return value ? *value : fallback;
}

int32_t SetString(DataDictionary* self, const char* key, const HostString* value) {
  if (!self || !key) return 0;
  self->values[key] = std::string(View(value));
  return 1;
}

HostString GetString(const DataDictionary* self, const char* key) {
  const auto* value = self && key ? self->Get<std::string>(key) : nullptr;
  return value ? MakeString(*value) : HostString{};
}

}  // namespace host::datadictionary
