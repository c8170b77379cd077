#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/msglyr/Message.h"
#include "sma/agent/Event.h"
#include "sma/agent/Outstanding.h"
#include "sma/agent/ReplyJudge.h"
#include "sma/base/Backoff.h"
#include "sma/messages/BladeCounts.h"
#include "sma/platform/Platform.h"
#include "sma/tasks/CommandDesk.h"
#include "sma/tasks/Reporter.h"

namespace sma {

/// The agent of one blade: registers, keeps the token that it is told, beats, reports, registers
/// again when the gateway does not know it, backs off when it is not answered. It knows no socket
/// and no clock: the fleet that drives it gives it both. One thread.
class BladeAgent {
 public:
  using Clock = std::chrono::steady_clock;
  using TimePoint = Clock::time_point;
  using Duration = std::chrono::milliseconds;

  enum class State {
    Unregistered,  ///< has not been accepted yet, or was told to register again
    Registered,    ///< beats and reports
    Refused,       ///< its token was not recognised; asks again now and then
  };

  struct Settings {
    std::uint32_t slot = 0;
    std::string ip = "127.0.0.1";
    std::uint32_t port = 0;
    std::string token;  ///< held from an earlier life; usually empty
    Duration beat{5000};
    Duration beatWait{5000};       ///< for the reply to a beat
    Duration registerWait{25000};  ///< for the reply to a register request
    Duration reportWait{15000};    ///< for the reply to a report, of a failure or progress, too
    Duration oddWait{1000};        ///< for a reply to an odd request, which usually never comes
    Duration firstPause{500};      ///< of the back-off
    Duration mostPause{30000};
    std::uint64_t seed = 1;
    unsigned apps = 0;                  ///< instances of its own
    std::vector<AppChange> appChanges;  ///< in what they differ from the usual
    Reporter::Settings reports;
    CommandDesk::Settings commands;
    Journal journal;  ///< takes what the blade is not to forget; may be empty
    std::vector<Event> events;
  };

  /// Takes a request towards the gateway. False when there is no connection at the moment.
  using Outbox = std::function<bool(const msglyr::Message&)>;

  BladeAgent(Settings settings, TimePoint start);
  BladeAgent(const BladeAgent&) = delete;  // its parts know each other
  BladeAgent& operator=(const BladeAgent&) = delete;

  /// Lets the blade know what it noted in an earlier life, in the same order.
  void recall(const Memory& memory);

  /// When onTime() wants to be called next.
  TimePoint due() const;
  /// Does what is due at `now`.
  void onTime(TimePoint now, const Outbox& outbox);
  /// Takes one message from the gateway.
  void onMessage(const msglyr::Message& message, TimePoint now);
  /// Takes one message from a peer of the blade's own end point.
  void onCommand(const std::string& peer, const msglyr::Message& message, TimePoint now);
  /// The replies to commands that are to be sent by `now`, each once.
  std::vector<PeerMessage> commandReplies(TimePoint now) { return desk_.replies(now); }
  /// Forgets all but token, instances, settings and what it has carried out, and says and hears
  /// nothing for a while: it has no connection either. Then it registers anew.
  void die(TimePoint now, Duration lasts);
  bool isDead(TimePoint now) const { return now < deadUntil_; }
  /// The command under way on an instance; empty when there is none.
  std::string commandOn(const std::string& app) const { return reporter_.commandOn(app); }
  void addFault(const CommandFault& fault) { desk_.addFault(fault); }
  void clearFaults(TimePoint now) { desk_.clearFaults(now); }

  std::uint32_t slot() const { return settings_.slot; }
  State state() const { return state_; }
  const std::string& token() const { return token_; }
  const std::string& gatewayKey() const { return gatewayKey_; }
  unsigned lastStatus() const { return lastStatus_; }
  const std::string& lastMessage() const { return lastMessage_; }
  const BladeCounts& counts() const { return outstanding_.counts(); }
  const BladePlatform& platform() const { return platform_; }
  const CommandDesk& desk() const { return desk_; }
  /// A line for each reply so far that was not what its event expected, and for each event whose
  /// replies are still to come.
  std::vector<std::string> disappointments() const { return judge_.disappointments(); }
  /// True when every reply that an event expects has been judged.
  bool isJudged() const { return judge_.isDone(); }

 private:
  using EventIndex = ReplyJudge::EventIndex;

  void start(std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const ChangeToken& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const Silence& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const DuplicateBeats& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const SendOdd& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const SendReport& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const FailApp& what, std::size_t event, TimePoint now, const Outbox& outbox);
  void begin(const RunOperation& what, std::size_t event, TimePoint now, const Outbox& outbox);

  bool maySend(TimePoint now) const { return now >= silentUntil_; }
  bool post(RequestKind kind, const msglyr::Message& message, TimePoint deadline, EventIndex event,
            const Outbox& outbox);
  void sendSession(TimePoint now, const Outbox& outbox);
  void sendRegister(TimePoint now, const Outbox& outbox);
  void sendBeat(TimePoint now, const Outbox& outbox);
  void sendReports(TimePoint now, const Outbox& outbox);
  void sendReport(const Reporter::Request& request, TimePoint now, const Outbox& outbox);
  Duration oddWait(EventIndex event) const;

  void giveUp(const Outstanding::Request& request, TimePoint now);
  void end(const Outstanding::Request& request);
  void onRegisterReply(const Reply& reply, TimePoint now);
  void onWorkEnd(const Operation& operation, TimePoint now);
  void note(const Memory& memory);
  void onRegisteredReply(unsigned status, TimePoint now);
  std::string nextId();

  const Settings settings_;
  Backoff backoff_;
  BladePlatform platform_;
  const TimePoint start_;
  Reporter reporter_;
  CommandDesk desk_;
  std::string token_;
  std::string registeredWith_;  // token of the latest register request
  std::string gatewayKey_;
  State state_ = State::Unregistered;
  std::size_t nextEvent_ = 0;      // settings_.events is in order of time
  std::vector<std::size_t> held_;  // events that wait for the connection or registration
  TimePoint nextSend_;             // of register or beat
  TimePoint silentUntil_;
  TimePoint deadUntil_ = TimePoint::min();
  TimePoint duplicateUntil_;
  bool sessionPending_ = false;  // a register or beat awaits its reply; one at a time
  std::uint64_t sequence_ = 0;
  std::uint32_t beatCount_ = 0;
  unsigned lastStatus_ = 0;
  std::string lastMessage_;
  Outstanding outstanding_;
  ReplyJudge judge_;
};

/// "unregistered", "registered" or "refused".
const char* stateName(BladeAgent::State state);

}  // namespace sma
