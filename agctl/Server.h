#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include "agctl/Failure.h"
#include "agctl/Http.h"

namespace agctl {

/// The supervisor's HTTP interface: JSON there and back.
class Server {
 public:
  /// `socket` is named in what people read; `within` is the time for each answer; `interrupts`
  /// counts how often the user wanted no more.
  Server(Exchanges& exchanges, std::string socket, std::chrono::milliseconds within,
         std::function<unsigned()> interrupts = {})
      : exchanges_(exchanges),
        socket_(std::move(socket)),
        within_(within),
        interrupts_(std::move(interrupts)) {}

  Outcome<Json> get(const std::string& target) { return ask("GET", target, ""); }
  /// `method` changes something: when its answer is lost, nobody knows whether it did.
  Outcome<Json> order(const std::string& method, const std::string& target, const Json& body);

  Request request(const std::string& method, const std::string& target) const;
  /// What a reply to a request means: the document, null for an answer without one.
  Outcome<Json> read(const Reply& reply, bool changesSomething) const;
  Exchanges& exchanges() { return exchanges_; }

 private:
  Outcome<Json> ask(const std::string& method, const std::string& target, const std::string& body);
  Failure toFailure(const TransportError& error, bool changesSomething) const;
  Failure unreadable(const std::string& why, bool changesSomething) const;

  Exchanges& exchanges_;
  const std::string socket_;
  const std::chrono::milliseconds within_;
  const std::function<unsigned()> interrupts_;
};

}  // namespace agctl
