// Files, folders and streams of the process.
#ifndef HOST_FILES_FILES_H
#define HOST_FILES_FILES_H

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <variant>
#include <vector>

namespace host {

// Creates a folder and the folders above it.
std::error_code CreateFolders(const std::filesystem::path& folder);

// Renames, or moves to another device. An existing target is an error.
std::error_code Rename(const std::filesystem::path& from, const std::filesystem::path& to);

// Deletes a file, or a folder with all that is in it; a missing path is an error.
std::error_code DeleteTree(const std::filesystem::path& path);

// The whole path of the file behind a link, or of a file that is none; it need not be there.
std::filesystem::path FollowLinks(const std::filesystem::path& path, std::error_code& error);

// Writes a text as it is, past every buffer, so that both streams keep one order.
std::error_code WriteStream(int descriptor, std::string_view text);

// One line on the error stream, behind the program's name; what a terminal would obey is escaped in it.
void Complain(std::string_view line);

// A text, such as the name of a file, with \x.. in place of control characters and of bytes that are no text.
std::string Escaped(std::string_view text);

// Why an operation on files failed, without the words of the library around it.
std::string ReasonOf(const std::exception& error);

struct TomlEntry {
  std::string key;
  std::variant<int64_t, std::string> value;
  uint32_t line;
};

// A file of keys with integers or texts, in the order of the file. Throws std::runtime_error
// with the file, the line and the reason.
std::vector<TomlEntry> ReadToml(const std::filesystem::path& file);

}  // namespace host

#endif
