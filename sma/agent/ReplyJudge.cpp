#include "sma/agent/ReplyJudge.h"

#include <chrono>

namespace sma {
namespace {

/// Of one blade; what goes wrong a thousand times is clear from the first few.
constexpr std::size_t kMostDisappointments = 20;

std::string secondsText(std::chrono::milliseconds time) {
  std::string text = std::to_string(static_cast<double>(time.count()) / 1000);
  text.erase(text.find_last_not_of('0') + 1);
  return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

std::string eventText(const Event& event) {
  return std::string(eventName(event.what)) + " at " + secondsText(event.at) + " s";
}

}  // namespace

// Null when nothing is expected.
const ExpectedReply* ReplyJudge::expectedOf(EventIndex event) const {
  return event && events_[*event].expected ? &*events_[*event].expected : nullptr;
}

bool ReplyJudge::wantsReply(EventIndex event) const {
  const ExpectedReply* expected = expectedOf(event);
  return expected != nullptr && !expected->none;
}

void ReplyJudge::judge(EventIndex event, const Reply* reply) {
  const ExpectedReply* expected = expectedOf(event);
  if (expected == nullptr) {
    return;
  }
  ++judged_[*event];
  if (!expected->isMetBy(reply)) {
    disappoint(*event, "got " + replyText(reply) + ", expected " + expected->text());
  }
}

void ReplyJudge::judgeUnsent(EventIndex event) {
  if (expectedOf(event) != nullptr) {
    ++judged_[*event];
    disappoint(*event, "could not be sent");
  }
}

void ReplyJudge::disappoint(std::size_t event, const std::string& cause) {
  if (disappointments_.size() < kMostDisappointments) {
    disappointments_.push_back(eventText(events_[event]) + " " + cause);
  }
}

bool ReplyJudge::isOpen(std::size_t event) const {
  return events_[event].expected && judged_[event] < requestsOf(events_[event].what);
}

bool ReplyJudge::isDone() const {
  for (std::size_t event = 0; event < events_.size(); ++event) {
    if (isOpen(event)) {
      return false;
    }
  }
  return true;
}

std::vector<std::string> ReplyJudge::disappointments() const {
  std::vector<std::string> all = disappointments_;
  for (std::size_t event = 0; event < events_.size(); ++event) {
    if (isOpen(event)) {
      all.push_back(eventText(events_[event]) + " had " + std::to_string(judged_[event]) + " of " +
                    std::to_string(requestsOf(events_[event].what)) +
                    " replies judged when the run ended");
    }
  }
  return all;
}

}  // namespace sma
