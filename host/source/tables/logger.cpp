#include <fmt/format.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

#include "boundary/host.h"
#include "files/files.h"
#include "tables/tables.h"
#include "tables/values.h"

namespace {

// Output that is asked for is of spdlog's level "info"; all else is about the program.
spdlog::level::level_enum SpdlogLevel(int32_t level) {
  if (level <= LOGGER_LEVEL_CRITICAL) return spdlog::level::critical;
  if (level <= LOGGER_LEVEL_ERROR) return spdlog::level::err;
  if (level <= LOGGER_LEVEL_WARNING) return spdlog::level::warn;
  return level == LOGGER_LEVEL_OUTPUT ? spdlog::level::info : spdlog::level::debug;
}

// The error of the calling thread's last text; spdlog's sinks return nothing.
thread_local int32_t lastError = 0;

// The streams of the process. Texts go out as they are; WriteStream keeps no state, so there
// is nothing to lock.
class StreamSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  void sink_it_(const spdlog::details::log_msg& message) override {
    lastError = host::WriteStream(message.level == spdlog::level::info ? STDOUT_FILENO : STDERR_FILENO,
                                  {message.payload.data(), message.payload.size()})
                    .value();
  }
  void flush_() override {}
};

std::shared_ptr<StreamSink> ProcessStreams() {
  static const auto& sink = *new std::shared_ptr<StreamSink>(std::make_shared<StreamSink>());
  return sink;
}

}  // namespace

// In this application both outputs are the streams of the process. A logger with both shows a
// text once, up to the higher of their levels.
struct Logger {
  explicit Logger(const std::string& name) : log(name, ProcessStreams()) {
    log.set_level(spdlog::level::trace);
  }

  void Raise(int32_t level) {
    int32_t current = shown;
    while (current < level && !shown.compare_exchange_weak(current, level)) {
    }
  }

  spdlog::logger log;
  std::atomic<int32_t> shown{0};  // texts up to this level; 0 with no output
};

namespace host {
namespace {

struct Loggers {
  std::mutex lock;
  std::map<std::string, std::unique_ptr<Logger>, std::less<>> byId;
};

}  // namespace

void Warn(std::string_view text) {
  logger::GetDefault()->log.log(spdlog::level::warn, spdlog::string_view_t(Escaped(text) + "\n"));
}

}  // namespace host

namespace host::logger {

Logger* Create(const char* id, const HostString* name) {
  if (!id) return nullptr;
  auto& loggers = Lasting<Loggers>();
  std::lock_guard guard(loggers.lock);
  auto& logger = loggers.byId[id];
  if (!logger) logger = std::make_unique<Logger>(std::string(View(name)));
  return logger.get();
}

Logger* GetDefault() {
  static Logger* logger = [] {
    auto* made = new Logger("default");
    made->Raise(LOGGER_LEVEL_ALL);
    return made;
  }();
  return logger;
}

HostResult AddOutput(Logger* logger, int32_t output, int32_t level) {
  if (!logger) return Failure("no logger", HOST_RESULT_ILLEGAL_ARGUMENT);
  if (output != LOGGER_OUTPUT_DEFAULT && output != LOGGER_OUTPUT_APPLICATION)
    return Failure(fmt::format("there is no logger output {}", output), HOST_RESULT_ILLEGAL_ARGUMENT);
  logger->Raise(level);
  return {};
}

int32_t Write(Logger* logger, int32_t, int32_t level, const HostString* text, const char* file, int32_t line) {
  if (!logger || level > logger->shown) return 0;
  const std::string_view shown = View(text);
  lastError = 0;
  logger->log.log(spdlog::source_loc(file, line, ""), SpdlogLevel(level), {shown.data(), shown.size()});
  return lastError;
}

void Remove(Logger* logger) {
  auto& loggers = Lasting<Loggers>();
  std::lock_guard guard(loggers.lock);
  std::erase_if(loggers.byId, [&](const auto& entry) { return entry.second.get() == logger; });
}

}  // namespace host::logger
