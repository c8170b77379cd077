#pragma once

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <vector>

namespace base {

// A copy of some bytes, such as the cookie of a method invocation.
//
// A value type: distinct objects may be used from distinct threads without a lock.
class Buffer {
 public:
  Buffer() = default;
  Buffer(const void* data, std::size_t size) { allocate(data, size); }

  // Replaces the content with a copy of `size` bytes at `data`; nothing is kept of the caller's
  // memory, which may be part of this buffer. A null `data` or a `size` of 0 leaves it empty.
  void allocate(const void* data, std::size_t size);

  // Null or any other value when empty.
  const unsigned char* data() const noexcept { return bytes_.data(); }
  std::size_t size() const noexcept { return bytes_.size(); }
  bool empty() const noexcept { return bytes_.empty(); }
  void clear() noexcept { bytes_.clear(); }

  // Negative, zero or positive. Bytes are compared in order, as unsigned; of two buffers that
  // begin alike the shorter comes first, so an empty one comes before every other.
  int compare(const Buffer& other) const noexcept;

  friend bool operator==(const Buffer& left, const Buffer& right) noexcept {
    return left.bytes_ == right.bytes_;
  }
  friend std::strong_ordering operator<=>(const Buffer& left, const Buffer& right) noexcept {
    return left.compare(right) <=> 0;
  }

 private:
  std::vector<unsigned char> bytes_;
};

// Two lower-case hexadecimal digits a byte.
std::ostream& operator<<(std::ostream& out, const Buffer& buffer);

}  // namespace base
