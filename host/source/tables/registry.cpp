#include <fmt/format.h>

#include <map>
#include <mutex>
#include <string>

#include "boundary/host.h"
#include "tables/tables.h"
#include "tables/values.h"

namespace host::registry {
namespace {

struct Registries {
  std::mutex lock;
  std::map<std::pair<std::string, std::string>, void*> objects;
};

}  // namespace

HostResult Insert(const char* registry, const char* id, void* object) {
  if (!registry || !id || !object)
    return Failure("a registry needs its name, an id and an object", HOST_RESULT_ILLEGAL_ARGUMENT);
  auto& registries = Lasting<Registries>();
  std::lock_guard guard(registries.lock);
  if (registries.objects.try_emplace({registry, id}, object).second) return {};
  return Failure(fmt::format("'{}' is taken in the registry '{}'", id, registry));
}

void* Find(const char* registry, const char* id) {
  if (!registry || !id) return nullptr;
  auto& registries = Lasting<Registries>();
  std::lock_guard guard(registries.lock);
  const auto found = registries.objects.find({registry, id});
  return found == registries.objects.end() ? nullptr : found->second;
}

int32_t Erase(const char* registry, const char* id) {
  if (!registry || !id) return 0;
  auto& registries = Lasting<Registries>();
  std::lock_guard guard(registries.lock);
  return int32_t(registries.objects.erase({registry, id}));
}

}  // namespace host::registry
