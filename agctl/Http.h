#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace agctl {

/// What the supervisor is asked over HTTP.
struct Request {
  std::string method = "GET";
  std::string target;  ///< path and query, encoded
  std::string body;    ///< JSON; empty for none
  std::chrono::milliseconds within{30'000};
};

struct Response {
  long status = 0;
  std::string body;
};

/// Why there is no response.
struct TransportError {
  enum class Kind : std::uint8_t {
    kNotConnected,  ///< the request certainly did not reach the supervisor
    kNoAnswer,      ///< it may have: no answer in time, or half of one
    kNotHttp        ///< what answers is no supervisor, or says more than can be taken
  };
  Kind kind = Kind::kNotConnected;
  std::string cause;
};

using Reply = tl::expected<Response, TransportError>;

/// How long an answer is waited for when the user wants no more: most are there within that.
inline constexpr std::chrono::seconds kAnswerAfterInterrupt{2};

/// Requests to one supervisor, several of them under way at a time. For one thread.
class Exchanges {
 public:
  struct Finished {
    std::size_t key;
    Reply reply;
  };

  virtual ~Exchanges() = default;

  /// Begins a request, over a connection of its own. The key is the caller's.
  virtual void start(std::size_t key, const Request& request) = 0;
  /// Blocks until at least one request is over, something interrupts, or the time is; returns those
  /// that are over, in no order.
  virtual std::vector<Finished> wait(std::chrono::milliseconds most) = 0;
  /// Breaks off what is under way.
  virtual void clear() = 0;

  /// One request, start to end, with no other under way. `interrupts` counts how often the user
  /// wanted no more: after one the answer is given a moment, after two no more.
  Reply exchange(const Request& request, const std::function<unsigned()>& interrupts = {});
};

/// A part of a path or of a query, so that it says nothing but itself.
std::string encode(std::string_view text);

}  // namespace agctl
