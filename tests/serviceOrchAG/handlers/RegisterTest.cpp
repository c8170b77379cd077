#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/serviceOrchAG/handlers/RegisterHarness.h"
#include "tests/support/ValidationAnswer.h"

namespace zan_serviceOrchAG::register_test {
namespace {

using test_support::answerValidation;
using testing::ElementsAre;

// ----- Verdicts ---------------------------------------------------------------------------------

TEST_F(Register, ValidBlade_GetsItsTokenTheKeyAndAClient) {
  expectReply(handle(kFull), 100, "OK", "engine's token");
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_THAT(channels_.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 4", "server tcp://10.0.0.3:5560"));
}

TEST_F(Register, ValidBlade_LogsItsWay) {
  handle(kFull);
  EXPECT_THAT(
      log_.linesOf("AG_registerReqCb"),
      ElementsAre(
          LogLine{1, "AG_registerReqCb",
                  "Triggering ValidateBladeState method for slot : 3, Message ID : id-1"},
          LogLine{1, "AG_registerReqCb",
                  "ValidateBladeState : wait... for slot : 3, Message ID : id-1 "},
          LogLine{1, "AG_registerReqCb",
                  "Message ID  = id-1, slotId = 3, bladeValid = true, shouldRetry = false, token = "
                  "engine's token"},
          LogLine{1, "AG_registerReqCb",
                  "Triggering OsControllerVersion method for slot : 3, Message ID : id-1"}));
}

TEST_F(Register, Calls_AreAnnouncedAndMadeInOrder) {
  std::vector<std::string> lastLines;
  svc_.onSend([&](const RecordingSvc::Sent& call) {
    const std::vector<LogLine> lines = log_.lines();
    lastLines.push_back(lines.empty() ? "" : lines.back().text);
    if (call.classId == ValidateBladeStateMe::kClassId) {
      EXPECT_EQ(1U, handler_.waitingCookies()) << "the answer may come at once";
      answerValidation(call.cookie, true, false, "t");
    } else {
      EXPECT_EQ(0U, handler_.waitingCookies());
      EXPECT_FALSE(is_bladeRegistered("3")) << "the engine is told before the client is made";
    }
  });
  expectReply(handle(kFull), 100, "OK", "t");
  EXPECT_THAT(lastLines,
              ElementsAre("Triggering ValidateBladeState method for slot : 3, Message ID : id-1",
                          "Triggering OsControllerVersion method for slot : 3, Message ID : id-1"));
}

TEST_F(Register, Verdicts_AreNoErrorsInTheLog) {
  for (const auto& [isValid, shouldRetry] : {std::pair(false, true), std::pair(false, false)}) {
    answer(isValid, shouldRetry, "t");
    EXPECT_NE(100U, handle(kFull)->status);
  }
  ASSERT_EQ(8U, log_.linesOf("AG_registerReqCb").size()) << "each verdict is told";
  for (const LogLine& line : log_.lines()) {
    EXPECT_LT(line.level, 6) << line.text;
  }
}

TEST_F(Register, ValidBladeKnownAsInvalid_KeepsItsClientAndBecomesValid) {
  createSMAClient("3", "10.9.9.9", "1", false);
  expectReply(handle(kFull), 100, "OK", "engine's token");
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_THAT(channels_.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 4", "server tcp://10.9.9.9:1"));
}

TEST_F(Register, NotValidWithRetry_ChangesNothingInTheRegistry) {
  answer(false, true, "t");
  expectReply(handle(kFull), 510, "ZED does not have token, please retry...", "t");
  EXPECT_FALSE(is_bladeRegistered("3"));
  createSMAClient("3", "h", "1", true);
  expectReply(handle(kFull), 510, "ZED does not have token, please retry...", "t");
  EXPECT_TRUE(getBladeStatus("3"));
}

TEST_F(Register, NotValidWithoutRetry_IsRegisteredAsInvalid) {
  answer(false, false, "t");
  expectReply(handle(kFull), 511, "failed to recognized blade in DME", "t");
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_FALSE(getBladeStatus("3"));
}

TEST_F(Register, NotValidWithoutRetryOfAValidBlade_TakesItsValidity) {
  createSMAClient("3", "h", "1", true);
  answer(false, false, "");
  expectReply(handle(kFull), 511, "failed to recognized blade in DME", "");
  EXPECT_FALSE(getBladeStatus("3"));
}

TEST_F(Register, ValidAndRetry_IsValid) {
  answer(true, true, "t");
  expectReply(handle(kFull), 100, "OK", "t");
}

TEST_F(Register, RejectedByTheEngine_CountsAsNotRecognised) {
  test_support::rejectValidations(svc_);
  expectReply(handle(kFull), 511, "failed to recognized blade in DME", "");
  EXPECT_EQ(1U, svc_.sent(OsControllerVersionMe::kClassId).size());
}

TEST_F(Register, MarkupInTheToken_ReadsBackAsItWas) {
  answer(true, false, "<&\"'>]]>");
  expectReply(handle(kFull), 100, "OK", "<&\"'>]]>");
}

TEST_F(Register, FormatSpecifiersInTheToken_AreTextOnly) {
  answer(true, false, "%s%n");
  expectReply(handle(kFull), 100, "OK", "%s%n");
  EXPECT_TRUE(log_.contains(1,
                            "Message ID  = id-1, slotId = 3, bladeValid = true, shouldRetry = "
                            "false, token = %s%n"));
}

// ----- The key ----------------------------------------------------------------------------------

TEST_F(Register, UnreadableKey_IsSentEmpty) {
  configureKey("/nonexistent/key.pub");
  expectReply(handle(kFull), 100, "OK", "engine's token", "");
  EXPECT_TRUE(log_.contains(1, "Unable to Open file : /nonexistent/key.pub"));
}

TEST_F(Register, ChangedKey_IsReadAfresh) {
  expectReply(handle(kFull), 100, "OK", "engine's token", "host key");
  std::ofstream(keyPath_) << "new key\n";
  expectReply(handle(kFull), 100, "OK", "engine's token", "new key");
}

}  // namespace
}  // namespace zan_serviceOrchAG::register_test
