#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "dme/base/Result.h"

namespace dme {

/// The right to use a state directory, held by one process at a time through an advisory lock on
/// its file "lock". Goes with the process, however that ends. Move-only.
class StateLock {
 public:
  static constexpr const char* kFileName = "lock";

  /// Waits only for readers, up to kReaderWait. The error names the process that holds the
  /// directory.
  static Result<StateLock> acquire(const std::string& directory);
  static constexpr std::chrono::milliseconds kReaderWait{5000};

  /// Keeps processes from acquiring the directory while its files are read. Any number of readers
  /// share it. Does not wait and changes nothing in the directory. Nothing when a process holds
  /// the directory; fails when the lock's file is missing or cannot be read.
  static Result<std::optional<StateLock>> acquireForReading(const std::string& directory);

  /// Who holds the directory, for messages: "process 4711", or "another process" if that is not
  /// known. Does not tell whether anybody holds it.
  static std::string holder(const std::string& directory);

  StateLock(StateLock&& other) noexcept;
  StateLock& operator=(StateLock&& other) noexcept;
  ~StateLock();

 private:
  explicit StateLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace dme
