#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "framework/msglyr/FileDescriptor.h"

namespace zan_serviceOrchAG {

/// A blade's end point below the message transport: takes TCP connections, and says on them what a
/// test wants, be it the transport's language or not. One connection at a time; used by one thread.
/// Whatever waits for the other side throws std::runtime_error after 30 real seconds.
class RawBlade {
 public:
  /// Listens on the loopback.
  RawBlade();

  std::uint16_t port() const;
  /// Takes the next connection, which may be one that the other side has left already. The one
  /// before is closed.
  void accept();
  /// Tells the other side what this is, and hears the same. False when it has left.
  [[nodiscard]] bool shakeHands();
  /// Takes connections until one is alive, and shakes hands there.
  void acceptAlive();
  /// The last part of the next message.
  std::string takeDocument();
  /// False once the other side has closed the connection.
  bool write(std::string_view bytes);
  /// Blocks until the other side closes the connection; what it says until then is passed over.
  void waitForEnd();
  void close();

  /// A part of a message as it travels.
  static std::string part(std::string_view body, bool hasMore);
  /// The beginning of a part of this size.
  static std::string partHeader(std::uint64_t size, bool hasMore);

 private:
  struct Frame {
    unsigned flags = 0;
    std::string body;
  };
  /// False at the end of the connection.
  bool read(std::string& bytes, std::size_t size);
  bool readFrame(Frame& frame);

  const msglyr::FileDescriptor listener_;
  msglyr::FileDescriptor connection_;
};

}  // namespace zan_serviceOrchAG
