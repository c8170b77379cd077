#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "framework/msglyr/FileDescriptor.h"

namespace test_support {

/// A stretch of network between a client and a server on the loopback that a test can damage: it
/// takes TCP connections and hands on what comes, both ways. Thread-safe.
class TcpProxy {
 public:
  /// Leads to 127.0.0.1:`server`, whether or not anybody listens there yet. Listens at `port`, at
  /// one of the system's choice when it is 0.
  explicit TcpProxy(std::uint16_t server, std::uint16_t port = 0);
  ~TcpProxy();
  TcpProxy(const TcpProxy&) = delete;
  TcpProxy& operator=(const TcpProxy&) = delete;

  std::uint16_t port() const { return port_; }

  /// As a cable that is pulled: what the client sends is dropped before the system acknowledges
  /// it, and what the server sends is kept. mend() puts it in again: what the client's system still
  /// repeats gets through from then on.
  void cut();
  void mend();
  /// Cuts when the ends of a message channel have told each other what they are, and before the
  /// client's first message: the client has a connection, and what it sends into it is dropped.
  void cutBeforeTheFirstMessage();
  [[nodiscard]] bool waitForCut() const;

  /// Keeps what the server sends, until release() hands it on in one piece.
  void hold();
  void release();
  /// Blocks until `text` is `times` times in what is kept. False after 30 real seconds.
  [[nodiscard]] bool waitForHeld(std::string_view text, std::size_t times) const;

  /// Closes every connection.
  void disconnect();

 private:
  struct Connection {
    msglyr::FileDescriptor client;
    msglyr::FileDescriptor server;
    std::string fromClient;    // all of it, for as long as a cut waits for the handshake
    std::string fromServer;    // all of it
    std::size_t handedOn = 0;  // of it, to the client
    bool isOpen = true;

    std::string_view held() const { return std::string_view(fromServer).substr(handedOn); }
  };

  void run();
  void accept();
  void serve(Connection& connection, bool clientHas, bool serverHas);
  void handOn(Connection& connection);
  void cutAfterHandshake(Connection& connection);
  void setCut(bool isCut);

  const msglyr::FileDescriptor listener_;
  const std::uint16_t server_;
  const std::uint16_t port_;
  msglyr::WakeUp wakeUp_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  // Guarded by mutex_.
  std::list<Connection> connections_;
  bool isCut_ = false;
  bool cutsLater_ = false;
  bool holds_ = false;
  bool ends_ = false;

  std::thread thread_;  // last: it uses all of the above
};

}  // namespace test_support
