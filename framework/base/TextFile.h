#pragma once

#include <cstddef>
#include <string>
#include <tl/expected.hpp>

namespace base {

// Larger files are refused: nobody writes a description or a configuration of that size.
inline constexpr std::size_t kMaxTextFileBytes = 1048576;

// The whole content of a file, or one line that names it and the cause. Blocks on the disk.
tl::expected<std::string, std::string> readTextFile(const std::string& path);

}  // namespace base
