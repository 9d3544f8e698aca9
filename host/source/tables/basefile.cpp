#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "boundary/host.h"
#include "tables/values.h"

struct BaseFile {
  int descriptor = -1;

  BaseFile() = default;
  BaseFile(const BaseFile&) = delete;
  BaseFile& operator=(const BaseFile&) = delete;
  ~BaseFile() {
    if (descriptor >= 0) close(descriptor);
  }
};

namespace host::basefile {

HostResult OpenForReading(const HostFilename* path, BaseFile** result) {
  if (!result) return Failure("no place for the file", HOST_RESULT_ILLEGAL_ARGUMENT);
  *result = nullptr;
  auto file = std::make_unique<BaseFile>();
  do {
    // The opening of a pipe with nobody at its other end waits, unless told not to.
    file->descriptor = open(View(path).data(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  } while (file->descriptor < 0 && errno == EINTR);
  struct stat status {};
  if (file->descriptor < 0 || fstat(file->descriptor, &status))
    return Failure(fmt::format("can't open '{}'", View(path)), std::error_code(errno, std::generic_category()));
  if (S_ISDIR(status.st_mode)) return Failure(fmt::format("'{}' is a directory", View(path)));
  if (!S_ISREG(status.st_mode)) return Failure(fmt::format("'{}' is not a regular file", View(path)));
  *result = file.release();
  return {};
}

int64_t GetLength(BaseFile* self) {
  struct stat status {};
  if (!self || fstat(self->descriptor, &status) || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

int64_t ReadBytes(BaseFile* self, void* buffer, int64_t bytes) {
  if (!self || bytes < 0 || (!buffer && bytes)) return -1;
  int64_t filled = 0;
  while (filled < bytes) {
    const ssize_t got = read(self->descriptor, static_cast<char*>(buffer) + filled, size_t(bytes - filled));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    filled += got;
  }
  return filled;
}

void Close(BaseFile* self) { delete self; }

}  // namespace host::basefile
