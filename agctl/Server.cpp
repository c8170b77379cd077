#include "agctl/Server.h"

#include "agctl/Problem.h"

namespace agctl {
namespace {

constexpr const char* kLookFirst = "look before you try again, e.g. with: agctl job list";

}  // namespace

Request Server::request(const std::string& method, const std::string& target) const {
  Request request;
  request.method = method;
  request.target = "/api/v1" + target;
  request.within = within_;
  return request;
}

Outcome<Json> Server::order(const std::string& method, const std::string& target,
                            const Json& body) {
  return ask(method, target, body.is_null() ? "" : body.dump());
}

Outcome<Json> Server::ask(const std::string& method, const std::string& target,
                          const std::string& body) {
  Request asked = request(method, target);
  asked.body = body;
  return read(exchanges_.exchange(asked, interrupts_), method != "GET");
}

Outcome<Json> Server::read(const Reply& reply, bool changesSomething) const {
  if (!reply) {
    return tl::unexpected(toFailure(reply.error(), changesSomething));
  }
  if (reply->status < 200 || reply->status > 299) {
    return tl::unexpected(problemOf(reply->status, reply->body));
  }
  if (reply->body.empty() && reply->status == 204) {
    return Json();
  }
  auto document = readJson(reply->body);
  if (!document || !document->is_object()) {
    return tl::unexpected(
        unreadable(document ? "it is no JSON object" : document.error(), changesSomething));
  }
  return std::move(*document);
}

Failure Server::toFailure(const TransportError& error, bool changesSomething) const {
  switch (error.kind) {
    case TransportError::Kind::kNotConnected:
      return {ExitCode::kUnreachable,
              "no supervisor answers at " + socket_ + ": " + error.cause,
              "start zedd, or name its socket with --socket or --config; only zedd's user and root "
              "may connect",
              {}};
    case TransportError::Kind::kNoAnswer:
      if (changesSomething) {
        return {
            ExitCode::kUnknownOutcome,
            "the supervisor's answer is lost, and it may have done what was asked: " + error.cause,
            kLookFirst,
            {}};
      }
      return {ExitCode::kUnreachable,
              "the supervisor at " + socket_ + " did not answer: " + error.cause,
              "try again, with a longer --timeout if it is busy; else look into its log",
              {}};
    case TransportError::Kind::kNotHttp:
      break;
  }
  return unreadable(error.cause, changesSomething);
}

Failure Server::unreadable(const std::string& why, bool changesSomething) const {
  const std::string cause = "the answer of " + socket_ + " cannot be read: " + why;
  if (changesSomething) {
    return {ExitCode::kUnknownOutcome, cause + "; it may have done what was asked", kLookFirst, {}};
  }
  return {ExitCode::kOther,
          cause,
          "check that the socket is zedd's, and install both from one release",
          {}};
}

}  // namespace agctl
