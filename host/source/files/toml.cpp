#include "files/toml.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "files/files.h"

namespace host {

void RefuseToml(const std::filesystem::path& file, uint32_t line, std::string_view reason) {
  throw std::runtime_error(fmt::format("{}, line {}: {}", file.string(), line, reason));
}

toml::table ParseToml(const std::filesystem::path& file) {
  try {
    return toml::parse_file(file.string());
  } catch (const toml::parse_error& error) {
    // A file that can't be opened has no line.
    if (!error.source().begin)
      throw std::runtime_error(fmt::format("{}: {}", file.string(), error.description()));
    RefuseToml(file, error.source().begin.line, error.description());
  }
}

std::vector<TomlEntry> ReadToml(const std::filesystem::path& file) {
  const toml::table table = ParseToml(file);
  std::vector<std::pair<toml::source_position, TomlEntry>> placed;
  for (const auto& [key, node] : table) {
    const toml::source_position place = key.source().begin;
    TomlEntry entry{std::string(key.str()), int64_t(0), place.line};
    if (const auto* number = node.as_integer()) {
      entry.value = number->get();
    } else if (const auto* text = node.as_string()) {
      entry.value = text->get();
    } else {
      RefuseToml(file, place.line, fmt::format("'{}' is neither an integer nor a text", key.str()));
    }
    placed.emplace_back(place, std::move(entry));
  }
  // The table is sorted by key; the order of the file is that of the places.
  std::sort(placed.begin(), placed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<TomlEntry> entries;
  entries.reserve(placed.size());
  for (auto& [place, entry] : placed) entries.push_back(std::move(entry));
  return entries;
}

}  // namespace host
