#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "framework/msglyr/Socket.h"

namespace msglyr::test {

using Parts = std::vector<std::string>;

inline constexpr std::chrono::seconds kPatience{20};

// A bare socket of the test's own, with the transport's defaults but for linger.
class TestPeer {
 public:
  explicit TestPeer(int type) : socket_(type) { socket_.set(ZMQ_LINGER, 0); }

  static TestPeer connected(const std::string& endPoint) {
    TestPeer peer(ZMQ_DEALER);
    peer.socket().connect(endPoint);
    return peer;
  }
  static TestPeer listening(const std::string& endPoint = "tcp://127.0.0.1:*") {
    TestPeer peer(ZMQ_ROUTER);
    peer.socket().bind(endPoint);
    return peer;
  }

  Socket& socket() { return socket_; }
  std::string endPoint() const { return socket_.lastEndPoint(); }

  void send(const Parts& parts) {
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const int flags = i + 1 < parts.size() ? ZMQ_SNDMORE : 0;
      if (zmq_send(socket_.handle(), parts[i].data(), parts[i].size(), flags) < 0) {
        throw TransportError("test peer: send", errno);
      }
    }
  }

  // All frames of the next message, routing included; nothing if none comes in time.
  std::optional<Parts> receive(std::chrono::milliseconds limit = kPatience) {
    zmq_pollitem_t item{socket_.handle(), 0, ZMQ_POLLIN, 0};
    if (zmq_poll(&item, 1, static_cast<long>(limit.count())) <= 0) {
      return std::nullopt;
    }
    Parts parts;
    Frame frame;
    do {
      if (!frame.receive(socket_)) {
        throw TransportError("test peer: receive", errno);
      }
      parts.emplace_back(frame.bytes());
    } while (frame.hasMore());
    return parts;
  }

 private:
  Socket socket_;
};

// Restores the bounds that were in force.
class BoundsGuard {
 public:
  explicit BoundsGuard(const Bounds& bounds) : saved_(msglyr::bounds()) { setBounds(bounds); }
  ~BoundsGuard() { setBounds(saved_); }
  BoundsGuard(const BoundsGuard&) = delete;
  BoundsGuard& operator=(const BoundsGuard&) = delete;

 private:
  const Bounds saved_;
};

}  // namespace msglyr::test
