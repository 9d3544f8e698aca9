// Between the host's texts and the C++ library's.
#ifndef KELVAR_TEXT_H
#define KELVAR_TEXT_H

#include <string_view>

#include "kelvar/filename.h"
#include "kelvar/string.h"

namespace kelvar {

inline String Text(std::string_view text) { return String::FromUtf8(text.data(), int64_t(text.size())); }

// For names of files and output: bytes that are not UTF-8 stay, where the host can keep them.
inline String Bytes(std::string_view bytes) {
  String text = String::FromBytes(bytes.data(), int64_t(bytes.size()));
  return text.Word()->word || bytes.empty() ? text : Text(bytes);
}

// Valid while `text` lives unchanged.
inline std::string_view View(const String& text) {
  int64_t size = 0;
  const char* utf8 = text.GetUtf8(&size);
  return {utf8, size_t(size)};
}

}  // namespace kelvar

#endif
