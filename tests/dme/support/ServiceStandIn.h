#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "dme/link/MethodServer.h"
#include "framework/method/Wire.h"

namespace dme_test {

/// The other side of the engine's link: makes the bytes of calls and keeps what the engine sends.
class ServiceStandIn {
 public:
  struct Sent {
    std::uint64_t peer;
    std::string bytes;
    bool isUrgent;
  };

  dme::MethodServer::Send receiver() {
    return [this](std::uint64_t peer, const base::OBioStream& bytes, bool isUrgent) {
      const std::lock_guard lock(mutex_);
      sent_.push_back(
          {peer, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()), isUrgent});
      arrived_.notify_all();
      return true;
    };
  }

  /// The bytes of a call from the service with id 9.
  template <class Me>
  static std::string encode(typename Me::InTuple arguments, std::string_view cookie = "cookie",
                            bool isResponseRequired = true) {
    Me me;
    me.in = std::move(arguments);
    me.setCookie(base::Buffer(cookie.data(), cookie.size()));
    me.setAddress({26, 1, 9, 0});
    me.setResponseRequired(isResponseRequired);
    const base::OBioStream bytes = method::encodeCall(me);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  /// Waits until the engine has sent this many stimuli in all, and gives them.
  std::vector<Sent> waitFor(std::size_t count) {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [&] { return sent_.size() >= count; });
    return sent_;
  }
  /// Waits for the answer to the call with this cookie, and gives its bytes.
  std::string waitForAnswer(std::string_view cookie) {
    const base::Buffer wanted(cookie.data(), cookie.size());
    std::size_t seen = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
      for (; seen < sent_.size(); ++seen) {
        const std::string& bytes = sent_[seen].bytes;
        const auto header =
            method::readHeader(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        if (header != nullptr && header->cookie() == wanted) {
          return bytes;
        }
      }
      arrived_.wait(lock, [&] { return sent_.size() > seen; });
    }
  }
  /// The calls of the engine's own that want an answer, in their order; waits until there are this
  /// many, but not for ever.
  std::vector<std::string> waitForCalls(std::size_t count) {
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, std::chrono::seconds(20),
                      [&] { return callsLocked().size() >= count; });
    return callsLocked();
  }
  std::vector<std::string> calls() {
    const std::lock_guard lock(mutex_);
    return callsLocked();
  }
  std::size_t count() {
    const std::lock_guard lock(mutex_);
    return sent_.size();
  }

 private:
  std::vector<std::string> callsLocked() const {
    std::vector<std::string> found;
    for (const Sent& sent : sent_) {
      const auto header = method::readHeader(
          reinterpret_cast<const unsigned char*>(sent.bytes.data()), sent.bytes.size());
      if (header != nullptr && header->type() == proc::Stimulus::kTypeMethod &&
          header->isResponseRequired()) {
        found.push_back(sent.bytes);
      }
    }
    return found;
  }

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<Sent> sent_;  // guarded by mutex_
};

template <class Me>
std::optional<method::Answer<Me>> decode(const std::string& bytes) {
  return method::decodeAnswer<Me>(reinterpret_cast<const unsigned char*>(bytes.data()),
                                  bytes.size());
}

}  // namespace dme_test
