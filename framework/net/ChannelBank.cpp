#include "framework/net/ChannelBank.h"

namespace net {

void ChannelBank::add(const std::string& name, const std::string& endPoint) {
  const std::lock_guard guard(lock_);
  channels_[name] = Channel{endPoint, false, 0};
}

void ChannelBank::setUp(const std::string& name, bool isUp) {
  const std::lock_guard guard(lock_);
  const auto found = channels_.find(name);
  if (found == channels_.end()) {
    return;
  }
  Channel& channel = found->second;
  channel.timesUp += isUp && !channel.isUp ? 1 : 0;
  channel.isUp = isUp;
}

std::optional<ChannelBank::Channel> ChannelBank::find(const std::string& name) const {
  const std::lock_guard guard(lock_);
  const auto found = channels_.find(name);
  return found == channels_.end() ? std::nullopt : std::optional(found->second);
}

std::map<std::string, ChannelBank::Channel> ChannelBank::channels() const {
  const std::lock_guard guard(lock_);
  return channels_;
}

}  // namespace net
