#include "supervisor/admin/Router.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/Json.h"
#include "supervisor/admin/Problem.h"
#include "tests/supervisor/admin/Asking.h"
#include "tests/supervisor/admin/FakeEngine.h"

namespace supervisor::admin {
namespace {

/// Tells what the handler was called with.
Response echo(const Context& /*context*/, const Request& request) {
  Json json{{"parameters", request.parameters}, {"query", request.query}, {"body", request.body}};
  return jsonResponse(json);
}

[[noreturn]] Response throwing(const Context& /*context*/, const Request& /*request*/) {
  throw std::runtime_error("broken\nline");
}

[[noreturn]] Response refusing(const Context& /*context*/, const Request& /*request*/) {
  throw ProblemError({418, "teapot", "Short and stout", "a teapot", "ask for tea", 7, "leaf"});
}

/// Throws for "/late?fail=1", else answers in a step.
void late(const Context& context, const Request& request, const Reply& reply) {
  if (request.query.contains("fail")) {
    throwing(context, request);
  }
  reply.post([reply] { reply(jsonResponse("late")); });
}

const Route kRoutes[] = {
    {"GET", "/things", &echo, {"a", "b"}},       {"POST", "/things", &echo, {}},
    {"GET", "/things/{id}/parts/{part}", &echo}, {"GET", "/throwing", &throwing},
    {"GET", "/free", &echo, {}, false},          {"GET", "/refusing", &refusing},
    {"GET", "/late", &late, {"fail"}},
};

class RouterFixture : public testing::Test {
 protected:
  Response ask(const std::string& method, const std::string& target, const std::string& body = "") {
    return admin::ask(router_, method, target, body);
  }
  Json problem(const std::string& method, const std::string& target) {
    return askInVain(router_, method, target);
  }

  FakeEngine engine_;
  Context context_{"1.2.3", &engine_, "inproc://dme", true};
  const Router router_{kRoutes, context_};
};

TEST_F(RouterFixture, KnownPath_ReachesItsHandler) {
  const Response response = ask("GET", "/things?a=1&b=x%20y", "text");
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(response.contentType, "application/json");
  EXPECT_EQ(response.body,
            "{\"parameters\":[],\"query\":{\"a\":\"1\",\"b\":\"x y\"},\"body\":\"text\"}\n");
}

TEST_F(RouterFixture, StepsInBraces_AreTakenDecoded) {
  EXPECT_EQ(ask("GET", "/things/a%2Fb/parts/7").body,
            "{\"parameters\":[\"a/b\",\"7\"],\"query\":{},\"body\":\"\"}\n");
}

TEST_F(RouterFixture, UnknownPath_IsAProblem) {
  EXPECT_EQ(ask("GET", "/nothing?x=1").body,
            "{\"type\":\"/problems/unknown-path\",\"title\":\"There is nothing at this path\","
            "\"status\":404,\"detail\":\"'/nothing?x=1' is not known\","
            "\"remedy\":\"look into the list of paths in docs/admin.md\"}\n");
  for (const char* target : {"/", "/thing", "/things/1", "/things/1/parts", "/things/1/parts/2/3",
                             "/things//", "//things", "/THINGS"}) {
    EXPECT_EQ(ask("GET", target).status, 404u) << target;
  }
}

TEST_F(RouterFixture, UnknownMethod_IsToldTheKnownOnes) {
  const Response response = ask("DELETE", "/things");
  EXPECT_EQ(response.status, 405u);
  EXPECT_EQ(response.allow, "GET, POST");
  const Json json = problem("FROB", "/things/1/parts/2");
  EXPECT_EQ(json["type"], "/problems/unknown-method");
  EXPECT_EQ(json["detail"], "'FROB' cannot be used here");
  EXPECT_EQ(json["remedy"], "use GET");
}

TEST_F(RouterFixture, UnknownQueryField_IsNamed) {
  const Json json = problem("GET", "/things?a=1&deep=2");
  EXPECT_EQ(json["status"], 400);
  EXPECT_EQ(json["detail"], "query field 'deep' is not known");
  EXPECT_EQ(json["remedy"], "known are: a, b");
  EXPECT_EQ(problem("POST", "/things?a=1")["remedy"], "leave the query out");
}

TEST_F(RouterFixture, UnreadableTarget_IsAProblem) {
  EXPECT_EQ(problem("GET", "/things?a=%zz")["type"], "/problems/bad-target");
  EXPECT_EQ(problem("CONNECT", "host:443")["status"], 400);
}

TEST_F(RouterFixture, HostileTarget_IsQuotedAsText) {
  EXPECT_EQ(problem("GET", "/\xff\"\x01")["detail"], "'/\xEF\xBF\xBD\"\x01' is not known");
}

TEST_F(RouterFixture, HandlerThrows_IsAnInternalProblem) {
  const Json json = problem("GET", "/throwing");
  EXPECT_EQ(json["status"], 500);
  EXPECT_EQ(json["detail"], "broken\nline");
}

TEST_F(RouterFixture, HandlerThrowsAProblem_IsTheAnswer) {
  EXPECT_EQ(ask("GET", "/refusing").body,
            "{\"type\":\"/problems/teapot\",\"title\":\"Short and stout\",\"status\":418,"
            "\"detail\":\"a teapot\",\"remedy\":\"ask for tea\",\"job\":7,\"field\":\"leaf\"}\n");
}

TEST_F(RouterFixture, LateHandler_AnswersLater) {
  EXPECT_EQ(ask("GET", "/late").body, "\"late\"\n");
  EXPECT_EQ(problem("GET", "/late?fail=1")["type"], "/problems/internal");
}

TEST_F(RouterFixture, EngineElsewhere_OnlyRoutesWithoutItAreServed) {
  context_.engine = nullptr;
  context_.engineEndPoint = "ipc:///run/dme";
  const Json json = problem("GET", "/things");
  EXPECT_EQ(json["type"], "/problems/engine-elsewhere");
  EXPECT_EQ(json["status"], 503);
  EXPECT_EQ(json["detail"], "the engine is expected at ipc:///run/dme");
  EXPECT_EQ(ask("GET", "/free").status, 200u);
}

}  // namespace
}  // namespace supervisor::admin
