#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "sma/base/Backoff.h"
#include "sma/base/Element.h"
#include "sma/messages/BladeCounts.h"
#include "sma/messages/Requests.h"

namespace sma {

/// How a blade stands with the gateway, and what it does about it: registers, beats, registers
/// again when the gateway does not know it, backs off when it is refused or not answered. It sends
/// nothing itself. One thread.
class Membership {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  enum class State {
    Unregistered,  ///< has not been accepted yet, or was told to register again
    Registered,    ///< beats and reports
    Refused,       ///< its token was not recognised; asks again now and then
  };

  struct Settings {
    std::string ip = "127.0.0.1";
    std::uint32_t port = 0;
    std::string token;  ///< held from an earlier life; usually empty
    Duration beat{5000};
    Duration beatWait{5000};       ///< for the reply to a beat
    Duration registerWait{25000};  ///< for the reply to a register request
    Duration firstPause{500};      ///< of the back-off
    Duration mostPause{30000};
  };

  struct Request {
    RequestKind kind;  ///< Register or Beat
    Element document;
    Duration wait;  ///< for the reply
  };

  Membership(Settings settings, std::uint32_t slot, std::uint64_t seed, TimePoint start);

  State state() const { return state_; }
  bool isRegistered() const { return state_ == State::Registered; }
  const std::string& token() const { return token_; }
  /// That came with the latest reply to a register request.
  const std::string& gatewayKey() const { return gatewayKey_; }

  /// When request() wants to be sent; TimePoint::max() while one is under way.
  TimePoint due() const { return isUnderWay_ ? TimePoint::max() : next_; }
  /// What a blade of this state sends.
  Request request() const;
  /// The request was sent.
  void onSent(TimePoint now);
  /// The request could not be sent, or was given up.
  void onFailure(TimePoint now);
  /// Takes the reply to a register request. True when the blade is accepted; the reply's token is
  /// the caller's to keep.
  bool onRegisterReply(const Reply& reply, TimePoint now);
  /// Takes the reply to a beat.
  void onBeatReply(unsigned status, TimePoint now);
  /// Takes the reply to whatever else a registered blade sends, which tells of its standing, too.
  void onOtherReply(unsigned status, TimePoint now);

  /// Holds that token from now on.
  void keep(const std::string& token) { token_ = token; }
  /// Registers anew at that time.
  void restart(TimePoint at);
  /// As restart(), with nothing under way and no failures behind it.
  void forget(TimePoint at);

 private:
  void backOff(TimePoint now) { next_ = now + backoff_.next(); }

  const Settings settings_;
  const std::uint32_t slot_;
  const std::uint64_t seed_;
  Backoff backoff_;
  std::string token_;
  std::string registeredWith_;  // token of the latest register request
  std::string gatewayKey_;
  State state_ = State::Unregistered;
  TimePoint next_;           // register or beat
  bool isUnderWay_ = false;  // one of them; it awaits its reply
  std::uint32_t beats_ = 0;
};

/// "unregistered", "registered" or "refused".
const char* stateName(Membership::State state);

}  // namespace sma
