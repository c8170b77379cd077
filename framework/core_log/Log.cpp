#include "framework/core_log/Log.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/syslog_sink.h>
#include <syslog.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <memory>
#include <mutex>

#include "framework/core_log/FileSink.h"
#include "framework/core_log/LineText.h"

namespace core_log {

namespace detail {
constinit LevelCell serviceCell{kDefaultLevel};
}

namespace {

constinit std::atomic<std::uint64_t> lost{0};

/// The severity that syslog shows for a level.
spdlog::level::level_enum severity(int level) {
  if (level >= 8) {
    return spdlog::level::err;
  }
  if (level >= 6) {
    return spdlog::level::warn;
  }
  if (level == 5) {
    return spdlog::level::info;
  }
  return level >= 2 ? spdlog::level::debug : spdlog::level::trace;
}

std::unique_ptr<spdlog::logger> makeLogger(spdlog::sink_ptr sink) {
  auto logger = std::make_unique<spdlog::logger>("service", std::move(sink));
  logger->set_level(spdlog::level::trace);
  logger->set_error_handler(
      [](const std::string&) { lost.fetch_add(1, std::memory_order_relaxed); });
  return logger;
}

/// Where lines go.
class Routes {
 public:
  Routes() : file_(std::make_shared<FileSink>()), logger_(makeLogger(file_)) {
    logger_->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %v");
  }

  void setTarget(LogProvider* provider, bool syslog) {
    std::unique_ptr<spdlog::logger> logger;
    if (syslog) {
      logger = makeLogger(
          std::make_shared<spdlog::sinks::syslog_sink_st>("", LOG_PID, LOG_DAEMON, false));
    }
    const std::lock_guard<std::mutex> guard(mutex_);
    provider_ = provider;
    syslog_ = std::move(logger);
  }

  void setObserver(Observer* observer) {
    const std::lock_guard<std::mutex> guard(mutex_);
    observer_ = observer;
  }

  std::error_code setFile(const std::string& path) {
    int descriptor = -1;
    if (const std::error_code error = openLogFile(path, descriptor)) {
      return error;
    }
    const std::lock_guard<std::mutex> guard(mutex_);
    file_->use(descriptor);
    return {};
  }

  void deliver(const char* function, int level, const std::string& text) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (observer_ != nullptr) {
      observer_->onLine(level, function, text);
    }
    if (provider_ != nullptr) {
      provider_->write(level, function, text);
      if (!syslog_) {
        return;
      }
    }
    std::string line = std::to_string(level);
    line.append(" ").append(function).append(": ").append(text);
    if (provider_ == nullptr) {
      logger_->log(severity(level), spdlog::string_view_t(line));
    }
    if (syslog_) {
      syslog_->log(severity(level), spdlog::string_view_t(line));
    }
  }

 private:
  const std::shared_ptr<FileSink> file_;
  const std::unique_ptr<spdlog::logger> logger_;

  // Held while a line is delivered, so that a setter waits for the line under way. Formatting, the
  // longer part, is done before.
  std::mutex mutex_;
  // Guarded by mutex_, as are the sinks.
  LogProvider* provider_ = nullptr;
  Observer* observer_ = nullptr;
  std::unique_ptr<spdlog::logger> syslog_;
};

/// Never destroyed: threads that outlive main still log.
Routes& routes() {
  static Routes* const instance = new Routes;
  return *instance;
}

}  // namespace

void init(LogProvider* provider, bool syslog) {
  routes().setTarget(provider, syslog);
}

std::error_code setFile(const std::string& path) {
  return routes().setFile(path);
}

bool setLevel(int level) {
  return serviceLevel().set(level);
}

void setObserver(Observer* observer) {
  routes().setObserver(observer);
}

std::uint64_t lostLines() {
  return lost.load(std::memory_order_relaxed);
}

void detail::emit(const char* function, int level, const char* format, ...) noexcept {
  const int savedErrno = errno;
  std::va_list args;
  va_start(args, format);
  try {
    const std::string text = formatLine(format, args);
    routes().deliver(function != nullptr ? function : "?", level, text);
  } catch (...) {
    lost.fetch_add(1, std::memory_order_relaxed);
  }
  va_end(args);
  errno = savedErrno;
}

}  // namespace core_log
