#include "framework/base/BioStream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace base {

void OBioStream::loopWrite(const unsigned char* data, unsigned size) {
  append(data, size);
}

void OBioStream::grow(std::size_t size) {
  constexpr std::size_t kLeast = 64;
  if (size > std::numeric_limits<std::size_t>::max() / 2 - size_) {
    throw std::length_error("too much for a binary stream");
  }
  const std::size_t capacity = std::max({kLeast, 2 * capacity_, size_ + size});
  auto bytes = std::make_unique_for_overwrite<unsigned char[]>(capacity);
  if (size_ != 0) {
    std::memcpy(bytes.get(), bytes_.get(), size_);
  }
  bytes_ = std::move(bytes);
  capacity_ = capacity;
}

void OBioStream::refuseLength() {
  throw std::length_error("value too long for a binary stream");
}

bool IBioStream::fail() noexcept {
  failed_ = true;
  return false;
}

bool IBioStream::readRaw(void* out, std::size_t size) noexcept {
  if (failed_ || size > remaining_) {
    return fail();
  }
  if (size != 0) {
    std::memcpy(out, next_, size);
    next_ += size;
    remaining_ -= size;
  }
  return true;
}

bool IBioStream::loopRead(unsigned char* out, unsigned size) noexcept {
  return readRaw(out, size);
}

bool IBioStream::read(bool& value) noexcept {
  std::uint8_t byte = 0;
  if (!read(byte)) {
    return false;
  }
  if (byte > 1) {
    return fail();
  }
  value = byte == 1;
  return true;
}

const unsigned char* IBioStream::takeSized(std::uint32_t& size) noexcept {
  if (!read(size)) {
    return nullptr;
  }
  if (size > remaining_) {
    fail();
    return nullptr;
  }
  const unsigned char* first = next_;
  next_ += size;
  remaining_ -= size;
  return first;
}

bool IBioStream::read(String& value) {
  std::uint32_t size = 0;
  const unsigned char* first = takeSized(size);
  if (first == nullptr) {
    return false;
  }
  value = String(std::string_view(reinterpret_cast<const char*>(first), size));
  return true;
}

bool IBioStream::read(Buffer& value) {
  std::uint32_t size = 0;
  const unsigned char* first = takeSized(size);
  if (first == nullptr) {
    return false;
  }
  value.allocate(first, size);
  return true;
}

}  // namespace base
