#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "sma/agent/ReplyJudge.h"
#include "sma/messages/BladeCounts.h"
#include "sma/messages/Requests.h"

namespace sma {

/// The requests of a blade that await their replies, and the counts of all that it sent and got.
/// One thread.
class Outstanding {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  struct Request {
    std::string id;
    RequestKind kind;
    TimePoint deadline;
    ReplyJudge::EventIndex event;  ///< that it comes from
  };

  /// The request was sent.
  void add(Request request);
  /// A request could not be sent.
  void countUnsent() { ++counts_.unsent; }

  /// The earliest deadline; TimePoint::max() when nothing is awaited.
  TimePoint due() const;
  /// The request that the reply belongs to, and that is awaited no longer. Nothing for a stray;
  /// null, a reply that could not be read, is one.
  std::optional<Request> take(const Reply* reply);
  /// The requests whose deadlines have come, in the order in which they were sent. They count as
  /// unanswered, and a reply that comes yet as a stray.
  std::vector<Request> takeLate(TimePoint now);
  /// The same with all requests.
  std::vector<Request> takeAll() { return takeLate(TimePoint::max()); }

  const BladeCounts& counts() const { return counts_; }

 private:
  std::vector<Request> awaited_;
  BladeCounts counts_;
};

}  // namespace sma
