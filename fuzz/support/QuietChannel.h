#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

#include "framework/msglyr/Message.h"

namespace fuzz {

/// Stands in for the message layer: a program that links this in the place of framework_msglyr
/// makes no connection, whatever address a request names. The one worker that calls receive gets
/// its requests here, and clients the answers of their blades. One of it in the process; it keeps
/// nothing of the past.
class QuietChannel {
 public:
  static QuietChannel& instance();

  /// From now on, whether a client's end point is refused by an exception.
  void refuseAddresses(bool refuse);
  /// From now on, what a client receives; nothing for a blade that does not answer.
  void answerClients(std::optional<msglyr::Message> answer);
  /// The commands that clients sent since the last call.
  std::vector<msglyr::Message> takeCommands();
  /// Clients alive now.
  std::size_t clients() const;

  /// Gives the worker a request, waits until it asks for the next one, and returns what it sent
  /// meanwhile. For one caller at a time; waits for as long as it takes.
  std::vector<msglyr::Message> exchange(msglyr::Message request);

  // What the channels call.

  void clientMade();
  void clientGone();
  void throwIfRefused() const;
  void reply(const msglyr::Message& message);
  std::optional<msglyr::Message> answer() const;
  void command(const msglyr::Message& message);
  /// Blocks the worker until there is a request.
  msglyr::Message nextRequest();

 private:
  QuietChannel() = default;

  mutable std::mutex lock_;
  std::condition_variable changed_;
  // All guarded by lock_.
  bool refusesAddresses_ = false;
  std::size_t clients_ = 0;
  bool isWorkerIdle_ = false;
  std::optional<msglyr::Message> answer_;
  std::optional<msglyr::Message> request_;
  std::vector<msglyr::Message> replies_;
  std::vector<msglyr::Message> commands_;
};

}  // namespace fuzz
