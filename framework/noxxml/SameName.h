#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace noxxml {

// Both hold the same bytes. For names: they are short and compared by the hundred for each
// document, so it is done in place, eight bytes at a time, the last of which may overlap.
inline bool isSameName(std::string_view left, std::string_view right) noexcept {
  const std::size_t size = left.size();
  if (size != right.size()) {
    return false;
  }
  if (size < sizeof(std::uint64_t)) {
    std::size_t i = 0;
    while (i < size && left[i] == right[i]) {
      ++i;
    }
    return i == size;
  }
  const auto wordOf = [](std::string_view name, std::size_t from) {
    std::uint64_t word = 0;
    std::memcpy(&word, name.data() + from, sizeof(word));
    return word;
  };
  const std::size_t last = size - sizeof(std::uint64_t);
  for (std::size_t i = 0; i < last; i += sizeof(std::uint64_t)) {
    if (wordOf(left, i) != wordOf(right, i)) {
      return false;
    }
  }
  return wordOf(left, last) == wordOf(right, last);
}

}  // namespace noxxml
