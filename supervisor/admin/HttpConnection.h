#pragma once

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <memory>
#include <optional>

#include "supervisor/admin/HttpServer.h"
#include "supervisor/admin/Mailbox.h"
#include "supervisor/admin/Places.h"

namespace supervisor::admin {

/// One client's connection: reads a request, has it answered, writes the response, and again.
/// Lives as long as something is under way on it. Used on the server's thread only.
class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
 public:
  using Socket = boost::asio::local::stream_protocol::socket;

  /// `limits`, `answer` and `places` outlive this. `mailbox` leads to the server's thread. Takes a
  /// place and is idle there while it waits for a request or for its client to hang up.
  HttpConnection(Socket socket, const HttpLimits& limits, const HttpServer::Answer& answer,
                 std::shared_ptr<Mailbox> mailbox, Places& places);
  ~HttpConnection();
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  void start() { read(); }

 private:
  using ErrorCode = boost::beast::error_code;
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;
  using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

  void read();
  void onRead(ErrorCode error);
  void serve();
  void await();
  void onAnswered(const Reply::Exchange* exchange);
  void onClientGone(const Reply::Exchange* exchange);
  void endExchange();
  void refuse(ErrorCode error);
  void write(Response response, bool isHead, bool keepAlive);
  void onWritten(ErrorCode error);
  void linger();
  void giveWay();

  const HttpLimits& limits_;
  const HttpServer::Answer& answer_;
  const std::shared_ptr<Mailbox> mailbox_;
  boost::beast::basic_stream<boost::asio::local::stream_protocol> stream_;
  boost::beast::flat_buffer buffer_;
  std::optional<Parser> parser_;               // of the request under way
  std::shared_ptr<Reply::Exchange> exchange_;  // while the answer is awaited
  boost::asio::steady_timer patience_;         // of exchange_
  HttpResponse response_;                      // while it is written
  std::size_t drained_ = 0;                    // bytes
  Places::Place place_;
};

}  // namespace supervisor::admin
