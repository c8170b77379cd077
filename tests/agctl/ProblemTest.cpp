#include "agctl/Problem.h"

#include <gtest/gtest.h>

#include <string>

namespace agctl {
namespace {

std::string document(const std::string& kind) {
  return R"({"type":"/problems/)" + kind +
         R"(","title":"It is refused","status":400,"detail":"so it is","remedy":"do otherwise"})";
}

TEST(Problem, KindDecidesAboutTheExitCode) {
  const std::pair<const char*, ExitCode> cases[] = {
      {"unknown-slot", ExitCode::kNotFound},    {"unknown-app", ExitCode::kNotFound},
      {"unknown-job", ExitCode::kNotFound},     {"unknown-hook", ExitCode::kNotFound},
      {"already-there", ExitCode::kConflict},   {"job-in-the-way", ExitCode::kConflict},
      {"wrong-state", ExitCode::kConflict},     {"bad-body", ExitCode::kUsage},
      {"unknown-field", ExitCode::kUsage},      {"bad-value", ExitCode::kUsage},
      {"too-many-jobs", ExitCode::kOther},      {"not-stored", ExitCode::kOther},
      {"engine-elsewhere", ExitCode::kOther},   {"unknown-path", ExitCode::kOther},
      {"of-a-later-version", ExitCode::kOther},
  };
  for (const auto& [kind, code] : cases) {
    EXPECT_EQ(problemOf(400, document(kind)).exitCode, code) << kind;
  }
}

TEST(Problem, CauseAndRemedyAreTheSupervisors) {
  const Failure failure = problemOf(409, document("wrong-state"));
  EXPECT_EQ(failure.cause, "It is refused: so it is");
  EXPECT_EQ(failure.remedy, "do otherwise");
  EXPECT_EQ(textOf(failure.problem, "type"), "/problems/wrong-state");
}

TEST(Problem, JobInTheWayIsNamed) {
  EXPECT_EQ(problemOf(409, R"({"type":"/problems/job-in-the-way","title":"t","job":17})").remedy,
            "look at it with: agctl job show 17");
  EXPECT_EQ(
      problemOf(409, R"({"type":"/problems/job-in-the-way","remedy":"wait","job":17})").remedy,
      "wait; look at it with: agctl job show 17");
}

TEST(Problem, AnswerWithoutADocumentIsToldByItsStatus) {
  for (const char* body : {"", "<html>", "[]", "{}", R"({"type":7})"}) {
    const Failure failure = problemOf(502, body);
    EXPECT_EQ(failure.exitCode, ExitCode::kOther);
    EXPECT_EQ(failure.cause, "the supervisor answered with status 502");
    EXPECT_TRUE(failure.problem.is_null());
  }
}

TEST(Problem, RemedyNamesCommandsWhereTheSupervisorNamesPaths) {
  EXPECT_EQ(
      problemOf(404, R"({"type":"/problems/unknown-slot","remedy":"see /api/v1/slots"})").remedy,
      "see the slots with: agctl slot list");
  EXPECT_EQ(problemOf(409, R"({"type":"/problems/wrong-state","remedy":"stop it"})").remedy,
            "stop it");
}

TEST(Problem, SupervisorWithoutRoomIsBusy) {
  EXPECT_TRUE(isBusy(problemOf(503, R"({"type":"/problems/too-many-waits"})")));
  EXPECT_TRUE(isBusy(problemOf(503, R"({"type":"/problems/too-many-connections"})")));
  EXPECT_FALSE(isBusy(problemOf(503, R"({"type":"/problems/too-many-jobs"})")));
  EXPECT_FALSE(isBusy(problemOf(503, "no document")));
}

}  // namespace
}  // namespace agctl
