#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

/// Bounds of what a client can make the server hold and wait for.
struct HttpLimits {
  /// One more takes the place of the one that has been without a whole request for longest. If all
  /// have a request in service, it is answered with 503 and closed.
  std::size_t maxConnections = 128;
  std::uint32_t maxHeadBytes = 8192;
  std::uint64_t maxBodyBytes = 65536;
  /// For a whole request, from the moment the server is ready for it, so that it bounds idle
  /// connections as well.
  std::chrono::milliseconds requestWithin{10000};
  /// For the answer to be there, unless its handler has a time of its own.
  std::chrono::milliseconds answerWithin{30000};
  std::chrono::milliseconds responseWithin{30000};
};

/// HTTP/1.1 on a Unix socket. One thread serves all connections; none waits for another's client.
/// A connection may carry any number of requests, also without waiting for the answers, which
/// come in their order. What breaks a bound is answered with a problem where an answer is
/// possible (400, 413, 431), and the connection is closed. A client that closes while it waits for
/// an answer is noticed.
class HttpServer {
 public:
  /// Called on the server's thread with everything but `parameters` and `query` filled in.
  using Answer = std::function<void(Request, const Reply&)>;

  /// Takes over the listening socket and serves it. Throws std::runtime_error when it cannot.
  HttpServer(int listeningSocket, const HttpLimits& limits, Answer answer);
  /// Drops every connection, those that wait for an answer included, and ends the thread. Takes as
  /// long as the call of `answer` under way. Replies that are still held do no harm later.
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

 private:
  class Listener;

  std::unique_ptr<Listener> listener_;
};

}  // namespace supervisor::admin
