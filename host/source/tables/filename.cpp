#include <fmt/format.h>

#include <string>

#include "boundary/host.h"
#include "tables/values.h"

namespace host::filename {

void Construct(HostFilename* self) { *self = {}; }

HostFilename Copy(const HostFilename* self) { return Share(self); }

int32_t CopyFrom(HostFilename* self, const HostFilename* other) {
  if (!self) return 0;
  const HostFilename copy = Share(other);
  Drop(*self);
  *self = copy;
  return 1;
}

void Destroy(HostFilename* self) {
  if (self) Drop(*self);
}

HostFilename FromString(const HostString* text) { return MakeFilename(View(text)); }

HostString GetString(const HostFilename* self) { return MakeString(View(self)); }

// The root is its own folder.
HostFilename GetDirectory(const HostFilename* self) {
  const std::string_view path = View(self);
  const size_t separator = path.rfind('/');
  if (separator == path.npos) return {};
  return MakeFilename(path.substr(0, separator ? separator : 1));
}

HostString GetFileString(const HostFilename* self) {
  const std::string_view path = View(self);
  const size_t separator = path.rfind('/');
  return MakeString(separator == path.npos ? path : path.substr(separator + 1));
}

HostResult Append(HostFilename* self, const HostString* name) {
  const std::string_view component = View(name);
  if (!self) return Failure("no path to append to", HOST_RESULT_ILLEGAL_ARGUMENT);
  if (component.empty()) return Failure("the name to append is empty", HOST_RESULT_ILLEGAL_ARGUMENT);
  if (component == "." || component == ".." ||
      component.find_first_of(std::string_view("/\0", 2)) != component.npos)
    return Failure(fmt::format("'{}' is not the name of a file or folder", component),
                   HOST_RESULT_ILLEGAL_ARGUMENT);
  std::string path(View(self));
  if (!path.empty() && path.back() != '/') path += '/';
  const HostFilename joined = MakeFilename(path.append(component));
  Drop(*self);
  *self = joined;
  return {};
}

int32_t Content(const HostFilename* self) { return !View(self).empty(); }

}  // namespace host::filename
