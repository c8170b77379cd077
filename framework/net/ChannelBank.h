#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace net {

/// The named channels of a service, for those who want to know where it is connected and whether
/// the other side is there. Thread-safe.
class ChannelBank {
 public:
  struct Channel {
    std::string endPoint;
    bool isUp = false;
    unsigned timesUp = 0;  ///< how often it came up
    bool operator==(const Channel&) const = default;
  };

  /// Enters a channel, down at first. A second one of the same name replaces the first.
  void add(const std::string& name, const std::string& endPoint);
  /// Notes that the other side is there or went away. Of a name not entered: no effect.
  void setUp(const std::string& name, bool isUp);

  /// Nothing when there is no channel of this name.
  std::optional<Channel> find(const std::string& name) const;
  std::map<std::string, Channel> channels() const;

 private:
  mutable std::mutex lock_;
  std::map<std::string, Channel> channels_;  // guarded by lock_
};

}  // namespace net
