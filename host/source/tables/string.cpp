#include <fmt/format.h>

#include <algorithm>

#include "boundary/host.h"
#include "tables/utf8.h"
#include "tables/values.h"

namespace host::string {

HostString FromBytes(const char* bytes, int64_t size) {
  return bytes && size > 0 ? MakeString({bytes, size_t(size)}) : HostString{};
}

HostString FromUtf8(const char* utf8, int64_t size) {
  if (!utf8 || size <= 0) return {};
  const std::string_view bytes(utf8, size_t(size));
  if (FindIllFormedUtf8(bytes) == bytes.npos) return MakeString(bytes);
  return MakeString(ReplaceIllFormedUtf8(bytes));
}

HostString Copy(const HostString* self) noexcept { return Share(self); }

void Destroy(HostString* self) noexcept {
  if (self) Drop(*self);
}

const char* GetUtf8(const HostString* self, int64_t* size) noexcept {
  const std::string_view text = View(self);
  if (size) *size = int64_t(text.size());
  return text.data();
}

HostResult Decode(const void* bytes, int64_t size, HostString* result) {
  if (!result || size < 0 || (!bytes && size))
    return Failure("no bytes to decode", HOST_RESULT_ILLEGAL_ARGUMENT);
  std::string_view text(static_cast<const char*>(bytes), size_t(size));
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  const size_t wrong = FindIllFormedUtf8(text);
  if (wrong != text.npos) {
    const auto line = 1 + std::count(text.begin(), text.begin() + ptrdiff_t(wrong), '\n');
    return Failure(fmt::format("line {}: byte {:#04x} is not UTF-8", line, uint8_t(text[wrong])));
  }
  *result = MakeString(text);
  return {};
}

}  // namespace host::string
