#include "supervisor/admin/Reply.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "supervisor/admin/Problem.h"
#include "tests/supervisor/admin/Asking.h"

namespace supervisor::admin {
namespace {

using std::chrono::milliseconds;

Response text(const std::string& body) {
  return {200, "text/plain", body, ""};
}

std::string typeOf(std::optional<Response> response) {
  return response ? Json::parse(response->body).value("type", "") : "no answer";
}

TEST(Reply, FirstAnswer_IsTheOne) {
  Asking asking;
  asking.reply()(text("first"));
  asking.reply()(text("second"));
  EXPECT_EQ(asking.response()->body, "first");
  asking.reply()(text("third"));
  EXPECT_FALSE(asking.response());
}

TEST(Reply, LateAnswer_IsTold) {
  bool isTold = false;
  Reply::Exchange exchange([](const Reply::Step& step) { step(); });
  std::shared_ptr<Reply::Exchange> shared(&exchange, [](Reply::Exchange*) {});
  EXPECT_FALSE(exchange.takeOr([&isTold] { isTold = true; }));
  Reply reply(shared);
  reply(text("late"));
  EXPECT_TRUE(isTold);
  EXPECT_EQ(exchange.takeOr(nullptr)->body, "late");
}

TEST(Reply, AfterTheEnd_NothingHappens) {
  Asking asking;
  int ends = 0;
  int steps = 0;
  asking.reply().whenOver([&ends] { ++ends; });
  const Reply reply = asking.reply();
  reply.post([&steps] { ++steps; });
  asking.leave();
  asking.leave();
  asking.run();
  reply(text("too late"));
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(steps, 0);
  EXPECT_FALSE(asking.response());
}

TEST(Reply, Step_RunsWhileTheRequestIsOpen) {
  Asking asking;
  asking.reply().post([reply = asking.reply()] { reply(text("from a step")); });
  EXPECT_FALSE(asking.response());
  asking.run();
  EXPECT_EQ(asking.response()->body, "from a step");
}

TEST(Reply, StepThatThrows_IsAProblem) {
  Asking asking;
  asking.reply().post([] { throw std::runtime_error("broken"); });
  asking.run();
  EXPECT_EQ(typeOf(asking.response()), "/problems/internal");
  Asking refused;
  refused.reply().post([] { throw ProblemError(badValue("x", "it is 1", "give 2")); });
  refused.run();
  EXPECT_EQ(typeOf(refused.response()), "/problems/bad-value");
}

TEST(Reply, TimeIsOver_IsAnsweredByTheHandlerOrAsNoAnswer) {
  Asking asking;
  asking.reply().within(milliseconds(250), [] { return text("otherwise"); });
  EXPECT_EQ(asking.time(), milliseconds(250));
  asking.giveUp();
  EXPECT_EQ(asking.response()->body, "otherwise");
  Asking forgotten;
  EXPECT_FALSE(forgotten.time());
  forgotten.giveUp();
  const auto response = forgotten.response();
  EXPECT_EQ(response->status, 504u);
  EXPECT_EQ(typeOf(response), "/problems/no-answer");
}

}  // namespace
}  // namespace supervisor::admin
