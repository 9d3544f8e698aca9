#include <fmt/format.h>

#include <charconv>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>

#include "app/settings.h"
#include "boundary/host.h"
#include "files/files.h"
#include "scene/links.h"
#include "tables/tables.h"
#include "tables/values.h"

struct GeResource : host::Linkable {
  std::map<int32_t, std::string> texts;
};

namespace host {
namespace {

namespace fs = std::filesystem;

// The names that the hook was asked about. The module makes them worthless by clearing the
// word of the table that points here.
struct SymbolAnswers {
  ResourceSymbolHook hook = nullptr;
  std::map<std::string, bool, std::less<>> known;
};

int32_t ParseId(const fs::path& file, const TomlEntry& entry) {
  int32_t id = 0;
  const char* end = entry.key.data() + entry.key.size();
  const auto [stop, error] = std::from_chars(entry.key.data(), end, id);
  if (error != std::errc() || stop != end)
    throw std::runtime_error(fmt::format("{}, line {}: '{}' is no id", file.string(), entry.line, entry.key));
  return id;
}

void ReadTexts(const fs::path& file, std::map<int32_t, std::string>& texts) {
  for (TomlEntry& entry : ReadToml(file)) {
    const int32_t id = ParseId(file, entry);
    auto* text = std::get_if<std::string>(&entry.value);
    if (!text)
      throw std::runtime_error(fmt::format("{}, line {}: {} is no text", file.string(), entry.line, id));
    texts[id] = std::move(*text);
  }
}

}  // namespace

bool IsKnownSymbol(std::string_view name) {
  auto& answers = Lasting<SymbolAnswers>();
  if (!answers.hook) return false;
  void*& cache = boundary_tables::string.symbolCache;
  if (!cache) answers.known.clear();
  cache = &answers.known;
  if (const auto found = answers.known.find(name); found != answers.known.end()) return found->second;
  HostString text = MakeString(name);
  const bool known = answers.hook(&text) == HOST_SYMBOL_KNOWN;
  Drop(text);
  answers.known.emplace(name, known);
  return known;
}

}  // namespace host

namespace host::resource {

GeResource* Open(const HostFilename* folder) {
  const fs::path strings = fs::path(View(folder)) / "strings";
  const fs::path translated = strings / (FindLanguage() + ".toml");
  auto resource = std::make_unique<GeResource>();
  try {
    ReadTexts(strings / "en-US.toml", resource->texts);
    if (std::error_code missing; fs::exists(translated, missing)) ReadTexts(translated, resource->texts);
  } catch (const std::runtime_error& error) {
    Warn(fmt::format("can't read the texts: {}", error.what()));
    return nullptr;
  }
  return resource.release();
}

void Close(GeResource* self) { DestroyNow(self); }

HostBool SetLink(GeResource* self, HostLink* link) {
  if (!self || !link) return 0;
  self->Link(*link);
  return 1;
}

HostString LoadText(const GeResource* self, int32_t id) {
  if (!self) return {};
  const auto found = self->texts.find(id);
  return found == self->texts.end() ? HostString{} : MakeString(found->second);
}

void SetSymbolHook(ResourceSymbolHook hook) {
  Lasting<SymbolAnswers>().hook = hook;
  boundary_tables::string.symbolCache = nullptr;
}

}  // namespace host::resource
