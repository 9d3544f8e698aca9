// Text files and byte strings of any content become valid UTF-8 or an error that names the line.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "boundary/host.h"

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const HostStringGroup& string = host::boundary_tables::string;
  const auto* bytes = reinterpret_cast<const char*>(data);

  // What was made valid stays as it is.
  HostString text = string.FromUtf8(bytes, int64_t(size));
  int64_t length = 0;
  const char* utf8 = string.GetUtf8(&text, &length);
  Require(utf8[length] == 0);
  HostString again{};
  HostResult result = string.Decode(utf8, length, &again);
  Require(result.code == HOST_RESULT_OK);
  string.Destroy(&again);

  // Decoding is strict where the other is lenient: it succeeds exactly on what needs no repair.
  HostString decoded{};
  result = string.Decode(bytes, int64_t(size), &decoded);
  std::string_view body(bytes, size);
  const bool marked = body.substr(0, 3) == "\xef\xbb\xbf";
  const bool unchanged = body == std::string_view(utf8, size_t(length));
  Require((result.code == HOST_RESULT_OK) == unchanged);
  if (unchanged) {
    int64_t decodedLength = 0;
    const char* decodedUtf8 = string.GetUtf8(&decoded, &decodedLength);
    Require(body.substr(marked ? 3 : 0) == std::string_view(decodedUtf8, size_t(decodedLength)));
  } else {
    int64_t words = 0;
    Require(std::strncmp(string.GetUtf8(&result.text, &words), "line ", 5) == 0);
    string.Destroy(&result.text);
  }
  string.Destroy(&decoded);
  string.Destroy(&text);
  return 0;
}
