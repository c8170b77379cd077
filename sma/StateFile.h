#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "framework/msglyr/FileDescriptor.h"
#include "sma/platform/Memory.h"

namespace sma {

/// What the blades of a simulator do not forget when it ends or is killed: a file of JSON objects,
/// one a line, that is only ever appended to. A line is with the kernel when append() returns, so
/// it outlasts the process, though not a loss of power. One thread.
class StateFile {
 public:
  /// Opens or creates the file, readable by its owner only, and reads it. A last line that was not
  /// finished is cut off: nobody was answered on it. Throws std::runtime_error with file, line and
  /// cause when it cannot be read, or when another simulator has it open.
  explicit StateFile(const std::string& path);

  /// What the blade in the slot knew when the file was opened, in order; once.
  std::vector<Memory> take(std::uint32_t slot);
  /// Throws std::runtime_error when it cannot be written.
  void append(std::uint32_t slot, const Memory& memory);

 private:
  std::size_t read(const std::string& text);

  const std::string path_;
  msglyr::FileDescriptor file_;
  std::map<std::uint32_t, std::vector<Memory>> past_;
};

}  // namespace sma
