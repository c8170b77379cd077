#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace msglyr {

// Owns a file descriptor.
class FileDescriptor {
 public:
  // Takes over `fd`; throws std::system_error with errno if it is negative.
  FileDescriptor(int fd, const char* what) : fd_(fd) {
    if (fd < 0) {
      throw std::system_error(errno, std::generic_category(), what);
    }
  }
  ~FileDescriptor() {
    if (fd_ >= 0) {
      close(fd_);
    }
  }
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int get() const { return fd_; }

 private:
  int fd_;
};

// Makes a poll in another thread return. A signal given before the wait is kept for it.
class WakeUp {
 public:
  WakeUp() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd") {}

  int fd() const { return fd_.get(); }  // readable while signalled

  void signal() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(fd_.get(), &one, sizeof one);
  }
  void clear() {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = read(fd_.get(), &count, sizeof count);
  }

 private:
  FileDescriptor fd_;
};

}  // namespace msglyr
