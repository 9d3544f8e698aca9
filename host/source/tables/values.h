// The host's own view of the boundary's one-word values.
#ifndef HOST_TABLES_VALUES_H
#define HOST_TABLES_VALUES_H

#include <string_view>
#include <system_error>

#include "kelvar.framework/source/tables/t_types.h"

namespace host {

// A value that the receiver destroys. The bytes are taken as they are.
HostString MakeString(std::string_view text);

// Trailing separators go, except that of the root. A text with a zero byte names no file: empty.
HostFilename MakeFilename(std::string_view path);

// Valid while the value lives unchanged, with a zero behind the text; null is empty.
std::string_view View(const HostString* text);
std::string_view View(const HostFilename* path);

// One more owner of the same text.
HostString Share(const HostString* text);
HostFilename Share(const HostFilename* path);

// One owner less; the word becomes null.
void Drop(HostString& text);
void Drop(HostFilename& path);

// `file` and `line` are those of the caller.
HostResult Failure(std::string_view text, int32_t code = HOST_RESULT_ERROR, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE());

// The text is `what`, a colon, and the system's reason.
HostResult Failure(std::string_view what, std::error_code reason, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE());

}  // namespace host

#endif
