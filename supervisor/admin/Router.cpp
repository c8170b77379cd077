#include "supervisor/admin/Router.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "framework/core_log/Log.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

std::string join(const std::vector<std::string_view>& words) {
  std::string text;
  for (const std::string_view word : words) {
    text.append(text.empty() ? "" : ", ").append(word);
  }
  return text;
}

/// What the steps in braces take, or nothing when the path is another.
std::optional<std::vector<std::string>> match(std::string_view pattern,
                                              const std::vector<std::string>& steps) {
  std::vector<std::string> taken;
  for (const std::string& step : steps) {
    if (pattern.empty()) {
      return std::nullopt;
    }
    pattern.remove_prefix(1);
    const std::string_view wanted = pattern.substr(0, pattern.find('/'));
    pattern.remove_prefix(wanted.size());
    if (wanted.starts_with('{')) {
      taken.push_back(step);
    } else if (wanted != step) {
      return std::nullopt;
    }
  }
  return pattern.empty() ? std::optional(std::move(taken)) : std::nullopt;
}

Problem unknownPath(const std::string& target) {
  return {404, "unknown-path", "There is nothing at this path", "'" + target + "' is not known",
          "look into the list of paths in docs/admin.md"};
}

Response wrongMethod(const Request& request, const std::vector<std::string_view>& allowed) {
  Response response =
      toResponse({405, "unknown-method", "The path does not have this method",
                  "'" + request.method + "' cannot be used here", "use " + join(allowed)});
  response.allow = join(allowed);
  return response;
}

Problem unknownQueryField(const std::string& name, const std::vector<std::string_view>& known) {
  return {400, "unknown-query-field", "The query has a field that is not known here",
          "query field '" + name + "' is not known",
          known.empty() ? "leave the query out" : "known are: " + join(known)};
}

Problem engineElsewhere(const std::string& endPoint) {
  return {503, "engine-elsewhere", "The management engine is not in this process",
          "the engine is expected at " + endPoint, "ask the process that runs the engine"};
}

Problem badTarget(const std::string& cause) {
  return {400, "bad-target", "The target cannot be read", cause,
          "escape what has a meaning in a target, and name each query field once"};
}

/// What keeps the request from the route, if anything does.
void check(const Route& route, const Context& context, const Request& request) {
  for (const auto& field : request.query) {
    if (std::ranges::find(route.query, field.first) == route.query.end()) {
      throw ProblemError(unknownQueryField(field.first, route.query));
    }
  }
  if (route.needsEngine && context.engine == nullptr) {
    throw ProblemError(engineElsewhere(context.engineEndPoint));
  }
}

}  // namespace

void Router::answer(Request request, const Reply& reply) const {
  auto target = parseTarget(request.target);
  if (!target) {
    reply(toResponse(badTarget(target.error())));
    return;
  }
  request.query = std::move(target->query);
  dispatch(*target, request, reply);
}

void Router::dispatch(const Target& target, Request& request, const Reply& reply) const {
  std::vector<std::string_view> allowed;
  for (const Route& route : routes_) {
    auto parameters = match(route.pattern, target.steps);
    if (!parameters) {
      continue;
    }
    if (route.method == request.method) {
      request.parameters = std::move(*parameters);
      serve(route, request, reply);
      return;
    }
    allowed.push_back(route.method);
  }
  reply(allowed.empty() ? toResponse(unknownPath(request.target)) : wrongMethod(request, allowed));
}

void Router::serve(const Route& route, const Request& request, const Reply& reply) const {
  try {
    check(route, context_, request);
    if (const Handler* const handler = std::get_if<Handler>(&route.handler)) {
      reply((*handler)(context_, request));
    } else {
      std::get<LateHandler>(route.handler)(context_, request, reply);
    }
  } catch (const ProblemError& error) {
    reply(toResponse(error.problem()));
  } catch (const std::exception& error) {
    core_log::logPrintf("serve", core_log::serviceLevel(), 8, "admin: %s %s failed: %s",
                        request.method.c_str(), request.target.c_str(), error.what());
    reply(toResponse(internalProblem(error)));
  }
}

}  // namespace supervisor::admin
