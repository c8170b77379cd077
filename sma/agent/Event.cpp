#include "sma/agent/Event.h"

#include "sma/base/Overloaded.h"

namespace sma {
namespace {

std::string replyText(unsigned status, const std::string& message) {
  return std::to_string(status) + " \"" + message + "\"";
}

}  // namespace

bool ExpectedReply::isMetBy(const Reply* reply) const {
  if (none || reply == nullptr) {
    return none && reply == nullptr;
  }
  return (!status || *status == reply->status) && (!message || *message == reply->message);
}

std::string ExpectedReply::text() const {
  if (none) {
    return "no reply";
  }
  const std::string code = status ? std::to_string(*status) : "any status";
  return message ? code + " \"" + *message + "\"" : code;
}

std::string replyText(const Reply* reply) {
  return reply == nullptr ? "no reply" : replyText(reply->status, reply->message);
}

std::string_view eventName(const Happening& what) {
  return std::visit(Overloaded{
                        [](const ChangeToken& token) -> std::string_view {
                          return token.empty ? "empty-token" : "wrong-token";
                        },
                        [](const Silence&) -> std::string_view { return "silence"; },
                        [](const DuplicateBeats&) -> std::string_view { return "duplicate-beats"; },
                        [](const SendOdd& odd) { return odd.request->name; },
                        [](const SendReport&) -> std::string_view { return "report"; },
                        [](const FailApp&) -> std::string_view { return "app-failure"; },
                        [](const RunOperation&) -> std::string_view { return "progress"; },
                    },
                    what);
}

unsigned requestsOf(const Happening& what) {
  return std::visit(Overloaded{
                        [](const ChangeToken&) { return 0U; },
                        [](const Silence&) { return 0U; },
                        [](const DuplicateBeats&) { return 0U; },
                        [](const SendOdd& odd) { return odd.times; },
                        [](const SendReport&) { return 1U; },
                        [](const FailApp&) { return 1U; },
                        [](const RunOperation& run) { return run.plan.steps + 1; },
                    },
                    what);
}

}  // namespace sma
