// Declarative files that are more than flat keys.
#ifndef HOST_FILES_TOML_H
#define HOST_FILES_TOML_H

#include <toml++/toml.h>

#include <filesystem>
#include <string_view>

namespace host {

// Throws std::runtime_error with the file, the line and the reason.
toml::table ParseToml(const std::filesystem::path& file);

// Throws the error that ParseToml throws.
[[noreturn]] void RefuseToml(const std::filesystem::path& file, uint32_t line, std::string_view reason);

}  // namespace host

#endif
