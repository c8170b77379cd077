#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/msglyr/Message.h"
#include "sma/agent/Event.h"
#include "sma/agent/Membership.h"
#include "sma/agent/Outstanding.h"
#include "sma/agent/ReplyJudge.h"
#include "sma/messages/BladeCounts.h"
#include "sma/platform/Platform.h"
#include "sma/tasks/CommandDesk.h"
#include "sma/tasks/Reporter.h"

namespace sma {

/// The agent of one blade: registers and beats, keeps the token that it is told, reports, carries
/// commands out, and does what scenarios have happen to it. It knows no socket and no clock: the
/// fleet that drives it gives it both. One thread.
class BladeAgent {
 public:
  using Clock = std::chrono::steady_clock;
  using TimePoint = Clock::time_point;
  using Duration = std::chrono::milliseconds;
  using State = Membership::State;

  struct Settings {
    std::uint32_t slot = 0;
    Duration reportWait{15000};  ///< for the reply to a report, of a failure or progress, too
    Duration oddWait{1000};      ///< for a reply to an odd request, which usually never comes
    std::uint64_t seed = 1;
    unsigned apps = 0;                  ///< instances of its own
    std::vector<AppChange> appChanges;  ///< in what they differ from the usual
    Membership::Settings membership;
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
  State state() const { return membership_.state(); }
  const std::string& token() const { return membership_.token(); }
  const std::string& gatewayKey() const { return membership_.gatewayKey(); }
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
  void registerOrBeat(TimePoint now, const Outbox& outbox);
  void sendReports(TimePoint now, const Outbox& outbox);
  void sendReport(const Reporter::Request& request, TimePoint now, const Outbox& outbox);
  Duration oddWait(EventIndex event) const;

  void giveUp(const Outstanding::Request& request, TimePoint now);
  void onReply(RequestKind kind, const Reply& reply, TimePoint now);
  void onRegisterReply(const Reply& reply, TimePoint now);
  void onWorkEnd(const Operation& operation, TimePoint now);
  void note(const Memory& memory);
  std::string nextId();

  const Settings settings_;
  BladePlatform platform_;
  const TimePoint start_;
  Membership membership_;
  Reporter reporter_;
  CommandDesk desk_;
  std::size_t nextEvent_ = 0;      // settings_.events is in order of time
  std::vector<std::size_t> held_;  // events that wait for the connection or registration
  TimePoint silentUntil_;
  TimePoint deadUntil_ = TimePoint::min();
  TimePoint duplicateUntil_;
  std::uint64_t sequence_ = 0;
  unsigned lastStatus_ = 0;
  std::string lastMessage_;
  Outstanding outstanding_;
  ReplyJudge judge_;
};

}  // namespace sma
