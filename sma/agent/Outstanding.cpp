#include "sma/agent/Outstanding.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sma {

void Outstanding::add(Request request) {
  ++counts_.of(request.kind).sent;
  awaited_.push_back(std::move(request));
}

Outstanding::TimePoint Outstanding::due() const {
  TimePoint due = TimePoint::max();
  for (const Request& each : awaited_) {
    due = std::min(due, each.deadline);
  }
  return due;
}

std::optional<Outstanding::Request> Outstanding::take(const Reply* reply) {
  const auto found = std::find_if(awaited_.begin(), awaited_.end(), [&](const Request& each) {
    return reply != nullptr && each.id == reply->messageId;
  });
  if (found == awaited_.end()) {
    ++counts_.strays;
    return std::nullopt;
  }
  Request request = std::move(*found);
  awaited_.erase(found);
  ++counts_.of(request.kind).statuses[reply->status];
  return request;
}

std::vector<Outstanding::Request> Outstanding::takeLate(TimePoint now) {
  const auto firstLate = std::stable_partition(
      awaited_.begin(), awaited_.end(), [now](const Request& each) { return now < each.deadline; });
  std::vector<Request> late(std::make_move_iterator(firstLate),
                            std::make_move_iterator(awaited_.end()));
  awaited_.erase(firstLate, awaited_.end());
  for (const Request& each : late) {
    ++counts_.of(each.kind).unanswered;
  }
  return late;
}

}  // namespace sma
