#include "files/scene_worker.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "app/settings.h"

extern "C" {
#include <sys/pidfd.h>  // that of Debian 12 doesn't say that it is C
}

namespace host {
namespace {

constexpr int kTurn = 50;  // milliseconds between questions whether to stop

// For the C library's memory: the reading library makes millions of small blocks, and large ones again and
// again. Pages are large ones where the machine has them, and memory is taken in large steps and kept.
constexpr const char kMemory[] =
    "GLIBC_TUNABLES=glibc.malloc.hugetlb=1:glibc.malloc.top_pad=67108864:"
    "glibc.malloc.mmap_threshold=1073741824:glibc.malloc.trim_threshold=1073741824";

std::vector<char*> Environment(std::string& memory) {
  std::vector<char*> all{memory.data()};
  for (char** variable = environ; *variable; ++variable)
    if (!std::string_view(*variable).starts_with("GLIBC_TUNABLES=")) all.push_back(*variable);
  all.push_back(nullptr);
  return all;
}

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int Number() const { return number_; }

 private:
  int number_;
};

[[noreturn]] void ThrowSystemError(int error) {
  throw std::runtime_error(fmt::format("the program that reads files: {}", std::strerror(error)));
}

// A child process with a socket for its standard input. It ends with this object.
class Process {
 public:
  Process() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends)) ThrowSystemError(errno);
    socket_ = Descriptor(ends[0]);
    result_ = Descriptor(memfd_create("scene", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (result_.Number() < 0) ThrowSystemError(errno);
    const Descriptor theirs(ends[1]);
    const std::string program = (GetSettings().startup / "scene_files").string();

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, theirs.Number(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, result_.Number(), STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // Ctrl-C of a terminal is for the host, which then stops this.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    std::string argument = program;
    char* arguments[] = {argument.data(), nullptr};
    std::string memory = kMemory;
    const int error =
        posix_spawn(&id_, program.c_str(), &files, &attributes, arguments, Environment(memory).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error) ThrowSystemError(error);
    // A script may wait for any child and take this one's end; its number may be another process's then.
    handle_ = Descriptor(pidfd_open(id_, 0));
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    Kill();
    Wait();
  }

  int Socket() const { return socket_.Number(); }
  // What it wrote to its standard output, which nothing changes any more.
  int Result() const {
    if (fcntl(result_.Number(), F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW))
      ThrowSystemError(errno);
    return result_.Number();
  }

  void Kill() const {
    if (handle_.Number() >= 0) pidfd_send_signal(handle_.Number(), SIGKILL, nullptr, 0);
  }

  // The signal that ended it, after it closed the socket; 0 for none that is known.
  int Wait() {
    siginfo_t info{};
    if (handle_.Number() < 0 || std::exchange(isDone_, true)) return 0;
    while (waitid(P_PIDFD, id_t(handle_.Number()), &info, WEXITED) && errno == EINTR) continue;
    return info.si_code == CLD_KILLED || info.si_code == CLD_DUMPED ? info.si_status : 0;
  }

 private:
  Descriptor socket_, result_, handle_;
  pid_t id_ = 0;
  bool isDone_ = false;
};

class Conversation {
 public:
  Conversation(std::string request, Progress* progress, const char* what)
      : request_(std::move(request)), progress_(progress), what_(what) {}

  // The answer behind those of progress.
  FileAnswer Run() {
    Ask();
    while (!HaveAnswer()) {
      const bool sends = sent_ < request_.size();
      pollfd ready{process_->Socket(), short(POLLIN | (sends ? POLLOUT : 0)), 0};
      const int events = poll(&ready, 1, kTurn);
      if (events < 0 && errno != EINTR) ThrowSystemError(errno);
      if (events == 0) Ask();
      if (events <= 0) continue;
      if (ready.revents & POLLOUT) Send();
      if (ready.revents & (POLLIN | POLLHUP | POLLERR)) Receive();
    }
    return FileAnswer(head_.answer);
  }
  // The process goes while the scene is looked at; giving its memory back takes a while.
  FileScene Scene() {
    process_->Kill();
    const int file = process_->Result();
    struct stat status;
    if (fstat(file, &status)) ThrowSystemError(errno);
    const auto size = size_t(status.st_size);
    if (head_.bytes != size || size == 0) throw std::runtime_error("the program that reads files failed");
    void* at = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    if (at == MAP_FAILED) throw std::bad_alloc();
    const std::shared_ptr<const void> memory(
        at, [size, process = process_](const void* at) { munmap(const_cast<void*>(at), size); });
    FileScene scene = UnpackScene({static_cast<const char*>(at), size});
    scene.memory = memory;
    return scene;
  }
  std::string_view Payload() const {
    return std::string_view(received_).substr(sizeof head_, size_t(head_.bytes));
  }

 private:
  void Send() {
    const ssize_t sent =
        send(process_->Socket(), request_.data() + sent_, request_.size() - sent_, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) return;  // where it is at its end, that is received
    sent_ += size_t(sent);
    if (sent_ < request_.size()) return;
    shutdown(process_->Socket(), SHUT_WR);
    request_ = {};
    sent_ = 0;
  }

  void Receive() {
    char block[1 << 16];
    const ssize_t got = recv(process_->Socket(), block, sizeof block, MSG_DONTWAIT);
    if (got > 0) return void(received_.append(block, size_t(got)));
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
    const int signal = process_->Wait();
    throw std::runtime_error(signal == SIGXCPU   ? "it takes too long"
                             : signal == SIGKILL ? "its reading was ended from outside"
                                                 : "its content can't be read");
  }

  // Takes the reports of progress off.
  bool HaveAnswer() {
    while (received_.size() >= sizeof head_) {
      std::memcpy(&head_, received_.data(), sizeof head_);
      if (head_.answer == kAnswerScene) return true;
      if (head_.bytes > received_.size() - sizeof head_) return false;
      if (head_.answer != kAnswerProgress) return true;
      if (head_.bytes == sizeof fraction_) std::memcpy(&fraction_, Payload().data(), sizeof fraction_);
      received_.erase(0, sizeof head_ + size_t(head_.bytes));
      Ask();
    }
    return false;
  }

  void Ask() const {
    if (progress_ && !progress_->Report(fraction_, what_)) throw Stopped("stopped");
  }

  const std::shared_ptr<Process> process_ = std::make_shared<Process>();
  std::string request_, received_;
  size_t sent_ = 0;
  Progress* const progress_;
  const char* const what_;
  double fraction_ = 0;
  FileAnswerHead head_{};
};

}  // namespace

FileScene RunWorker(const FileRequest& request, Progress* progress, const char* what) {
  ByteText packed;
  Pack(request, packed);
  Conversation conversation(std::move(packed.text), progress, what);
  switch (conversation.Run()) {
    case kAnswerScene:
      return conversation.Scene();
    case kAnswerDone:
      return {};
    case kAnswerFault:
      throw std::runtime_error(std::string(conversation.Payload()));
    default:
      throw std::runtime_error("the program that reads files failed");
  }
}

}  // namespace host
