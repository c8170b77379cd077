#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "framework/method/Wire.h"
#include "framework/proc/EngineLink.h"

namespace test_support {

/// An engine that keeps what services send to it, and lets a test answer.
class TestEngine {
 public:
  struct Arrived {
    proc::EngineLink::PeerId peer = 0;
    std::vector<unsigned char> bytes;
  };
  /// Called with each stimulus, on the link's thread, before it is kept.
  using Reaction = std::function<void(proc::EngineLink&, const Arrived&)>;

  explicit TestEngine(const std::string& endPoint, Reaction reaction = {})
      : reaction_(std::move(reaction)), link_(endPoint) {
    link_.start(
        [this](proc::EngineLink::PeerId peer, const unsigned char* bytes, std::size_t size) {
          take({peer, {bytes, bytes + size}});
        });
  }
  ~TestEngine() { link_.close(); }

  proc::EngineLink& link() { return link_; }

  /// The first `count` stimuli, or those that came within 30 seconds.
  std::vector<Arrived> waitFor(std::size_t count) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, std::chrono::seconds(30), [&] { return arrived_.size() >= count; });
    return arrived_;
  }

  /// The first stimulus that is a call of `Me`; null when none came within 30 seconds.
  template <class Me>
  std::unique_ptr<Me> waitForCall() {
    for (std::size_t count = 1;; ++count) {
      const std::vector<Arrived> arrived = waitFor(count);
      if (arrived.size() < count) {
        return nullptr;
      }
      const std::vector<unsigned char>& bytes = arrived[count - 1].bytes;
      if (auto call = method::decodeCall<Me>(bytes.data(), bytes.size())) {
        return call;
      }
    }
  }

 private:
  void take(Arrived arrived) {
    if (reaction_) {
      reaction_(link_, arrived);
    }
    {
      const std::lock_guard guard(lock_);
      arrived_.push_back(std::move(arrived));
    }
    changed_.notify_all();
  }

  const Reaction reaction_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Arrived> arrived_;  // guarded by lock_
  proc::EngineLink link_;         // last: its thread uses the rest
};

}  // namespace test_support
