#include "app/module_loader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <thread>

#include "app/settings.h"
#include "boundary/host.h"

namespace host {
namespace {

// Waiting threads poll, so a lock that was released needs no wake-up.
void Yield(CpuYieldRecord* record, void*) {
  if (record->count == std::numeric_limits<int32_t>::max()) return;
  if (record->count > 4096) {
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  } else {
    std::this_thread::yield();
  }
}

void* Export(void* library, const std::filesystem::path& file, const char* name) {
  void* symbol = dlsym(library, name);
  if (!symbol) throw std::runtime_error(fmt::format("the module '{}' does not export {}", file.string(), name));
  return symbol;
}

}  // namespace

Module::Module(std::filesystem::path file) : file_(std::move(file)) {
  void* library = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library)
    throw std::runtime_error(fmt::format("can't load the module '{}': {}", file_.string(), dlerror()));
  main_ = reinterpret_cast<QlxMain>(Export(library, file_, "qlx_main"));
  auto& tavor = *static_cast<TavorRecord*>(Export(library, file_, "g_tavor"));
  auto& yield = *static_cast<CpuYieldDelegate*>(Export(library, file_, "g_CpuYieldDelegate"));
  tavor = {sizeof(TavorRecord), 1, &boundary_tables::ResolveService, 0, 0};
  yield = &Yield;
}

bool Module::Message(int32_t id) const {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the id travels as a number
  return Call(QLX_ACTION_MESSAGE, reinterpret_cast<void*>(intptr_t(id))) == 1;
}

std::filesystem::path FindModule() {
  const char* chosen = std::getenv("QLX_MODULE");
  return chosen && *chosen ? std::filesystem::absolute(chosen) : GetSettings().startup / "qlx.so";
}

}  // namespace host
