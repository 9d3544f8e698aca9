#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "boundary/host.h"
#include "tables/values.h"

namespace {

struct Entry {
  std::string name;
  bool folder;
};

}  // namespace

// The folder as it was when the listing started.
struct BrowseFiles {
  std::vector<Entry> entries;
  size_t next = 0;

  const Entry* Current() const { return next ? &entries[next - 1] : nullptr; }
};

namespace host::browsefiles {

BrowseFiles* Create() { return new BrowseFiles; }

HostResult Start(BrowseFiles* self, const HostFilename* folder) {
  if (!self) return Failure("no browser", HOST_RESULT_ILLEGAL_ARGUMENT);
  *self = {};
  std::vector<Entry> entries;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(View(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    // An entry that vanishes meanwhile is no folder.
    std::error_code vanished;
    entries.push_back({entry->path().filename().string(), entry->is_directory(vanished)});
  }
  if (error) return Failure(fmt::format("can't read the folder '{}'", View(folder)), error);
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
  self->entries = std::move(entries);
  return {};
}

int32_t Next(BrowseFiles* self) {
  if (!self || self->next >= self->entries.size()) return 0;
  ++self->next;
  return 1;
}

HostString GetName(const BrowseFiles* self) {
  const Entry* entry = self ? self->Current() : nullptr;
  return entry ? MakeString(entry->name) : HostString{};
}

int32_t IsFolder(const BrowseFiles* self) {
  const Entry* entry = self ? self->Current() : nullptr;
  return entry && entry->folder;
}

int32_t IsHidden(const BrowseFiles* self) {
  const Entry* entry = self ? self->Current() : nullptr;
  return entry && entry->name.starts_with('.');
}

void Free(BrowseFiles* self) { delete self; }

}  // namespace host::browsefiles
