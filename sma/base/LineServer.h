#pragma once

#include <functional>
#include <list>
#include <string>
#include <thread>

#include "framework/msglyr/FileDescriptor.h"

namespace sma {

/// Answers lines of text with lines of text at a Unix socket that only its owner may use. All
/// connections are served by one thread of its own, in turn.
class LineServer {
 public:
  /// The answer to a line, both without a line end. Called on the server's thread.
  using Answer = std::function<std::string(const std::string& line)>;

  /// A longer line is answered with `tooLong` and its connection closed.
  static constexpr std::size_t kMostLine = 65536;

  /// Takes over a socket file that nobody listens at. Throws std::runtime_error with path and
  /// cause.
  LineServer(const std::string& path, Answer answer, std::string tooLong);
  /// Ends the connections, and removes the socket file.
  ~LineServer();
  LineServer(const LineServer&) = delete;
  LineServer& operator=(const LineServer&) = delete;

 private:
  struct Connection {
    msglyr::FileDescriptor socket;
    std::string received;  // that is no whole line yet
    std::string toSend;
    bool isEnding = false;  // when all is sent
  };

  void serve();
  void accept();
  bool isAlive(Connection& connection, short events);
  bool receive(Connection& connection);
  void answerLines(Connection& connection);
  bool send(Connection& connection);

  const std::string path_;
  const Answer answer_;
  const std::string tooLong_;
  msglyr::FileDescriptor listener_;
  msglyr::WakeUp wakeUp_;
  std::list<Connection> connections_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace sma
