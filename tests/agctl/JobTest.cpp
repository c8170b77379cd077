#include "agctl/Job.h"

#include <gtest/gtest.h>

#include <string>

namespace agctl {
namespace {

Job job(const std::string& state, const std::string& reason = "") {
  return *Job::read({{"id", 17},
                     {"verb", "formatDisk"},
                     {"slot", 3},
                     {"state", state},
                     {"reason", reason},
                     {"percentage", 40},
                     {"revision", 5}});
}

TEST(Job, EndDecidesAboutTheExitCode) {
  struct Case {
    const char* state;
    const char* reason;
    ExitCode code;
    bool isOpen;
  };
  const Case cases[] = {
      {"succeeded", "", ExitCode::kDone, false},
      {"succeeded", "seenDone", ExitCode::kDone, false},
      {"failed", "refused", ExitCode::kFailedOnBlade, false},
      {"failed", "failedOnBlade", ExitCode::kFailedOnBlade, false},
      {"failed", "seenUndone", ExitCode::kFailedOnBlade, false},
      {"failed", "deliverByPast", ExitCode::kBladeOffline, false},
      {"failed", "cancelled", ExitCode::kOther, false},
      {"unknown", "answerLost", ExitCode::kUnknownOutcome, false},
      {"unknown", "restarted", ExitCode::kUnknownOutcome, false},
      {"unknown", "finishByPast", ExitCode::kUnknownOutcome, false},
      {"accepted", "", ExitCode::kUnknownOutcome, true},
      {"accepted", "waitsForTurn", ExitCode::kUnknownOutcome, true},
      {"accepted", "waitsForBlade", ExitCode::kBladeOffline, true},
      {"accepted", "notDelivered", ExitCode::kBladeOffline, true},
      {"sending", "", ExitCode::kUnknownOutcome, true},
      {"running", "", ExitCode::kUnknownOutcome, true},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(exitCodeOf(job(each.state, each.reason)), each.code) << each.state << each.reason;
    EXPECT_EQ(job(each.state, each.reason).isOpen(), each.isOpen) << each.state << each.reason;
  }
}

TEST(Job, IsToldInWords) {
  EXPECT_EQ(job("running").subject(), "job 17 (formatDisk of slot 3)");
  EXPECT_EQ(job("running").progress(), "running, 40 %");
  EXPECT_EQ(job("accepted", "waitsForBlade").progress(), "accepted, waitsForBlade");
  const auto ofApp = Job::read({{"id", 1}, {"verb", "start"}, {"app", "a"}, {"state", "sending"}});
  EXPECT_EQ(ofApp->subject(), "job 1 (start of app a)");
}

TEST(Job, PercentageIsNoMoreThanAll) {
  EXPECT_EQ(Job::read({{"id", 1}, {"state", "running"}, {"percentage", 4000}})->percentage, 100U);
}

TEST(Job, AnswerThatIsNoneIsAFailure) {
  for (const char* text : {"{}", R"({"id":17})", R"({"id":17,"state":"done"})",
                           R"({"id":-1,"state":"running"})", "[]", "null"}) {
    const auto read = Job::read(*readJson(text));
    ASSERT_FALSE(read) << text;
    EXPECT_EQ(read.error().exitCode, ExitCode::kOther);
  }
}

}  // namespace
}  // namespace agctl
