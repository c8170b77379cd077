#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "sma/messages/OddRequest.h"
#include "sma/messages/Requests.h"
#include "sma/tasks/Operation.h"

namespace sma {

/// An application instance: the blade's own one of that number, or any by its id.
struct AppRef {
  unsigned number = 1;
  std::string id;  ///< counts unless it is empty

  std::string in(std::uint32_t slot) const { return id.empty() ? appId(slot, number) : id; }
};

// --- what can happen to a blade, or be done by it

/// Registers again with another token.
struct ChangeToken {
  bool empty = false;  ///< with none, else with one that is not its own
};
/// Sends nothing for a while.
struct Silence {
  std::chrono::milliseconds lasts{0};
};
/// Sends every beat twice, with one count.
struct DuplicateBeats {
  std::chrono::milliseconds lasts{0};
};
/// Sends requests that are wrong on purpose.
struct SendOdd {
  const OddRequest* request = nullptr;
  unsigned times = 1;
  bool early = false;  ///< from the first register request on, else once it is registered
};
/// Sends a platform report out of turn.
struct SendReport {};
/// An instance fails and is reported. After a while, unless that is 0, the blade starts it again.
struct FailApp {
  AppRef app;
  std::chrono::milliseconds lasts{0};
};
/// Carries out a command and reports its progress.
struct RunOperation {
  AppRef app;
  OperationPlan plan;  ///< of another instance, to be replaced by that of `app`
};

using Happening =
    std::variant<ChangeToken, Silence, DuplicateBeats, SendOdd, SendReport, FailApp, RunOperation>;

/// What the reply to a request must be.
struct ExpectedReply {
  bool none = false;  ///< no reply at all
  std::optional<unsigned> status;
  std::optional<std::string> message;

  /// True when this is the reply expected; null means that none came.
  bool isMetBy(const Reply* reply) const;
  /// As `501 "Invalid Command"` or "no reply".
  std::string text() const;
};
/// The same of a reply that came, or did not.
std::string replyText(const Reply* reply);

/// One happening of one blade in time.
struct Event {
  std::chrono::milliseconds at{0};  ///< after the start of the run
  Happening what;
  std::optional<ExpectedReply> expected;  ///< of each request that it makes the blade send
};

/// The word by which scenarios name the happening, e.g. "silence" or "platform-two-cpu".
std::string_view eventName(const Happening& what);
/// How many requests it makes the blade send.
unsigned requestsOf(const Happening& what);

}  // namespace sma
