#pragma once

#include <string>

#include "dme/base/Result.h"

namespace dme {

/// A directory in TMPDIR that only this user can enter, removed with everything in it.
///
/// One that a process left which was killed is removed when the next is made.
class PrivateDirectory {
 public:
  static constexpr const char* kPrefix = "zedd-copy-";

  /// Fails with one line for the operator.
  static Result<PrivateDirectory> make();
  ~PrivateDirectory();
  PrivateDirectory(PrivateDirectory&& other) noexcept;
  PrivateDirectory& operator=(PrivateDirectory&&) = delete;

  const std::string& path() const { return path_; }

 private:
  PrivateDirectory(std::string path, int descriptor);

  std::string path_;
  int descriptor_;  // its lock tells the others that the directory is in use
};

}  // namespace dme
