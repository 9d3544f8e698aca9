#include "files/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "tables/utf8.h"

namespace host {
namespace fs = std::filesystem;
namespace {

std::error_code LastError() { return {errno, std::generic_category()}; }

std::error_code MoveToOtherDevice(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
  if (error) {
    std::error_code ignored;
    fs::remove_all(to, ignored);
    return error;
  }
  fs::remove_all(from, error);
  return error;
}

}  // namespace

std::error_code CreateFolders(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  return error;
}

std::error_code Rename(const fs::path& from, const fs::path& to) {
  if (!renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE)) return {};
  // Some file systems can't refuse an existing target by themselves.
  if (errno != EINVAL && errno != ENOSYS && errno != EXDEV) return LastError();
  std::error_code missing;
  if (fs::exists(fs::symlink_status(to, missing))) return std::make_error_code(std::errc::file_exists);
  if (!rename(from.c_str(), to.c_str())) return {};
  return errno == EXDEV ? MoveToOtherDevice(from, to) : LastError();
}

std::error_code DeleteTree(const fs::path& path) {
  std::error_code error;
  const auto removed = fs::remove_all(path, error);
  if (!error && removed == 0) return std::make_error_code(std::errc::no_such_file_or_directory);
  return error;
}

fs::path FollowLinks(const fs::path& path, std::error_code& error) {
  constexpr int kMostLinks = 40;  // as the system follows
  fs::path file = fs::absolute(path, error);
  std::error_code missing;
  for (int links = 0; !error && fs::is_symlink(fs::symlink_status(file, missing)); ++links) {
    if (links == kMostLinks) error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    if (error) break;
    const fs::path goal = file.parent_path() / fs::read_symlink(file, error);
    if (!error) file = fs::canonical(goal.parent_path(), error) / goal.filename();
  }
  return file;
}

std::error_code WriteStream(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(size_t(written));
    } else if (errno == EAGAIN) {
      pollfd ready{descriptor, POLLOUT, 0};
      poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return LastError();
    }
  }
  return {};
}

void Complain(std::string_view line) { WriteStream(STDERR_FILENO, fmt::format("qlxpy: {}\n", Escaped(line))); }

std::string Escaped(std::string_view text) {
  std::string escaped;
  const auto escape = [&](char byte) { escaped += fmt::format("\\x{:02x}", uint8_t(byte)); };
  while (!text.empty()) {
    const std::string_view good = text.substr(0, FindIllFormedUtf8(text));
    for (size_t i = 0; i < good.size(); ++i) {
      // U+0080 to U+009F are control characters as well, of two bytes.
      if (good[i] == '\xc2' && uint8_t(good[i + 1]) < 0xa0)
        escape(good[++i]);
      else if (uint8_t(good[i]) < ' ' || good[i] == 127)
        escape(good[i]);
      else
        escaped += good[i];
    }
    text.remove_prefix(good.size());
    if (text.empty()) break;
    escape(text[0]);
    text.remove_prefix(1);
  }
  return escaped;
}

std::string ReasonOf(const std::exception& error) {
  const auto* fault = dynamic_cast<const std::filesystem::filesystem_error*>(&error);
  return fault ? fault->code().message() : error.what();
}

}  // namespace host
