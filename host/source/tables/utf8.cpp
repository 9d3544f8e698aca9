#include "tables/utf8.h"

#include <cstdint>

namespace host {
namespace {

struct Sequence {
  size_t length;  // of the sequence, or of the part of it that is there
  bool wellFormed;
};

// The lead byte decides how many bytes follow, and the range of the first of them keeps out
// overlong forms, surrogates and what is above U+10FFFF.
Sequence FirstSequence(std::string_view bytes) {
  const auto lead = uint8_t(bytes[0]);
  if (lead < 0x80) return {1, true};
  if (lead < 0xc2 || lead > 0xf4) return {1, false};
  const size_t length = lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
  uint8_t low = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
  uint8_t high = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
  for (size_t i = 1; i < length; ++i) {
    if (i >= bytes.size() || uint8_t(bytes[i]) < low || uint8_t(bytes[i]) > high) return {i, false};
    low = 0x80;
    high = 0xbf;
  }
  return {length, true};
}

}  // namespace

size_t FindIllFormedUtf8(std::string_view bytes) {
  for (size_t at = 0; at < bytes.size();) {
    const Sequence sequence = FirstSequence(bytes.substr(at));
    if (!sequence.wellFormed) return at;
    at += sequence.length;
  }
  return bytes.npos;
}

std::string ReplaceIllFormedUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Sequence sequence = FirstSequence(bytes);
    text += sequence.wellFormed ? bytes.substr(0, sequence.length) : "\xef\xbf\xbd";
    bytes.remove_prefix(sequence.length);
  }
  return text;
}

}  // namespace host
