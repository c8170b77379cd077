#pragma once

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace base {

// Text as a string of bytes, without an encoding of its own. It may hold NUL bytes; c_str()
// users see the text up to the first of them.
//
// A value type: distinct objects may be used from distinct threads without a lock.
class String {
 public:
  String() = default;
  // A null pointer makes an empty text.
  String(const char* text) : text_(text == nullptr ? "" : text) {}
  String(std::string text) noexcept : text_(std::move(text)) {}
  String(std::string_view text) : text_(text) {}

  // Part of the start-up sequence of every service. May be called any number of times: there
  // is no process-wide state to prepare, so texts may also be used before it.
  static void init() noexcept;

  const char* c_str() const noexcept { return text_.c_str(); }
  std::size_t size() const noexcept { return text_.size(); }
  bool empty() const noexcept { return text_.empty(); }
  const std::string& str() const noexcept { return text_; }
  std::string_view view() const noexcept { return text_; }

  String& operator+=(const String& other) {
    text_ += other.text_;
    return *this;
  }
  friend String operator+(String left, const String& right) {
    left += right;
    return left;
  }

  // Negative, zero or positive. A shorter text comes before a longer one; texts of one length
  // are ordered by their bytes, taken as unsigned.
  int compare(const String& other) const noexcept {
    if (text_.size() != other.text_.size()) {
      return text_.size() < other.text_.size() ? -1 : 1;
    }
    return text_.compare(other.text_);
  }

  friend bool operator==(const String& left, const String& right) noexcept {
    return left.text_ == right.text_;
  }
  friend std::strong_ordering operator<=>(const String& left, const String& right) noexcept {
    return left.compare(right) <=> 0;
  }

 private:
  std::string text_;
};

std::ostream& operator<<(std::ostream& out, const String& text);

}  // namespace base
