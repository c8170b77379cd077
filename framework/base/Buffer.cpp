#include "framework/base/Buffer.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace base {

void Buffer::allocate(const void* data, std::size_t size) {
  if (data == nullptr || size == 0) {
    bytes_.clear();
    return;
  }
  const auto* first = static_cast<const unsigned char*>(data);
  std::vector<unsigned char> copy(first, first + size);
  bytes_.swap(copy);
}

int Buffer::compare(const Buffer& other) const noexcept {
  const std::size_t common = std::min(size(), other.size());
  if (common != 0) {
    if (const int order = std::memcmp(data(), other.data(), common); order != 0) {
      return order;
    }
  }
  if (size() == other.size()) {
    return 0;
  }
  return size() < other.size() ? -1 : 1;
}

std::ostream& operator<<(std::ostream& out, const Buffer& buffer) {
  static constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    const unsigned byte = buffer.data()[i];
    out << kDigits[byte >> 4] << kDigits[byte & 0xf];
  }
  return out;
}

}  // namespace base
