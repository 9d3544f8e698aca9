#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include "files/worker/worker.h"

namespace host {
namespace {

constexpr int kHost = STDIN_FILENO;  // a socket in both directions

void Send(const char* bytes, size_t size) {
  while (size > 0) {
    const ssize_t sent = send(kHost, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) _exit(1);  // nobody waits for it any more
    bytes += sent;
    size -= size_t(sent);
  }
}

void Answer(FileAnswer answer, std::string_view bytes = {}) {
  const FileAnswerHead head{answer, 0, bytes.size()};
  Send(reinterpret_cast<const char*>(&head), sizeof head);
  Send(bytes.data(), bytes.size());
}

// The file that the host looks at afterwards.
class Result final : public ByteSink {
 public:
  void Take(const void* bytes, size_t size) override {
    if (size == 0) return;
    if (size < sizeof block_ - filled_) {
      std::memcpy(block_ + filled_, bytes, size);
      filled_ += size;
      return;
    }
    Flush();
    Write(static_cast<const char*>(bytes), size);
  }
  uint64_t Finish() {
    Flush();
    return written_;
  }

 private:
  void Flush() { Write(block_, std::exchange(filled_, 0)); }
  void Write(const char* bytes, size_t size) {
    while (size > 0) {
      const ssize_t wrote = write(STDOUT_FILENO, bytes, size);
      if (wrote < 0 && errno == EINTR) continue;
      if (wrote < 0)
        throw std::runtime_error(errno == EFBIG ? "what is in it is larger than the process's limit of files"
                                                : std::strerror(errno));
      bytes += wrote;
      size -= size_t(wrote);
      written_ += uint64_t(wrote);
    }
  }

  char block_[1 << 16];
  size_t filled_ = 0;
  uint64_t written_ = 0;
};

std::string ReceiveAll() {
  std::string bytes;
  char block[1 << 16];
  for (;;) {
    const ssize_t got = recv(kHost, block, sizeof block, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) _exit(1);
    if (got == 0) return bytes;
    bytes.append(block, size_t(got));
  }
}

// What the process has by now, of what RLIMIT_DATA counts.
uint64_t DataInUse() {
  unsigned long long kilobytes = 0;
  if (FILE* status = std::fopen("/proc/self/status", "r")) {
    char line[256];
    while (std::fgets(line, sizeof line, status))
      if (std::sscanf(line, "VmData: %llu kB", &kilobytes) == 1) break;
    std::fclose(status);
  }
  return uint64_t(kilobytes) << 10;
}

void Limit(__rlimit_resource resource, uint64_t value) {
  rlimit limit{};
  if (getrlimit(resource, &limit)) return;
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, value);
  setrlimit(resource, &limit);
}

// A file that makes the library ask for memory without end is told apart from a large one by its size.
void LimitUse(const FileRequest& request, size_t sent) {
  std::error_code error;
  const uint64_t fileSize = request.loader.empty() ? 0 : std::filesystem::file_size(request.path, error);
  const uint64_t size = (error ? 0 : fileSize) + sent;
  const uint64_t machine = uint64_t(sysconf(_SC_PHYS_PAGES)) * uint64_t(sysconf(_SC_PAGESIZE));
  Limit(RLIMIT_DATA, DataInUse() + std::min<uint64_t>((uint64_t(4) << 30) + 64 * size, machine / 4 * 3));
  Limit(RLIMIT_CPU, uint64_t(request.seconds) + size / (1 << 20));
  Limit(RLIMIT_CORE, 0);
  // The answer is no file on a disk.
  if (!request.loader.empty()) Limit(RLIMIT_FSIZE, RLIM_INFINITY);
}

}  // namespace

void ReportProgress(double fraction) {
  using Clock = std::chrono::steady_clock;
  static Clock::time_point latest;
  if (Clock::now() - latest < std::chrono::milliseconds(20)) return;
  latest = Clock::now();
  Answer(kAnswerProgress, {reinterpret_cast<const char*>(&fraction), sizeof fraction});
}

}  // namespace host

int main() {
  // A file that can't grow is told by the call that writes.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const std::string received = host::ReceiveAll();
    const host::FileRequest request = host::UnpackRequest(received);
    host::LimitUse(request, received.size());
    if (request.loader.empty()) {
      host::WriteScene(request);
      host::Answer(host::kAnswerDone);
    } else {
      auto& result = *new host::Result;
      host::Pack(host::ReadScene(request), result);
      const host::FileAnswerHead head{host::kAnswerScene, 0, result.Finish()};
      host::Send(reinterpret_cast<const char*>(&head), sizeof head);
    }
  } catch (const std::bad_alloc&) {
    host::Answer(host::kAnswerFault, "it takes too much memory");
  } catch (const std::exception& error) {
    // The library makes texts of exceptions.
    const std::string_view text = error.what();
    host::Answer(host::kAnswerFault, text == "std::bad_alloc" ? "it takes too much memory" : text);
  }
  // What the library still has goes with the process.
  _exit(0);
}
