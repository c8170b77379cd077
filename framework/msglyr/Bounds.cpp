#include "framework/msglyr/Bounds.h"

#include <mutex>
#include <stdexcept>
#include <string>

namespace msglyr {
namespace {

std::mutex boundsMutex;
Bounds current;  // guarded by boundsMutex

void requirePositive(bool positive, const char* name) {
  if (!positive) {
    throw std::invalid_argument(std::string("message layer: ") + name + " must be positive");
  }
}

}  // namespace

void setBounds(const Bounds& bounds) {
  using std::chrono::milliseconds;
  requirePositive(bounds.maxMessageBytes > 0, "maxMessageBytes");
  requirePositive(bounds.maxParts > 0, "maxParts");
  requirePositive(bounds.receiveHwm > 0, "receiveHwm");
  requirePositive(bounds.sendHwm > 0, "sendHwm");
  requirePositive(bounds.maxHandshakes > 0, "maxHandshakes");
  requirePositive(bounds.handshakeTimeout > milliseconds::zero(), "handshakeTimeout");
  requirePositive(bounds.heartbeatInterval > milliseconds::zero(), "heartbeatInterval");
  requirePositive(bounds.heartbeatTimeout > milliseconds::zero(), "heartbeatTimeout");
  const std::lock_guard guard(boundsMutex);
  current = bounds;
}

Bounds bounds() {
  const std::lock_guard guard(boundsMutex);
  return current;
}

}  // namespace msglyr
