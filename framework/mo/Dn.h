#pragma once

#include <compare>
#include <string>
#include <string_view>

#include "framework/base/BioStream.h"
#include "framework/base/String.h"

namespace mo {

/// A managed object's distinguished name: the path from the root, relative names joined by "/",
/// for example "sys/chassis-1/slot-3". The empty name is the root.
class Dn {
 public:
  Dn() = default;
  explicit Dn(std::string_view text) : text_(text) {}

  const base::String& text() const { return text_; }
  const char* c_str() const { return text_.c_str(); }
  bool empty() const { return text_.empty(); }
  /// This name with one more step below it. What comes from outside goes through escapeStep().
  Dn child(std::string_view relativeName) const;
  /// The name without its last step; the root's parent is the root.
  Dn parent() const;

  bool operator==(const Dn& other) const { return text_ == other.text_; }
  /// Byte order, so that a subtree is a contiguous range in an ordered map.
  std::strong_ordering operator<=>(const Dn& other) const {
    return text_.str() <=> other.text_.str();
  }

  void serialize(base::OBioStream& stream) const { stream.write(text_); }
  bool deserialize(base::IBioStream& stream) { return stream.read(text_); }

 private:
  base::String text_;
};

/// An identifier as a part of one step of a name: "/", "%" and control characters become "%" and
/// two hexadecimal digits, so that distinct identifiers stay distinct and none makes a second step.
std::string escapeStep(std::string_view identifier);

}  // namespace mo
