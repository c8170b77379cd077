#include "supervisor/admin/HttpServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "framework/core_log/Log.h"
#include "supervisor/admin/HttpConnection.h"
#include "supervisor/admin/Mailbox.h"
#include "supervisor/admin/Places.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

namespace asio = boost::asio;
using Protocol = asio::local::stream_protocol;

/// After a failed accept, usually for want of descriptors.
constexpr std::chrono::milliseconds kAcceptPause{1000};

std::string tooManyConnections(std::size_t bound) {
  const Response response =
      toResponse({503, "too-many-connections", "Too many connections",
                  "all of " + std::to_string(bound) + " connections have a request in service",
                  "try again when one of them is over"});
  return "HTTP/1.1 503 Service Unavailable\r\nContent-Type: " + response.contentType +
         "\r\nRetry-After: 1\r\nConnection: close\r\nContent-Length: " +
         std::to_string(response.body.size()) + "\r\n\r\n" + response.body;
}

}  // namespace

class HttpServer::Listener {
 public:
  Listener(int listeningSocket, const HttpLimits& limits, Answer answer)
      : limits_(limits),
        answer_(std::move(answer)),
        refusal_(tooManyConnections(limits.maxConnections)),
        places_(limits.maxConnections),
        mailbox_(std::make_shared<Mailbox>(context_)),
        acceptor_(context_, Protocol(), listeningSocket),
        pause_(context_) {
    accept();
    thread_ = std::thread([this] { run(); });
  }
  ~Listener() {
    context_.stop();
    thread_.join();
    mailbox_->close();
  }

 private:
  void run() {
    while (!context_.stopped()) {
      try {
        context_.run();
      } catch (const std::exception& error) {
        // What was under way on the connection is gone with it; the others are not concerned.
        core_log::logPrintf("run", core_log::serviceLevel(), 8, "admin: a connection failed: %s",
                            error.what());
      }
    }
  }

  void accept() {
    acceptor_.async_accept([this](const boost::system::error_code& error, Protocol::socket socket) {
      if (error) {
        pauseAfter(error);
        return;
      }
      take(std::move(socket));
      accept();
    });
  }

  void pauseAfter(const boost::system::error_code& error) {
    core_log::logPrintf("accept", core_log::serviceLevel(), 6, "admin: no connection: %s",
                        error.message().c_str());
    pause_.expires_after(kAcceptPause);
    pause_.async_wait([this](const boost::system::error_code& /*ended*/) { accept(); });
  }

  void take(Protocol::socket socket) {
    if (!places_.makeRoom()) {
      refuse(socket);
      return;
    }
    std::make_shared<HttpConnection>(std::move(socket), limits_, answer_, mailbox_, places_)
        ->start();
  }

  void refuse(Protocol::socket& socket) const {
    // It fits into the empty buffer of a new connection, so that nothing has to wait for it.
    boost::system::error_code ignored;
    socket.non_blocking(true, ignored);
    socket.write_some(asio::buffer(refusal_), ignored);
  }

  const HttpLimits limits_;
  const Answer answer_;
  const std::string refusal_;
  Places places_;
  asio::io_context context_{1};
  const std::shared_ptr<Mailbox> mailbox_;
  Protocol::acceptor acceptor_;
  asio::steady_timer pause_;
  std::thread thread_;
};

HttpServer::HttpServer(int listeningSocket, const HttpLimits& limits, Answer answer)
    : listener_(std::make_unique<Listener>(listeningSocket, limits, std::move(answer))) {}

HttpServer::~HttpServer() = default;

}  // namespace supervisor::admin
