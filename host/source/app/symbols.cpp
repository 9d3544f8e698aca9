#include "app/symbols.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <stdexcept>

#include "files/files.h"

namespace host {
namespace fs = std::filesystem;
namespace {

std::vector<fs::path> TomlFiles(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".toml") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

struct Place {
  fs::path file;
  uint32_t line;
  int32_t value;
};

class Reader {
 public:
  void ReadFile(const fs::path& file) {
    for (const TomlEntry& entry : ReadToml(file)) {
      const auto* value = std::get_if<int64_t>(&entry.value);
      using Limits = std::numeric_limits<int32_t>;
      if (!value || *value < Limits::min() || *value > Limits::max()) {
        Fault(file, entry, "is no 32-bit integer");
        continue;
      }
      Take(file, entry, int32_t(*value));
    }
  }

  SymbolTable table;

 private:
  void Take(const fs::path& file, const TomlEntry& entry, int32_t value) {
    const auto [known, added] = places_.try_emplace(entry.key, Place{file, entry.line, value});
    if (added) {
      table.symbols.push_back({entry.key, value});
    } else if (const Place& first = known->second; first.value != value) {
      Fault(file, entry, fmt::format("has another value in {}, line {}", first.file.string(), first.line));
    }
  }

  void Fault(const fs::path& file, const TomlEntry& entry, std::string_view what) {
    table.faults.push_back(
        fmt::format("{}, line {}: the constant '{}' {}", file.string(), entry.line, entry.key, what));
  }

  std::map<std::string, Place, std::less<>> places_;
};

}  // namespace

SymbolTable ReadSymbols(const fs::path& folder) {
  Reader reader;
  try {
    for (const fs::path& file : TomlFiles(folder)) {
      try {
        reader.ReadFile(file);
      } catch (const std::runtime_error& error) {
        reader.table.faults.push_back(error.what());
      }
    }
  } catch (const fs::filesystem_error& error) {
    reader.table.faults.push_back(
        fmt::format("can't read the constants in '{}': {}", folder.string(), error.code().message()));
  }
  return std::move(reader.table);
}

}  // namespace host
