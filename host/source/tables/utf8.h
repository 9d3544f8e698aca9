// UTF-8 as the host reads it from foreign bytes.
#ifndef HOST_TABLES_UTF8_H
#define HOST_TABLES_UTF8_H

#include <string>
#include <string_view>

namespace host {

// The place of the first byte that belongs to no well-formed sequence, or npos.
size_t FindIllFormedUtf8(std::string_view bytes);

// Each longest part of a sequence that cannot go on becomes one U+FFFD.
std::string ReplaceIllFormedUtf8(std::string_view bytes);

}  // namespace host

#endif
