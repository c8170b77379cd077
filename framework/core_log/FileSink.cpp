#include "framework/core_log/FileSink.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace core_log {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code makePrivate(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    return lastError();
  }
  if (!S_ISREG(status.st_mode)) {
    return std::make_error_code(std::errc::invalid_argument);
  }
  if ((status.st_mode & 07777U) != kOwnerOnly && ::fchmod(descriptor, kOwnerOnly) != 0) {
    return lastError();
  }
  return {};
}

}  // namespace

std::error_code openLogFile(const std::string& path, int& descriptor) {
  if (path.empty()) {
    descriptor = STDERR_FILENO;
    return {};
  }
  // Non-blocking, or a FIFO without a reader would hang the caller; a regular file ignores it.
  const int opened =
      ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
             kOwnerOnly);
  if (opened < 0) {
    return lastError();
  }
  if (const std::error_code error = makePrivate(opened)) {
    ::close(opened);
    return error;
  }
  descriptor = opened;
  return {};
}

FileSink::~FileSink() {
  use(STDERR_FILENO);
}

void FileSink::use(int descriptor) {
  if (descriptor_ != STDERR_FILENO) {
    ::close(descriptor_);
  }
  descriptor_ = descriptor;
  midLine_ = false;
}

void FileSink::sink_it_(const spdlog::details::log_msg& message) {
  spdlog::memory_buf_t line;
  if (midLine_) {
    line.push_back('\n');
  }
  formatter_->format(message, line);
  writeAll(line.data(), line.size());
}

void FileSink::writeAll(const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(descriptor_, data, size);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw std::system_error(lastError());
    }
    data += written;
    size -= static_cast<std::size_t>(written);
    midLine_ = size > 0;
  }
}

}  // namespace core_log
