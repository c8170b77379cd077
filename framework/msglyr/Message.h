#pragma once

#include <string>
#include <utility>
#include <vector>

namespace msglyr {

// A multipart message: an ordered list of byte strings. Parts may be empty and may hold NUL
// bytes. Moving one is cheap. Not synchronised: one thread uses an object at a time.
class Message {
 public:
  explicit Message(unsigned parts = 0) : parts_(parts) {}
  explicit Message(std::vector<std::string> parts) : parts_(std::move(parts)) {}

  unsigned getnumParts() const { return static_cast<unsigned>(parts_.size()); }

  // Throws std::out_of_range if the message has no such part.
  std::string& operator[](unsigned index) { return parts_.at(index); }
  const std::string& operator[](unsigned index) const { return parts_.at(index); }

  // All parts at once, for code that fills or drains a whole message.
  std::vector<std::string>& parts() { return parts_; }
  const std::vector<std::string>& parts() const { return parts_; }

 private:
  std::vector<std::string> parts_;
};

}  // namespace msglyr
