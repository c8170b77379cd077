#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "framework/msglyr/Link.h"

namespace msglyr {

// Messages of one link that wait to be sent, gathered into batches. Not synchronised.
class LinkOutbox {
 public:
  using Clock = std::chrono::steady_clock;

  struct Batch {
    Link::PeerId to = Link::kPeer;
    std::string bytes;
    std::uint64_t messages = 0;
    Clock::time_point since;  // when its first message came
  };

  explicit LinkOutbox(const Link::Limits& limits) : limits_(limits) {}

  // False if the message is too long or too much waits already.
  bool add(Link::PeerId to, std::string_view message);

  bool empty() const { return batches_.empty(); }

  // Takes all batches out, oldest first. The bytes count as waiting until they are released.
  std::deque<Batch> takeAll();

  // The batch has been sent or dropped.
  void release(Batch&& batch);

 private:
  const Link::Limits limits_;
  std::deque<Batch> batches_;
  std::vector<std::string> spare_;  // emptied buffers, for their memory
  std::size_t waiting_ = 0;         // bytes in batches, here and taken out
};

}  // namespace msglyr
