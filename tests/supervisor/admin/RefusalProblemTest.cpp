#include "supervisor/admin/RefusalProblem.h"

#include <gtest/gtest.h>

namespace supervisor::admin {
namespace {

TEST(RefusalProblem, EveryReason_HasItsKind) {
  using Reason = dme::Refusal::Reason;
  const struct {
    Reason reason;
    unsigned status;
    const char* kind;
  } rows[] = {
      {Reason::kUnknownSlot, 404, "unknown-slot"},   {Reason::kUnknownApp, 404, "unknown-app"},
      {Reason::kUnknownJob, 404, "unknown-job"},     {Reason::kBadValue, 400, "bad-value"},
      {Reason::kAlreadyThere, 409, "already-there"}, {Reason::kJobInTheWay, 409, "job-in-the-way"},
      {Reason::kWrongState, 409, "wrong-state"},     {Reason::kTooMany, 503, "too-many-jobs"},
      {Reason::kNotStored, 503, "not-stored"},
  };
  for (const auto& row : rows) {
    const Problem problem = toProblem({row.reason, "what", "do", 7, "name"});
    EXPECT_EQ(problem.status, row.status) << row.kind;
    EXPECT_EQ(problem.kind, row.kind);
    EXPECT_NE(problem.title, "");
    EXPECT_EQ(problem.detail, "what");
    EXPECT_EQ(problem.remedy, "do");
    EXPECT_EQ(problem.job, 7u);
    EXPECT_EQ(problem.field, "name");
  }
  EXPECT_FALSE(toProblem({Reason::kBadValue, "what", "do", 7, ""}).field);
}

TEST(RefusalProblem, AnswerOf_TakesWhatWasGranted) {
  const auto answer = [](int number) {
    return Response{200, "text/plain", std::to_string(number), ""};
  };
  EXPECT_EQ(answerOf(dme::Granted<int>(5), answer).body, "5");
  const dme::Granted<int> refused =
      tl::unexpected(dme::Refusal{dme::Refusal::Reason::kNotStored, "full", "free", 0, ""});
  EXPECT_EQ(answerOf(refused, answer).status, 503u);
}

}  // namespace
}  // namespace supervisor::admin
