#include "supervisor/admin/AdminClient.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <cstdint>
#include <system_error>
#include <utility>

#include "framework/os/SocketAddress.h"
#include "supervisor/admin/AdminSocket.h"

namespace supervisor::admin {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using Protocol = asio::local::stream_protocol;

constexpr std::uint64_t kMaxBodyBytes = std::uint64_t{1} << 30U;

/// One request and its response, step by step. A step that fails is the last one.
class Exchange {
 public:
  Exchange(const std::string& target, std::chrono::milliseconds within)
      : request_(http::verb::get, target, 11), stream_(context_) {
    request_.set(http::field::host, "zedd");
    request_.keep_alive(false);
    parser_.body_limit(kMaxBodyBytes);
    stream_.expires_after(within);
  }

  beast::error_code run(const std::string& path) {
    stream_.async_connect(Protocol::endpoint(path), [this](beast::error_code error) {
      if (!(error_ = error)) {
        send();
      }
    });
    context_.run();
    return error_;
  }
  ClientResponse response() {
    auto& message = parser_.get();
    return {message.result_int(), std::move(message.body())};
  }

 private:
  void send() {
    http::async_write(stream_, request_, [this](beast::error_code error, std::size_t /*bytes*/) {
      if (!(error_ = error)) {
        receive();
      }
    });
  }
  void receive() {
    http::async_read(stream_, buffer_, parser_,
                     [this](beast::error_code error, std::size_t /*bytes*/) { error_ = error; });
  }

  asio::io_context context_;
  http::request<http::empty_body> request_;
  http::response_parser<http::string_body> parser_;
  beast::flat_buffer buffer_;
  beast::basic_stream<Protocol> stream_;
  beast::error_code error_;
};

}  // namespace

tl::expected<ClientResponse, std::string> get(const std::string& stateDir,
                                              const std::string& target,
                                              std::chrono::milliseconds within) {
  const os::SocketAddress address(stateDir + "/" + AdminSocket::kFileName);
  if (address.error() != 0) {
    return tl::unexpected(std::generic_category().message(address.error()));
  }
  try {
    Exchange exchange(target, within);
    if (const beast::error_code error = exchange.run(address.path())) {
      return tl::unexpected(error.message());
    }
    return exchange.response();
  } catch (const boost::system::system_error& error) {
    return tl::unexpected<std::string>(error.what());
  }
}

}  // namespace supervisor::admin
