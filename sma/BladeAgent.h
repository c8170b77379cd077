#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/msglyr/Message.h"
#include "sma/Backoff.h"
#include "sma/BladeCounts.h"
#include "sma/Fault.h"

namespace sma {

/// The agent of one blade: registers, keeps the token that it is told, beats, registers again when
/// the gateway does not know it, backs off when it is not answered. It knows no socket and no
/// clock: the fleet that drives it gives it both. One thread.
class BladeAgent {
 public:
  using Clock = std::chrono::steady_clock;
  using TimePoint = Clock::time_point;
  using Duration = std::chrono::milliseconds;

  enum class State {
    Unregistered,  ///< has not been accepted yet, or was told to register again
    Registered,    ///< beats
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
    Duration oddWait{1000};        ///< for a reply to an odd request, which usually never comes
    Duration firstPause{500};      ///< of the back-off
    Duration mostPause{30000};
    std::uint64_t seed = 1;
    std::vector<FaultEvent> faults;
  };

  /// Takes a request towards the gateway. False when there is no connection at the moment.
  using Outbox = std::function<bool(const msglyr::Message&)>;

  BladeAgent(Settings settings, TimePoint start);

  /// When onTime() wants to be called next.
  TimePoint due() const;
  /// Does what is due at `now`.
  void onTime(TimePoint now, const Outbox& outbox);
  /// Takes one message from the gateway.
  void onMessage(const msglyr::Message& message, TimePoint now);

  std::uint32_t slot() const { return settings_.slot; }
  State state() const { return state_; }
  const std::string& token() const { return token_; }
  const std::string& gatewayKey() const { return gatewayKey_; }
  unsigned lastStatus() const { return lastStatus_; }
  const std::string& lastMessage() const { return lastMessage_; }
  const BladeCounts& counts() const { return counts_; }

 private:
  enum class Kind { None, Register, Beat };

  struct Odd {
    std::string id;
    TimePoint deadline;
  };

  void startFault(const FaultEvent& event, TimePoint now, const Outbox& outbox);
  void sendOdd(Fault fault, TimePoint now, const Outbox& outbox);
  void sendDue(TimePoint now, const Outbox& outbox);
  void sendRegister(TimePoint now, const Outbox& outbox);
  void sendBeat(TimePoint now, const Outbox& outbox);
  void expireOdd(TimePoint now);
  void expireOutstanding(TimePoint now);
  bool takeOdd(const std::string& id);
  void onRegisterReply(unsigned status, const std::string& token, TimePoint now);
  void onBeatReply(unsigned status, TimePoint now);
  std::string nextId();

  const Settings settings_;
  Backoff backoff_;
  std::string token_;
  std::string gatewayKey_;
  State state_ = State::Unregistered;
  const TimePoint start_;
  std::size_t nextFault_ = 0;  // settings_.faults is in order of time
  TimePoint nextSend_;
  TimePoint silentUntil_;
  TimePoint duplicateUntil_;
  Kind outstanding_ = Kind::None;
  std::string outstandingId_;
  TimePoint outstandingDeadline_;
  std::vector<Odd> odd_;
  std::uint64_t sequence_ = 0;
  std::uint32_t beatCount_ = 0;
  unsigned lastStatus_ = 0;
  std::string lastMessage_;
  BladeCounts counts_;
};

/// "unregistered", "registered" or "refused".
const char* stateName(BladeAgent::State state);

}  // namespace sma
