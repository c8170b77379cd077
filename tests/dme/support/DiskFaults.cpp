#include "tests/dme/support/DiskFaults.h"

#include <sqlite3.h>
#include <sys/types.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <utility>

namespace dme_test {
namespace {

using Write = ssize_t (*)(int, const void*, std::size_t);
using WriteAt = ssize_t (*)(int, const void*, std::size_t, off64_t);

std::atomic<DiskFaults*> installed = nullptr;
// Of the library's own, for its lifetime. Which of the two it uses is its choice.
Write originalWrite = nullptr;
WriteAt originalWriteAt = nullptr;

bool passes() {
  DiskFaults* const faults = installed;
  const bool mayPass = faults == nullptr || faults->passes();
  errno = mayPass ? errno : ENOSPC;
  return mayPass;
}

ssize_t write(int file, const void* bytes, std::size_t size) {
  return passes() ? originalWrite(file, bytes, size) : -1;
}

ssize_t writeAt(int file, const void* bytes, std::size_t size, off64_t offset) {
  return passes() ? originalWriteAt(file, bytes, size, offset) : -1;
}

template <class Call>
void intercept(const char* name, Call replacement, Call& original) {
  sqlite3_vfs* const vfs = sqlite3_vfs_find(nullptr);
  if (original == nullptr) {
    original = reinterpret_cast<Call>(vfs->xGetSystemCall(vfs, name));
    vfs->xSetSystemCall(vfs, name, reinterpret_cast<sqlite3_syscall_ptr>(replacement));
  }
}

}  // namespace

DiskFaults::DiskFaults() {
  intercept<Write>("write", write, originalWrite);
  intercept<WriteAt>("pwrite64", writeAt, originalWriteAt);
  installed = this;
}

DiskFaults::~DiskFaults() {
  release();
  installed = nullptr;
}

void DiskFaults::fill() {
  const std::lock_guard lock(mutex_);
  isFull_ = true;
  isHeld_ = false;
  hasHeld_ = false;
  changed_.notify_all();
}

void DiskFaults::refuseOnce() {
  const std::lock_guard lock(mutex_);
  refusesNext_ = true;
}

void DiskFaults::hold() {
  const std::lock_guard lock(mutex_);
  isHeld_ = true;
}

bool DiskFaults::waitUntilHeld() {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::seconds(30), [this] { return hasHeld_; });
}

void DiskFaults::release() {
  const std::lock_guard lock(mutex_);
  isFull_ = false;
  isHeld_ = false;
  hasHeld_ = false;
  changed_.notify_all();
}

bool DiskFaults::passes() {
  std::unique_lock lock(mutex_);
  if (isHeld_) {
    hasHeld_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isHeld_; });
  }
  return !std::exchange(refusesNext_, false) && !isFull_;
}

}  // namespace dme_test
