#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace msglyr {

// How soon a message leaves. Batched: within about a millisecond, together with its neighbours,
// at next to no cost. AtOnce: now, and everything queued before it for the same peer with it.
enum class Urgency { Batched, AtOnce };

// A bidirectional stream of whole binary messages between a service and its management engine,
// over inproc://, ipc:// or tcp://. The side that connects is the service; it may do so before
// the other side binds, and connects again when the connection is lost. Messages of one side
// arrive in the order they were sent in. What the other side does not take waits, within
// Limits, and is dropped after Limits::maxWait, so that a management engine that was away does
// not find stale orders when it returns.
//
// One thread, owned by the link, moves the data and calls the handler. send may be called from
// any thread, the handler included; it takes a short lock and never blocks on the peer.
class Link {
 public:
  enum class Side { Connect, Bind };

  // Names a connecting peer, on the binding side. kPeer stands for "the other side": the bound
  // engine, or, seen from the engine, the service that connected last.
  using PeerId = std::uint64_t;
  static constexpr PeerId kPeer = 0;

  // Called on the link's thread with messages that arrived together, oldest first. The bytes
  // are valid during the call. It must not block for long, must not throw and must not call
  // stop. `from` is kPeer on the connecting side.
  using Handler = std::function<void(PeerId from, std::span<const std::string_view> messages)>;

  struct Limits {
    std::size_t maxMessageBytes = 4 * 1024 * 1024;  // a longer one is refused by send
    std::size_t maxQueuedBytes = 64 * 1024 * 1024;  // waiting in this object; beyond: refused
    std::chrono::milliseconds maxWait{10000};       // in this object, for a peer that is away
  };

  struct Counters {
    std::uint64_t sent = 0;      // messages handed to the transport
    std::uint64_t received = 0;  // messages given to the handler
    std::uint64_t dropped = 0;   // refused by send, or their peer was gone or did not drain
    std::uint64_t batches = 0;   // transport messages sent
    std::uint64_t refused = 0;   // transport messages received that are not a link's
  };

  // Binds or connects and starts the thread. Throws std::runtime_error naming the end point and
  // the cause if that is impossible. A connecting link does not wait for the other side.
  Link(Side side, const std::string& endPoint, Handler handler);
  Link(Side side, const std::string& endPoint, Handler handler, Limits limits);
  ~Link();
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  // Queues a message. False if it was dropped: too long, too much is waiting, or stopped. A peer
  // that vanishes later loses what was queued for it; such messages are counted as dropped.
  bool send(std::string_view bytes, Urgency urgency) { return sendTo(kPeer, bytes, urgency); }

  // The same, on the binding side, to the peer that a message came from.
  bool sendTo(PeerId to, std::string_view bytes, Urgency urgency);

  // Hands over what is queued, as far as the other side takes it without waiting, and joins the
  // thread. The handler is not called afterwards. May be called again.
  void stop();

  Counters counters() const;

  // The end point bound to, with the port that the system chose if "*" was asked for.
  const std::string& endPoint() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace msglyr
