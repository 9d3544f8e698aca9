#include "files/worker/streams.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <assimp/IOStream.hpp>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "files/worker/worker.h"

namespace host {
namespace fs = std::filesystem;
namespace {

class Stream : public Assimp::IOStream {
 public:
  // What stands ahead of `begin` is not seen.
  Stream(FileFolder& folder, FILE* file, size_t begin, size_t size, bool writes)
      : folder_(folder), file_(file), begin_(begin), size_(size), writes_(writes) {
    if (begin_ > 0) Seek(0, aiOrigin_SET);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() override {
    if (writes_ && (std::fflush(file_) || fsync(fileno(file_)))) folder_.Fail(errno);
    std::fclose(file_);
  }

  size_t Read(void* buffer, size_t size, size_t count) override {
    const size_t read = std::fread(buffer, size, count, file_);
    if (size_ > 0) ReportProgress(0.5 * double(Tell()) / double(size_));
    return read;
  }
  size_t Write(const void* buffer, size_t size, size_t count) override {
    const size_t written = std::fwrite(buffer, size, count, file_);
    if (written < count) folder_.Fail(errno);
    return written;
  }
  aiReturn Seek(size_t offset, aiOrigin origin) override {
    const int whence = origin == aiOrigin_SET ? SEEK_SET : origin == aiOrigin_CUR ? SEEK_CUR : SEEK_END;
    if (origin == aiOrigin_SET) offset += begin_;
    return std::fseek(file_, long(offset), whence) ? aiReturn_FAILURE : aiReturn_SUCCESS;
  }
  size_t Tell() const override { return size_t(std::max(0l, std::ftell(file_) - long(begin_))); }
  size_t FileSize() const override { return size_; }
  void Flush() override { std::fflush(file_); }

 private:
  FileFolder& folder_;
  FILE* file_;
  size_t begin_, size_;
  bool writes_;
};

// The library takes a byte order mark for a part of the first line of an OBJ, or of its materials.
size_t MarkLength(const fs::path& scene, FILE* file) {
  const std::string extension = scene.extension().native();
  if (strcasecmp(extension.c_str(), ".obj")) return 0;
  char mark[4] = {};
  const bool hasMark = std::fread(mark, 1, 3, file) == 3 && !std::strcmp(mark, "\xef\xbb\xbf");
  std::rewind(file);
  return hasMark ? 3 : 0;
}

}  // namespace

FileFolder::FileFolder(fs::path file, bool writes) : file_(fs::absolute(file)), writes_(writes) {
  std::error_code error;
  folder_ = fs::canonical(file_.parent_path(), error);
  if (!error) goalFolder_ = writes ? folder_ : fs::canonical(file_, error).parent_path();
  if (error) throw std::runtime_error(error.message());
}

// The library hands on what a file says, which may be a URI.
fs::path FileFolder::Find(const char* name) const {
  if (name == file_) return file_;
  const fs::path path = FindAs(name);
  return path.empty() && !writes_ ? FindAs(Unescaped(name)) : path;
}

fs::path FileFolder::FindAs(const fs::path& name) const {
  const fs::path found = FindAt(folder_ / name);
  if (!found.empty() || goalFolder_ == folder_) return found;
  return FindAt(goalFolder_ / (name.is_relative() ? name : name.lexically_relative(file_.parent_path())));
}

fs::path FileFolder::FindAt(const fs::path& path) const {
  std::error_code error;
  const fs::path real = fs::weakly_canonical(path, error);
  if (error) return {};
  const auto isIn = [&](const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), real.begin(), real.end()).first == folder.end();
  };
  if (!isIn(folder_) && !isIn(goalFolder_)) return {};
  if (writes_) return real.parent_path() == folder_ ? real : fs::path();
  return fs::is_regular_file(real, error) ? real : fs::path();
}

bool FileFolder::Exists(const char* name) const {
  std::error_code error;
  const fs::path path = Find(name);
  return !path.empty() && fs::exists(path, error);
}

Assimp::IOStream* FileFolder::Open(const char* name, const char* mode) {
  const fs::path path = Find(name);
  const bool writes = std::strchr(mode, 'w');
  if (path.empty() || writes != writes_) {
    if (writes_) Fail(EACCES);
    return nullptr;
  }
  FILE* file = std::fopen(path.c_str(), writes ? "wb" : "rb");
  if (!file) {
    if (writes_) Fail(errno);
    return nullptr;
  }
  std::error_code error;
  const size_t begin = writes ? 0 : MarkLength(file_, file);
  const auto size = writes ? 0 : fs::file_size(path, error);
  return new Stream(*this, file, begin, error ? 0 : size_t(size) - begin, writes);
}

void FileFolder::Close(Assimp::IOStream* stream) { delete stream; }

bool FileFolder::ComparePaths(const char* one, const char* second) const { return Find(one) == Find(second); }

void FileFolder::Fail(int error) {
  if (fault_.empty()) fault_ = std::strerror(error);
}

std::string Unescaped(std::string_view uri) {
  std::string path;
  for (size_t i = 0; i < uri.size(); ++i) {
    unsigned code = 0;
    const char* digits = uri.data() + i + 1;
    const bool isCode = uri[i] == '%' && i + 2 < uri.size() &&
                        std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2 && code != 0;
    path += isCode ? char(code) : uri[i];
    if (isCode) i += 2;
  }
  return path;
}

std::string Escaped(std::string_view path) {
  constexpr std::string_view kReserved = " \"#%<>?[\\]^`{|}";
  std::string uri;
  for (const char c : path) {
    if (uint8_t(c) > ' ' && c != 127 && kReserved.find(c) == kReserved.npos) {
      uri += c;
      continue;
    }
    constexpr char kDigits[] = "0123456789ABCDEF";
    uri += {'%', kDigits[uint8_t(c) >> 4], kDigits[uint8_t(c) & 15]};
  }
  return uri;
}

bool Handler::Update(float fraction) {
  if (fraction >= 0) ReportProgress(fraction);
  return true;
}

}  // namespace host
