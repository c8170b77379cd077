#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "framework/base/BioStream.h"

namespace msglyr {
class Link;
}

namespace proc {

/// The service's side of the link to the management engine.
///
/// One thread, owned by the link, receives; send() may be called from any thread and never blocks.
class DmeLink {
 public:
  /// Gets the bytes of one stimulus, on the link's thread; must not block.
  using Receiver = std::function<void(const unsigned char* bytes, std::size_t size)>;

  DmeLink();
  ~DmeLink();

  /// Connects to `endPoint` (inproc://, ipc:// or tcp://) and starts the link's thread. What was
  /// sent before is delivered first. Throws std::runtime_error naming the end point and the cause.
  void open(const std::string& endPoint, Receiver receiver);
  /// Stops the thread and closes the socket. Idempotent.
  void close();

  /// Hands over one stimulus. `urgent` leaves at once; others are collected for about a
  /// millisecond while traffic lasts. Order is kept. False when the queue is full: the stimulus is
  /// dropped and counted.
  bool send(base::OBioStream&& bytes, bool urgent);

  std::uint64_t dropped() const;

 private:
  std::unique_ptr<msglyr::Link> link_;
};

}  // namespace proc
