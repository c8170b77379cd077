#pragma once

#include <memory>

#include "framework/os/Task.h"

namespace msglyr {
class MsgLyrChannel;
}

namespace zan_serviceOrchAG {

/// Receives the requests of the blades, one after the other, has them handled and sends the
/// replies. Five of these run for as long as the service does, each on a thread and with a channel
/// of its own.
class WorkerTask : public os::Task {
 public:
  /// `number` names the worker in the log. `left` tells which of the two supervisors this is, and
  /// so where it listens.
  WorkerTask(int number, bool left);

  /// Never returns. Whatever goes wrong with a request, it is logged, the request is dropped and
  /// the next one received.
  void run() override;
  void onExit() override {}

 private:
  /// Tries every second until it succeeds.
  std::unique_ptr<msglyr::MsgLyrChannel> openChannel() const;
  std::unique_ptr<msglyr::MsgLyrChannel> tryOpenChannel() const;
  void serveOne(msglyr::MsgLyrChannel& channel) const;

  const int number_;
  const bool left_;
};

}  // namespace zan_serviceOrchAG
