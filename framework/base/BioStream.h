#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "framework/base/Buffer.h"
#include "framework/base/String.h"

// The binary codec that the service, the management engine and the tests share.
//
//   number  its own width (1, 2, 4 or 8 bytes), byte order of the host
//   bool    one byte, 0 or 1
//   String  length in bytes as a 4-byte number, then the bytes, without a terminator
//   Buffer  as String
//
// Both ends run on one machine, so host order is never converted.

namespace base {

// Writes values one after another into memory that it owns. For one thread at a time.
class OBioStream {
 public:
  OBioStream() = default;
  // What is moved from is as new.
  OBioStream(OBioStream&& other) noexcept { swap(other); }
  OBioStream& operator=(OBioStream&& other) noexcept {
    OBioStream taken(std::move(other));
    swap(taken);
    return *this;
  }

  // Appends `size` bytes as they are, without a length.
  void loopWrite(const unsigned char* data, unsigned size);

  void write(std::uint8_t value) { writeRaw(value); }
  void write(std::uint16_t value) { writeRaw(value); }
  void write(std::uint32_t value) { writeRaw(value); }
  void write(std::uint64_t value) { writeRaw(value); }
  void write(std::int32_t value) { writeRaw(value); }
  void write(std::int64_t value) { writeRaw(value); }
  void write(float value) { writeRaw(value); }
  void write(double value) { writeRaw(value); }
  void write(bool value) { writeRaw(static_cast<std::uint8_t>(value ? 1 : 0)); }
  // Numbers and bools one after another, with one look at the room that they take.
  template <typename... T>
  requires(std::is_arithmetic_v<T>&&...) void writeTogether(T... values) {
    constexpr std::size_t kSize = (sizeof(T) + ...);
    if (kSize > capacity_ - size_) {
      grow(kSize);
    }
    ((std::memcpy(bytes_.get() + size_, &values, sizeof(T)), size_ += sizeof(T)), ...);
  }
  // Both throw std::length_error, with nothing written, on 4 GiB and more.
  void write(const String& value) { writeSized(value.view().data(), value.size()); }
  void write(const Buffer& value) { writeSized(value.data(), value.size()); }
  // A text literal would otherwise become a bool.
  template <typename T>
  void write(const T*) = delete;

  // What has been written; valid until the next call that is not const.
  const unsigned char* data() const noexcept { return bytes_.get(); }
  std::size_t size() const noexcept { return size_; }
  // Forgets the content and keeps the memory for the next one.
  void clear() noexcept { size_ = 0; }

 private:
  template <typename T>
  void writeRaw(T value) {
    append(&value, sizeof(value));
  }
  // Messages are made of hundreds of small values: there is no call as long as the memory lasts.
  void append(const void* data, std::size_t size) {
    if (size > capacity_ - size_) {
      grow(size);
    }
    if (size != 0) {
      std::memcpy(bytes_.get() + size_, data, size);
      size_ += size;
    }
  }
  // Makes room for `size` bytes more.
  void grow(std::size_t size);
  void writeSized(const void* data, std::size_t size) {
    const auto length = static_cast<std::uint32_t>(size);
    if (length != size) {
      refuseLength();
    }
    if (sizeof(length) + size > capacity_ - size_) {
      grow(sizeof(length) + size);
    }
    append(&length, sizeof(length));
    append(data, size);
  }
  [[noreturn]] static void refuseLength();
  void swap(OBioStream& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

  std::unique_ptr<unsigned char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// Reads values from bytes that somebody else owns and that stay in place while this lives. For
// one thread at a time.
//
// Every read returns true and stores the value, or returns false and leaves its argument: when
// too few bytes are left, a length is larger than the rest, or a bool is neither 0 nor 1.
// The first failure is sticky: every later read fails as well, so a caller may read a whole
// record and look at failed() once. No length is trusted with an allocation before it has been
// compared with the bytes that are there.
class IBioStream {
 public:
  IBioStream(const unsigned char* data, std::size_t size) noexcept
      : next_(data), remaining_(data == nullptr ? 0 : size) {}

  // Copies exactly `size` bytes into `out`.
  bool loopRead(unsigned char* out, unsigned size) noexcept;

  bool read(std::uint8_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(std::uint16_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(std::uint32_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(std::uint64_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(std::int32_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(std::int64_t& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(float& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(double& value) noexcept { return readRaw(&value, sizeof(value)); }
  bool read(bool& value) noexcept;
  bool read(String& value);
  bool read(Buffer& value);

  // Bytes not read yet.
  std::size_t remaining() const noexcept { return remaining_; }
  bool failed() const noexcept { return failed_; }

 private:
  bool fail() noexcept;
  bool readRaw(void* out, std::size_t size) noexcept;
  // Steps over a length and that many bytes; null when they are not all there.
  const unsigned char* takeSized(std::uint32_t& size) noexcept;

  const unsigned char* next_;
  std::size_t remaining_;
  bool failed_ = false;
};

}  // namespace base
