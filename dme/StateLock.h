#pragma once

#include <string>

#include "dme/Result.h"

namespace dme {

/// The right to use a state directory, held by one process at a time through an advisory lock on
/// its file "lock". Goes with the process, however that ends. Move-only.
class StateLock {
 public:
  static constexpr const char* kFileName = "lock";

  /// Does not wait. The error names the process that holds the directory.
  static Result<StateLock> acquire(const std::string& directory);

  StateLock(StateLock&& other) noexcept;
  StateLock& operator=(StateLock&& other) noexcept;
  ~StateLock();

 private:
  explicit StateLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace dme
