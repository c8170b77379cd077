#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "framework/base/BioStream.h"

namespace msglyr {
class Link;
}

namespace proc {

/// The management engine's side of the link: the end point to which services connect.
///
/// Typed reading and writing of what travels is in framework/method/Wire.h. One thread, owned by
/// the link, receives; send() may be called from any thread, the receiver included, and never
/// blocks.
class EngineLink {
 public:
  /// Names a connected service for as long as its connection lasts.
  using PeerId = std::uint64_t;
  /// Stands for the service that connected last: where calls go before anything arrived.
  static constexpr PeerId kLatestPeer = 0;
  /// Gets the bytes of one stimulus, on the link's thread; must not block. They are valid during
  /// the call. An exception is logged and drops that stimulus.
  using Receiver = std::function<void(PeerId peer, const unsigned char* bytes, std::size_t size)>;

  /// Binds `endPoint` (inproc://, ipc:// or tcp://). Throws std::runtime_error naming the end point
  /// and the cause.
  explicit EngineLink(const std::string& endPoint);
  ~EngineLink();
  EngineLink(const EngineLink&) = delete;
  EngineLink& operator=(const EngineLink&) = delete;

  /// Begins to receive; what came since the end point was bound waits for it. To be called once,
  /// when everything that the receiver uses is there.
  void start(Receiver receiver);

  /// Hands one stimulus, copying it, over for `peer`. `urgent` leaves at once, with everything
  /// sent to that peer before; others are collected for about a millisecond. Order is kept. False
  /// when it was dropped: the link is closed or its queue is full.
  bool send(PeerId peer, const base::OBioStream& bytes, bool urgent);

  /// Stops the thread and closes the socket; later stimuli are dropped. Idempotent. Not to be
  /// called from the receiver.
  void close();

  /// What was bound, with the port that the system chose if "*" was asked for.
  const std::string& endPoint() const;
  /// Stimuli refused by send() or lost with their peer.
  std::uint64_t dropped() const;

 private:
  enum class Gate { kShut, kOpen, kClosed };

  void take(PeerId peer, std::string_view bytes);

  const base::OBioStream greeting_;
  Receiver receiver_;                    // constant once the gate is open
  std::atomic<Gate> gate_{Gate::kShut};  // the link's thread waits for it to open
  std::unique_ptr<msglyr::Link> link_;   // last: its thread uses the rest
};

}  // namespace proc
