#include "dme/store/StateLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>
#include <utility>

namespace dme {

namespace {

// The holder's process id as the file states it, or "another process" in the moment before the
// holder has written it.
std::string holderOf(int descriptor) {
  std::array<char, 16> text{};
  const ssize_t size = ::pread(descriptor, text.data(), text.size() - 1, 0);
  std::string digits;
  for (ssize_t i = 0; i < size && text[static_cast<std::size_t>(i)] >= '0' &&
                      text[static_cast<std::size_t>(i)] <= '9';
       ++i) {
    digits += text[static_cast<std::size_t>(i)];
  }
  return digits.empty() ? "another process" : "process " + digits;
}

bool writeOwnId(int descriptor) {
  const std::string text = std::to_string(::getpid()) + "\n";
  return ::ftruncate(descriptor, 0) == 0 &&
         ::pwrite(descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
}

// A reader is done as soon as it has copied the files; a holder of the directory stays. Only
// readers let others share the lock.
bool lockAgainstAll(int descriptor) {
  constexpr std::chrono::milliseconds kPoll{10};
  for (auto waited = kPoll; ::flock(descriptor, LOCK_EX | LOCK_NB) != 0; waited += kPoll) {
    if (errno != EWOULDBLOCK || waited > StateLock::kReaderWait ||
        ::flock(descriptor, LOCK_SH | LOCK_NB) != 0) {
      return false;
    }
    ::flock(descriptor, LOCK_UN);
    std::this_thread::sleep_for(kPoll);
  }
  return true;
}

}  // namespace

Result<StateLock> StateLock::acquire(const std::string& directory) {
  const std::string file = directory + "/" + kFileName;
  StateLock lock(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (lock.descriptor_ < 0) {
    return failure(file + " cannot be opened (" + lastSystemError() +
                   "): give the directory to the user that runs this program");
  }
  if (!lockAgainstAll(lock.descriptor_)) {
    if (errno == EWOULDBLOCK) {
      return failure(directory + " is in use by " + holderOf(lock.descriptor_) +
                     ": stop it, or configure another state directory");
    }
    return failure(file + " cannot be locked (" + lastSystemError() +
                   "): use a file system that supports locks");
  }
  if (!writeOwnId(lock.descriptor_)) {
    return failure(file + " cannot be written (" + lastSystemError() +
                   "): free some space on its file system");
  }
  return lock;
}

Result<std::optional<StateLock>> StateLock::acquireForReading(const std::string& directory) {
  const std::string file = directory + "/" + kFileName;
  StateLock lock(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (lock.descriptor_ < 0) {
    return failure(file + " cannot be opened (" + lastSystemError() +
                   "): run as the user that owns the directory");
  }
  if (::flock(lock.descriptor_, LOCK_SH | LOCK_NB) == 0) {
    return lock;
  }
  if (errno == EWOULDBLOCK) {
    return std::nullopt;
  }
  return failure(file + " cannot be locked (" + lastSystemError() +
                 "): use a file system that supports locks");
}

std::string StateLock::holder(const std::string& directory) {
  const StateLock file(
      ::open((directory + "/" + kFileName).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  return holderOf(file.descriptor_);
}

StateLock::StateLock(StateLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

StateLock& StateLock::operator=(StateLock&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

StateLock::~StateLock() {
  // The file stays: removing it would let two processes lock two files of the same name.
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

}  // namespace dme
