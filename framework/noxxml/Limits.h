#pragma once

#include <cstddef>

namespace noxxml {

// What a document may be. One that is larger, deeper or of more elements counts as unparsable.
struct Limits {
  std::size_t maxBytes = 1048576;
  // Levels of nested elements; a root alone has one. At most kMaxDepth.
  unsigned maxDepth = 64;
  // A megabyte holds a quarter of a million elements of the shortest kind, each of which can cost a
  // reader a line of the log.
  std::size_t maxElements = 16384;

  static constexpr unsigned kMaxDepth = 1000;
};

// The limits of the process, the defaults above until set. Both may be called from any thread
// and do not block; a document that is being parsed keeps the limits it began with.
Limits limits() noexcept;
// A depth beyond kMaxDepth is taken as kMaxDepth: parsed trees are walked by recursion, which
// must fit the smallest stack of a thread.
void setLimits(const Limits& limits) noexcept;

}  // namespace noxxml
