#pragma once

#include <string>
#include <vector>

namespace command_round_trip {

/// The reference: a DEALER without anything around it that sends a message and takes the one that
/// comes back.
class BareEcho {
 public:
  BareEcho(const std::string& endPoint, std::vector<std::string> parts);
  ~BareEcho();
  BareEcho(const BareEcho&) = delete;
  BareEcho& operator=(const BareEcho&) = delete;

  /// False if anything but what was sent comes back.
  bool exchange();

 private:
  void* context_;
  void* socket_;
  const std::vector<std::string> parts_;
};

}  // namespace command_round_trip
