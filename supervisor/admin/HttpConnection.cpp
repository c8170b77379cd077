#include "supervisor/admin/HttpConnection.h"

#include <algorithm>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <utility>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;

/// A client that is told that it sends too much gets this much more read and this much time, so
/// that it can come to reading the answer.
constexpr std::size_t kDrainBytes = std::size_t{4} << 20U;
constexpr std::chrono::seconds kDrainWithin{2};
constexpr std::size_t kDrainPiece = 65536;

std::string textOf(beast::string_view text) {
  return {text.data(), text.size()};
}

Problem problemOf(const beast::error_code& error, const HttpLimits& limits) {
  if (error == http::error::header_limit || error == http::error::buffer_overflow) {
    return {431, "head-too-large", "The request's head is too large",
            "more than " + std::to_string(limits.maxHeadBytes) + " bytes",
            "send a shorter target and fewer fields"};
  }
  if (error == http::error::body_limit) {
    return {413, "body-too-large", "The request's body is too large",
            "more than " + std::to_string(limits.maxBodyBytes) + " bytes", "send less at once"};
  }
  return {400, "bad-request", "The request is not HTTP/1.1", error.message(),
          "use a client that speaks HTTP/1.1"};
}

}  // namespace

HttpConnection::HttpConnection(Socket socket, const HttpLimits& limits,
                               const HttpServer::Answer& answer, std::shared_ptr<Mailbox> mailbox,
                               Places& places)
    : limits_(limits),
      answer_(answer),
      mailbox_(std::move(mailbox)),
      stream_(std::move(socket)),
      buffer_(limits.maxHeadBytes + static_cast<std::size_t>(limits.maxBodyBytes)),
      patience_(stream_.get_executor()),
      place_(places, [this] { giveWay(); }) {}

HttpConnection::~HttpConnection() {
  endExchange();
}

void HttpConnection::read() {
  parser_.emplace();
  parser_->header_limit(limits_.maxHeadBytes);
  parser_->body_limit(limits_.maxBodyBytes);
  stream_.expires_after(limits_.requestWithin);
  place_.setIdle();
  http::async_read(
      stream_, buffer_, *parser_,
      [self = shared_from_this()](ErrorCode error, std::size_t /*bytes*/) { self->onRead(error); });
}

void HttpConnection::onRead(ErrorCode error) {
  place_.setBusy();
  if (!stream_.socket().is_open()) {
    return;  // closed meanwhile: a request that came whole in the same moment is not carried out
  }
  if (!error) {
    serve();
    return;
  }
  const bool isProtocol = error.category() == make_error_code(http::error::bad_method).category();
  const bool isOver = error == http::error::end_of_stream || error == http::error::partial_message;
  if (isProtocol && !isOver) {
    refuse(error);
  }  // else the client has gone or was too slow: nobody to tell
}

void HttpConnection::serve() {
  auto& message = parser_->get();
  Request request;
  request.method = textOf(message.method_string());
  request.target = textOf(message.target());
  request.contentType = textOf(message[http::field::content_type]);
  request.body = std::move(message.body());
  if (message.method() == http::verb::head) {
    request.method = "GET";
  }
  exchange_ = std::make_shared<Reply::Exchange>(
      [mailbox = mailbox_](Reply::Step step) { mailbox->post(std::move(step)); });
  answer_(std::move(request), Reply(exchange_));
  await();
}

void HttpConnection::await() {
  const Reply::Exchange* const exchange = exchange_.get();
  auto response = exchange_->takeOr([mailbox = mailbox_, weak = weak_from_this(), exchange] {
    mailbox->post([weak, exchange] {
      if (const auto self = weak.lock()) {
        self->onAnswered(exchange);
      }
    });
  });
  if (response) {
    endExchange();
    write(std::move(*response), parser_->get().method() == http::verb::head,
          parser_->get().keep_alive());
    return;
  }
  patience_.expires_after(exchange_->time().value_or(limits_.answerWithin));
  patience_.async_wait([self = shared_from_this(), waiting = exchange_](ErrorCode error) {
    if (!error) {
      waiting->giveUp();
    }
  });
  stream_.socket().async_wait(Socket::wait_error,
                              [self = shared_from_this(), exchange](ErrorCode error) {
                                if (!error) {
                                  self->onClientGone(exchange);
                                }
                              });
}

void HttpConnection::onAnswered(const Reply::Exchange* exchange) {
  if (exchange_.get() != exchange) {
    return;  // the client has gone meanwhile
  }
  ErrorCode ignored;
  patience_.cancel(ignored);
  stream_.socket().cancel(ignored);
  await();
}

void HttpConnection::onClientGone(const Reply::Exchange* exchange) {
  if (exchange_.get() == exchange) {
    ErrorCode ignored;
    patience_.cancel(ignored);
    endExchange();
  }
}

void HttpConnection::endExchange() {
  if (const auto ended = std::exchange(exchange_, nullptr)) {
    ended->end();
  }
}

void HttpConnection::refuse(ErrorCode error) {
  write(toResponse(problemOf(error, limits_)), false, false);
}

void HttpConnection::write(Response response, bool isHead, bool keepAlive) {
  response_ = HttpResponse(http::int_to_status(response.status), 11);
  const bool hasContent = response_.result() != http::status::no_content;
  if (hasContent) {
    response_.set(http::field::content_type, response.contentType);
  }
  response_.set(http::field::cache_control, "no-store");
  if (!response.allow.empty()) {
    response_.set(http::field::allow, response.allow);
  }
  if (!response.location.empty()) {
    response_.set(http::field::location, response.location);
  }
  if (hasContent) {
    response_.content_length(response.body.size());
  }
  response_.keep_alive(keepAlive);
  if (!isHead) {
    response_.body() = std::move(response.body);
  }
  stream_.expires_after(limits_.responseWithin);
  http::async_write(stream_, response_,
                    [self = shared_from_this()](ErrorCode error, std::size_t /*bytes*/) {
                      self->onWritten(error);
                    });
}

void HttpConnection::onWritten(ErrorCode error) {
  if (error) {
    return;
  }
  if (response_.keep_alive()) {
    response_ = {};
    read();
    return;
  }
  stream_.socket().shutdown(Socket::shutdown_send, error);
  buffer_.clear();
  stream_.expires_after(kDrainWithin);
  place_.setIdle();
  linger();
}

void HttpConnection::linger() {
  // Closing now would make a client that is still sending lose the answer.
  stream_.async_read_some(buffer_.prepare(std::min(kDrainPiece, buffer_.max_size())),
                          [self = shared_from_this()](ErrorCode error, std::size_t bytes) {
                            self->drained_ += bytes;
                            if (!error && self->drained_ < kDrainBytes) {
                              self->linger();
                            }
                          });
}

void HttpConnection::giveWay() {
  stream_.close();  // what is under way on it ends with an error
}

}  // namespace supervisor::admin
