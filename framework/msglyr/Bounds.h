#pragma once

#include <chrono>
#include <cstddef>

namespace msglyr {

// What the layer accepts from peers and how long it bears with them.
struct Bounds {
  std::size_t maxMessageBytes = 1024 * 1024;  // all parts of one message together
  unsigned maxParts = 16;                     // of one message, without routing
  int receiveHwm = 1000;                      // whole messages queued per peer, inbound
  int sendHwm = 1000;                         // whole messages queued per peer, outbound
  int maxHandshakes = 1024;                   // connections that wait to be accepted
  std::chrono::milliseconds handshakeTimeout{2000};
  std::chrono::milliseconds heartbeatInterval{10000};  // between probes of a silent peer
  std::chrono::milliseconds heartbeatTimeout{30000};   // silence after which a peer is dropped
};

// Sets the bounds of every socket that is made afterwards. To be called before the first channel
// exists; safe from any thread. Throws std::invalid_argument if a bound is zero or negative.
void setBounds(const Bounds& bounds);

Bounds bounds();

}  // namespace msglyr
