#pragma once

#include <cstddef>

#include "framework/msglyr/Message.h"

namespace msglyr {

// Size of the address buffer that a caller of MsgLyrChannel::receive provides. At most
// kAddressBytes - 1 bytes and a terminating NUL are written.
inline constexpr std::size_t kAddressBytes = 256;

// A way to exchange whole multipart messages. Not synchronised: callers take turns, under a lock
// of their own if they are several threads.
class MsgLyrChannel {
 public:
  virtual ~MsgLyrChannel() = default;

  // Sends every part of the message; the message is left as it is. Returns the number of parts
  // sent (an empty part counts), or -1 if the message could not be handed to the peer; nothing
  // of it was sent then. `address` is for the log and for tracing only.
  virtual int send(const char* address, Message* message) = 0;

  // Waits up to timeoutMs milliseconds (-1: without limit) for one message, replaces the parts
  // of `message` by those received and returns their number, which is at least 1. Returns 0 if
  // the time-out passed and -1 on an error; `message` is untouched then. `address` may be null,
  // otherwise it takes kAddressBytes bytes: a text that identifies the sender, for tracing.
  virtual int receive(char* address, Message* message, long timeoutMs) = 0;
};

}  // namespace msglyr
