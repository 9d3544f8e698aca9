#include "files/bytefile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "files/files.h"

namespace host {
namespace {

constexpr uint64_t kFlushed = 1 << 20;

// A descriptor that is open for reading, or -1. A pipe with nobody at its other end isn't waited for.
int OpenForReading(const std::string& path) {
  int descriptor;
  do {
    descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

}  // namespace

bool IsTooLarge(uint64_t bytes) {
  return bytes > uint64_t(sysconf(_SC_PHYS_PAGES)) * uint64_t(sysconf(_SC_PAGESIZE)) / 2;
}

bool FileReader::Open(const std::string& path) {
  Close();
  descriptor_ = OpenForReading(path);
  struct stat status {};
  if (descriptor_ >= 0 && !fstat(descriptor_, &status) && S_ISREG(status.st_mode)) {
    size_ = uint64_t(status.st_size);
    return true;
  }
  Close();
  return false;
}

void FileReader::Close() {
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
  size_ = nearBytes_ = 0;
}

bool FileReader::Read(uint64_t at, void* to, uint64_t bytes) {
  auto* target = static_cast<char*>(to);
  while (bytes > 0) {
    if (at >= nearAt_ && at - nearAt_ < nearBytes_) {
      const uint64_t part = std::min(bytes, nearAt_ + nearBytes_ - at);
      std::memcpy(target, near_.data() + (at - nearAt_), part);
      target += part;
      at += part;
      bytes -= part;
      continue;
    }
    const bool isLong = bytes >= near_.size();
    const ssize_t got =
        pread(descriptor_, isLong ? target : near_.data(), isLong ? size_t(bytes) : near_.size(), off_t(at));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    if (isLong) {
      target += got;
      at += uint64_t(got);
      bytes -= uint64_t(got);
    } else {
      nearAt_ = at;
      nearBytes_ = uint64_t(got);
    }
  }
  return true;
}

bool FileWriter::Create(const std::string& path) {
  Discard();
  if (path.empty()) return false;
  // Whole, because the process may change its folder.
  std::error_code error;
  target_ = FollowLinks(path, error).native();
  if (error) return false;
  struct stat status {};
  const bool isThere = !stat(target_.c_str(), &status);
  // Another file than a regular one can't be replaced, and one that must not be written is not.
  if (isThere && (!S_ISREG(status.st_mode) || access(target_.c_str(), W_OK))) return false;
  static std::atomic<uint32_t> count{0};
  do {
    beside_ = fmt::format("{}.{}-{}.part", target_, getpid(), count++);
    descriptor_ = open(beside_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (descriptor_ < 0 && (errno == EINTR || errno == EEXIST));
  if (descriptor_ >= 0 && isThere) fchmod(descriptor_, status.st_mode & 07777);
  return descriptor_ >= 0;
}

bool FileWriter::Put(uint64_t at, const char* data, uint64_t bytes) {
  while (bytes > 0 && !hasFailed_) {
    const ssize_t put = pwrite(descriptor_, data, bytes, off_t(at));
    if (put < 0 && errno == EINTR) continue;
    hasFailed_ = put <= 0;
    if (hasFailed_) break;
    data += put;
    at += uint64_t(put);
    bytes -= uint64_t(put);
  }
  return !hasFailed_;
}

bool FileWriter::Flush() {
  if (!Put(written_, buffer_.data(), buffer_.size())) return false;
  written_ += buffer_.size();
  buffer_.clear();
  return true;
}

bool FileWriter::Append(const void* data, uint64_t bytes) {
  if (hasFailed_ || descriptor_ < 0) return false;
  if (bytes == 0) return true;
  if (bytes >= kFlushed && !isKept_) {
    if (!Flush() || !Put(written_, static_cast<const char*>(data), bytes)) return false;
    written_ += bytes;
    return true;
  }
  try {
    buffer_.append(static_cast<const char*>(data), bytes);
  } catch (...) {
    hasFailed_ = true;
    throw;
  }
  return isKept_ || buffer_.size() < kFlushed || Flush();
}

bool FileWriter::Patch(uint64_t at, uint64_t number) {
  const auto* bytes = reinterpret_cast<const char*>(&number);
  // It may lie on both sides of what is written already.
  const uint64_t before = at < written_ ? std::min<uint64_t>(sizeof number, written_ - at) : 0;
  if (hasFailed_ || !Put(at, bytes, before)) return false;
  if (before < sizeof number)
    std::memcpy(buffer_.data() + (at + before - written_), bytes + before, sizeof number - before);
  return true;
}

bool FileWriter::Keep(bool isKept) {
  const bool before = std::exchange(isKept_, isKept);
  if (!isKept && buffer_.size() >= kFlushed) Flush();
  return before;
}

void FileWriter::Cut(uint64_t size) {
  if (size >= written_ && size < Size()) buffer_.resize(size - written_);
}

bool FileWriter::Finish() {
  const bool isWhole = !hasFailed_ && descriptor_ >= 0 && Flush() && !fsync(descriptor_) &&
                       !close(std::exchange(descriptor_, -1)) && !rename(beside_.c_str(), target_.c_str());
  if (isWhole) beside_.clear();
  Discard();
  return isWhole;
}

void FileWriter::Discard() {
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
  if (!beside_.empty()) unlink(std::exchange(beside_, {}).c_str());
  hasFailed_ = isKept_ = false;
  buffer_ = {};
  written_ = 0;
}

}  // namespace host
