#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"
#include "supervisor/admin/Target.h"

namespace supervisor::admin {

struct Context;

/// Serves one request. Called on the interface's thread: quick, and never waiting for the disk or
/// for a blade. What it throws is the answer: a ProblemError's problem, else an internal one.
using Handler = Response (*)(const Context& context, const Request& request);
/// The same for an answer that comes later.
using LateHandler = void (*)(const Context& context, const Request& request, const Reply& reply);

/// A row of the table of what can be asked.
struct Route {
  std::string_view method;
  std::string_view pattern;  ///< "/api/v1/slots/{number}": a step in braces takes any text
  std::variant<Handler, LateHandler> handler;
  std::vector<std::string_view> query = {};  ///< the fields that may be given
  bool needsEngine = true;                   ///< refused while the engine is not in this process
};

/// Finds the row for a request and answers in its place when there is none. Constant after
/// construction, so thread-safe as far as the handlers are.
class Router {
 public:
  /// Both outlive this. Rows are tried in their order.
  Router(std::span<const Route> routes, const Context& context)
      : routes_(routes), context_(context) {}

  /// Has a request with `method`, `target`, `contentType` and `body` answered by its handler, or
  /// with a problem: 400 for a target that cannot be read or a query field that the route does not
  /// know, 404 for an unknown path, 405 for a method that the path does not have, 503 without
  /// the engine, 500 for a handler that throws.
  void answer(Request request, const Reply& reply) const;

 private:
  void dispatch(const Target& target, Request& request, const Reply& reply) const;
  void serve(const Route& route, const Request& request, const Reply& reply) const;

  std::span<const Route> routes_;
  const Context& context_;
};

}  // namespace supervisor::admin
