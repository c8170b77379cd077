#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sma/agent/Event.h"

namespace sma {

/// Compares what came of the requests that events made a blade send with what the events expect.
/// Passes over events that expect nothing, and requests that come from no event. One thread.
class ReplyJudge {
 public:
  using EventIndex = std::optional<std::size_t>;

  /// `events` is borrowed.
  explicit ReplyJudge(const std::vector<Event>& events) : events_(events), judged_(events.size()) {}

  /// True when the event expects that a reply comes.
  bool wantsReply(EventIndex event) const;
  /// Takes the reply to one request of the event; null means that none came.
  void judge(EventIndex event, const Reply* reply);
  /// One request of the event could not be sent.
  void judgeUnsent(EventIndex event);

  /// True when every reply that an event expects has been judged.
  bool isDone() const;
  /// A line for each reply so far that was not what its event expects, and for each event whose
  /// replies are still to come.
  std::vector<std::string> disappointments() const;

 private:
  const ExpectedReply* expectedOf(EventIndex event) const;
  void disappoint(std::size_t event, const std::string& cause);
  bool isOpen(std::size_t event) const;

  const std::vector<Event>& events_;
  std::vector<unsigned> judged_;  // replies, by event
  std::vector<std::string> disappointments_;
};

}  // namespace sma
