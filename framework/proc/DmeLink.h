#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "framework/base/BioStream.h"
#include "framework/base/Buffer.h"

namespace msglyr {
class Link;
}

namespace proc {

/// The service's side of the link to the management engine.
///
/// One thread, owned by the link, receives; send() may be called from any thread and never blocks.
///
/// The link tells whether the engine is there by asking: each probe() sends a hello, which the
/// engine greets with a number of its own that changes when it is started anew. So a restarted
/// engine is noticed over every transport, also where the transport reconnects unseen.
class DmeLink {
 public:
  /// Gets the bytes of one stimulus, on the link's thread; must not block. An exception is logged
  /// and drops that stimulus.
  using Receiver = std::function<void(const unsigned char* bytes, std::size_t size)>;
  /// Told that the engine answers (true) or went away (false), on the link's thread or on that of
  /// probe(). A restarted engine is reported as gone, then as there. Must not block.
  using Activity = std::function<void(bool up)>;

  /// Hellos without a greeting after which the engine counts as gone.
  static constexpr unsigned kMostUnanswered = 3;

  DmeLink();
  ~DmeLink();
  DmeLink(const DmeLink&) = delete;
  DmeLink& operator=(const DmeLink&) = delete;

  /// Connects to `endPoint` (inproc://, ipc:// or tcp://), starts the link's thread and sends the
  /// first hello. What was sent before is delivered first, and the engine may bind later. Throws
  /// std::runtime_error naming the end point and the cause; open() may then be called again.
  /// Once open or closed, it has no effect.
  void open(const std::string& endPoint, Receiver receiver, Activity activity = {});
  /// Stops the thread and closes the socket; later stimuli are dropped. Idempotent. Not to be
  /// called from the receiver.
  void close();

  /// Hands over one stimulus, copying it. `urgent` leaves at once; others are collected for about
  /// a millisecond while traffic lasts. Order is kept. False when the link is closed or its queue
  /// is full: the stimulus is dropped and counted.
  bool send(const base::OBioStream& bytes, bool urgent);

  /// Asks whether the engine is there. To be called every few seconds; does not block.
  void probe();
  bool isUp() const;

  std::uint64_t dropped() const { return dropped_.load(std::memory_order_relaxed); }

 private:
  /// Stimuli sent before open() that are kept for it.
  static constexpr std::size_t kMostWaiting = 4096;
  struct Waiting {
    std::string bytes;
    bool urgent = false;
  };

  void take(std::string_view bytes);
  bool takeGreeting(const unsigned char* bytes, std::size_t size);
  void greeted(const base::Buffer& engine);
  void tell(bool up) const;
  bool keepOrDrop(std::string_view bytes, bool urgent);

  // Constant once open.
  Receiver receiver_;
  Activity activity_;

  std::mutex lock_;
  bool isClosed_ = false;               // guarded by lock_
  std::vector<Waiting> waiting_;        // guarded by lock_; used until open
  std::unique_ptr<msglyr::Link> link_;  // set once under lock_, then constant
  std::atomic<msglyr::Link*> open_{nullptr};

  mutable std::mutex activityLock_;
  base::Buffer engine_;      // guarded by activityLock_; empty while the engine is away
  unsigned unanswered_ = 0;  // guarded by activityLock_

  std::atomic<std::uint64_t> dropped_{0};
};

}  // namespace proc
