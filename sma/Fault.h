#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace sma {

/// What a blade can be told to do wrong.
enum class Fault {
  WrongToken,        ///< registers with a token that is not its own
  EmptyToken,        ///< registers without a token
  Silence,           ///< sends nothing for a while
  DuplicateBeats,    ///< sends every beat twice, with one count
  MalformedXml,      ///< a heartbeat whose document is no XML
  TruncatedXml,      ///< a heartbeat whose document ends early
  OversizedXml,      ///< a heartbeat whose document is larger than the gateway takes
  WrongPartCount,    ///< a heartbeat of four parts
  WrongContentType,  ///< a heartbeat of content version 2
  UnknownCommand,    ///< a command that the gateway does not know
  ForeignSubject,    ///< a subject that names another service
};

/// One fault of one blade in time.
struct FaultEvent {
  using Duration = std::chrono::milliseconds;

  Fault fault = Fault::Silence;
  Duration at{0};      ///< after the start of the run
  Duration lasts{0};   ///< for Silence and DuplicateBeats
  unsigned times = 1;  ///< for the faults that are one message each
};

/// The word by which scenarios and tables name the fault, e.g. "wrong-token".
std::string_view faultName(Fault fault);
std::optional<Fault> faultByName(std::string_view name);
/// All names, for messages.
std::vector<std::string_view> faultNames();
/// True for the faults that are one odd request each, as opposed to a way of behaving.
bool isOneRequest(Fault fault);

}  // namespace sma
