#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/msglyr/Message.h"

namespace test_support {

/// Stands in for the message layer: a test program that links tests_scripted_channel in the place
/// of framework_msglyr gets msglyr::AsyncRouterDealerChannel objects that follow this script. It
/// governs the channels that are made during its lifetime, and they may outlive it. One at a time.
///
/// Each kind of operation has a queue of actions of its own, shared by all channels and used up in
/// order. With an empty queue, creation and end points succeed, send returns the number of parts,
/// receive of a connecting client returns 0, and receive of a worker blocks until there is an
/// action or endWorkers() is called. An action may block and may throw anything.
class ScriptedChannel {
 public:
  using Parts = std::vector<std::string>;

  /// A message as it was given to send.
  struct Sent {
    std::string address;
    Parts parts;
  };

  ScriptedChannel();
  ~ScriptedChannel();
  ScriptedChannel(const ScriptedChannel&) = delete;
  ScriptedChannel& operator=(const ScriptedChannel&) = delete;

  void onCreate(std::function<void()> action);
  void onServerEndPoint(std::function<void()> action);
  void onWorkerEndPoint(std::function<void()> action);
  void onSend(std::function<int(const msglyr::Message&)> action);
  void onReceive(std::function<int(msglyr::Message&)> action);

  /// A message arrives.
  void onReceive(Parts parts);
  /// receive returns this and leaves the message alone.
  void onReceive(int result);

  /// What any channel was asked to do, in order: "create NAME ROLE", "server END_POINT", "worker
  /// END_POINT", "send ADDRESS", "receive MILLISECONDS", "destroy".
  std::vector<std::string> events() const;
  std::vector<Sent> sent() const;
  /// Channels alive now.
  std::size_t alive() const;

  /// Blocks until `count` messages were given to send. False after 30 real seconds.
  [[nodiscard]] bool waitForSent(std::size_t count) const;
  /// Blocks until `count` workers wait for a request with nothing left to receive. False after 30
  /// real seconds.
  [[nodiscard]] bool waitForIdleWorkers(std::size_t count) const;

  /// Ends the threads of the workers that wait, now or later: receive leaves them by pthread_exit,
  /// which is the only way out of a loop without an end.
  void endWorkers();

  struct State;

 private:
  std::shared_ptr<State> state_;
};

/// An action that throws `value`.
template <class Value>
auto throws(Value value) {
  return [value](auto&&... /*arguments*/) -> int {
    throw Value(value);  // NOLINT(misc-throw-by-value-catch-by-reference): any type is thrown
  };
}

}  // namespace test_support
