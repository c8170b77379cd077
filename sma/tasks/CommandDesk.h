#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "framework/msglyr/Message.h"
#include "sma/base/Random.h"
#include "sma/messages/Command.h"
#include "sma/platform/Memory.h"
#include "sma/platform/Platform.h"
#include "sma/tasks/CommandFault.h"
#include "sma/tasks/Reporter.h"

namespace sma {

/// A message for one of the peers of a blade's own end point.
struct PeerMessage {
  std::string peer;  ///< as the end point tells them apart
  msglyr::Message message;
};

/// Where a blade's commands arrive: reads them, refuses what is wrong, carries out the others. What
/// takes time it hands to the reporter, as an operation with reports of progress; an instance has
/// one at a time. One thread.
///
/// A message that arrives again on its connection, message id and all, is answered again and
/// carried out once. On another connection the id means another command: a gateway that restarts
/// counts from one.
class CommandDesk {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  struct Settings {
    Duration time{2000};    ///< that a command takes, on average
    double jitter = 0.25;   ///< part of it by which a command may take more or less
    double failChance = 0;  ///< probability that the work fails
    unsigned steps = 4;     ///< of progress
    bool ack = true;        ///< the reports of progress ask for a reply
    std::uint64_t seed = 1;
    std::vector<CommandFault> faults = {};
  };

  /// How often each command was carried out, by its name and the instance it named, which is empty
  /// where it named none.
  using Executions = std::map<std::pair<std::string, std::string>, std::uint64_t>;

  /// `platform` and `reporter` are borrowed. What is to outlast the blade goes to `journal`, if
  /// there is one, before the reply.
  CommandDesk(const Settings& settings, BladePlatform& platform, Reporter& reporter,
              Journal journal = {});

  /// Takes a message from a peer. Without five parts it is dropped: there is nothing to answer.
  void take(const std::string& peer, const msglyr::Message& message, TimePoint now);
  /// When replies() and death() want to be asked.
  TimePoint due() const;
  /// The replies that are to be sent by `now`, each once.
  std::vector<PeerMessage> replies(TimePoint now);
  /// How long the blade is to be dead from `now` on, if it is to die. Asked once a death.
  std::optional<Duration> death(TimePoint now);
  /// Forgets replies that wait and what was answered, as a blade does that dies.
  void forget();

  // What the blade knows from before it died.
  void recall(const CommandBegun& memory);
  void recall(const SettingsKept& memory);
  void recall(const LogsCleared& memory);

  void addFault(const CommandFault& fault) { faults_.add(fault); }
  /// No more faults; what they brought to rest goes on.
  void clearFaults(TimePoint now);
  const std::vector<CommandFault>& faults() const { return faults_.waiting(); }

  std::uint64_t received() const { return received_; }
  const Executions& executions() const { return executions_; }
  /// How often the command of that name was carried out, on whichever instance.
  std::uint64_t executed(std::string_view command) const;
  const std::string& logLevel() const { return logLevel_; }
  const std::string& timeZone() const { return timeZone_; }
  /// How often logs were cleared, by instance; those of the system have the empty name.
  const std::map<std::string, std::uint64_t>& clearedLogs() const { return clearedLogs_; }

 private:
  struct Answered {
    std::string peer;
    std::size_t digest;  // of the message
    msglyr::Message reply;
  };

  struct Waiting {
    TimePoint due;
    PeerMessage reply;
  };
  struct Death {
    TimePoint due;
    Duration lasts;
  };

  msglyr::Message answer(const msglyr::Message& message, const CommandRead& read,
                         const CommandFault* fault, TimePoint now);
  void post(const std::string& peer, const msglyr::Message& reply, const CommandFault* fault,
            TimePoint now);
  std::optional<Refusal> refusalOf(const Command& command) const;
  std::optional<Refusal> refusalByState(const Command& command) const;
  void run(const Command& command, const CommandFault* fault, TimePoint now);
  template <class What>
  void note(const What& memory);
  OperationPlan planOf(const Command& command);
  void work(const Command& command, const CommandFault* fault, TimePoint now);
  void tellFailure(const Command& command, const Refusal& refusal);

  const Settings settings_;
  BladePlatform& platform_;
  Reporter& reporter_;
  const Journal journal_;
  Draws draws_;
  std::uint64_t received_ = 0;
  std::deque<Answered> answered_;  // the latest, to recognise what comes again
  std::vector<Waiting> waiting_;
  CommandFaults faults_;
  std::optional<Death> death_;
  Executions executions_;
  std::string logLevel_ = "info";
  std::string timeZone_ = "UTC0";
  std::map<std::string, std::uint64_t> clearedLogs_;
};

}  // namespace sma
