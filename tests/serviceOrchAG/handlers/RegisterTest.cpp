#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/Configured.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ReplyDocument.h"
#include "tests/support/ScriptedChannel.h"
#include "tests/support/ValidationAnswer.h"

namespace zan_serviceOrchAG {
namespace {

using serverapi::OsControllerVersionMe;
using serviceorchapi::ValidateBladeStateMe;
using test_support::answerValidation;
using test_support::Configured;
using test_support::InstalledMsgHandler;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::ManualClock;
using test_support::RecordingSvc;
using test_support::RegistryCleaner;
using test_support::ReplyDocument;
using test_support::ScriptedChannel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string requestOf(const std::string& tags) {
  return "<registerRequest>" + tags + "</registerRequest>";
}

const std::string kAddress = "<bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip><port>5560</port>";
const std::string kPresence =
    "<authorizedPubKey>ssh-rsa A</authorizedPubKey><bladeCurrTime>now</bladeCurrTime>"
    "<upTime>1</upTime>";
const std::string kImages =
    "<cachePlatformImage><osVersion>2.2</osVersion><imageName>c.img</imageName><size>22</size>"
    "<checksum_md5>c</checksum_md5></cachePlatformImage>"
    "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img</imageName><size>11</size>"
    "<checksum_md5>r</checksum_md5></runningPlatformImage>";
const std::string kFull = requestOf(kAddress + "<token>mine</token>" + kPresence + kImages);

/// The arguments of OsControllerVersion.
std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, base::String, base::String, base::String,
           std::uint32_t, base::String, base::String, std::uint32_t, bool, std::uint8_t,
           std::uint8_t, base::String>
imagesOf(std::uint32_t slot, const char* runningVersion, const char* runningImage,
         std::uint32_t size, const char* cachedVersion, const char* cachedImage, bool isValid) {
  return {0, 1,       slot, "", runningVersion, runningImage, size, cachedVersion, cachedImage,
          0, isValid, 1,    6,  "VOLK"};
}

class Register : public testing::Test {
 protected:
  Register() {
    char name[] = "/tmp/hostkeyXXXXXX";
    ::close(mkstemp(name));
    keyPath_ = name;
    std::ofstream(keyPath_) << "old key\nhost key\n";
    configureKey(keyPath_);
    answer(true, false, "engine's token");
  }

  ~Register() override { std::remove(keyPath_.c_str()); }

  void configureKey(const std::string& path) {
    configured_.reset();
    configured_.emplace(std::vector<std::string>{"supervisor.host_key=" + path});
  }

  /// The engine answers every validation from now on like this, at once.
  void answer(bool isValid, bool shouldRetry, const std::string& token) {
    test_support::answerValidations(svc_, isValid, shouldRetry, token);
  }

  void neverAnswer() {
    svc_.onSend([](const RecordingSvc::Sent&) {});
  }

  std::unique_ptr<Response> handle(const std::string& document) {
    return std::unique_ptr<Response>(handler_.AG_registerReqCb("id-1", "", document, 9));
  }

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message, const std::string& token,
                          const std::string& key = "host key") {
    ASSERT_NE(nullptr, response);
    EXPECT_EQ(code, response->status);
    const ReplyDocument reply = ReplyDocument::parse(response->body);
    EXPECT_EQ("registerResponse", reply.root);
    EXPECT_THAT(reply.below, ElementsAre("response", "token", "zedPubKey"));
    EXPECT_THAT(reply.response,
                ElementsAre(Pair("code", std::to_string(code)), Pair("message", message)));
    EXPECT_THAT(reply.further, ElementsAre(Pair("token", token), Pair("zedPubKey", key)));
  }

  ScriptedChannel channels_;
  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
  const InstalledMsgHandler installed_{handler_};
  const RegistryCleaner cleaner_;
  std::string keyPath_;
  std::optional<Configured> configured_;
};

// ----- Verdicts ---------------------------------------------------------------------------------

TEST_F(Register, ValidBlade_GetsItsTokenTheKeyAndAClient) {
  expectReply(handle(kFull), 100, "OK", "engine's token");
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_THAT(channels_.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 4", "server tcp://10.0.0.3:5560"));
}

TEST_F(Register, ValidBlade_LogsItsWay) {
  handle(kFull);
  std::vector<LogLine> lines;
  for (const LogLine& line : log_.lines()) {
    if (line.function == "AG_registerReqCb") {
      lines.push_back(line);
    }
  }
  EXPECT_THAT(
      lines,
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
    handle(kFull);
  }
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

// ----- Time-out ---------------------------------------------------------------------------------

TEST_F(Register, NoAnswer_TimesOutAfterTwentySecondsAndTheLateAnswerFindsNobody) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(20000)));
  clock.advance(std::chrono::milliseconds(20000));
  expectReply(request.get(), 506, "response time out during validating blade state.", "");
  EXPECT_TRUE(
      log_.contains(8, "DME timeout during ValidateBladeState for slot : 3, Message ID : id-1"));
  EXPECT_FALSE(is_bladeRegistered("3"));
  ASSERT_EQ(1U, svc_.sent().size()) << "the images are not reported";
  clock.advance(std::chrono::milliseconds(5000));
  answerValidation(svc_.sent()[0].cookie, true, false, "late");
  EXPECT_FALSE(is_bladeRegistered("3"));
}

TEST_F(Register, AnswerJustBeforeTheTimeOut_Counts) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(20000)));
  clock.advance(std::chrono::milliseconds(19999));
  answerValidation(svc_.sent()[0].cookie, true, false, "in time");
  expectReply(request.get(), 100, "OK", "in time");
}

// ----- What the engine is told ------------------------------------------------------------------

TEST_F(Register, Validation_CarriesSlotRunningVersionAndToken) {
  handle(kFull);
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(3U, base::String("1.1"), base::String("mine"))));
  const auto call = svc_.sent(ValidateBladeStateMe::kClassId).at(0);
  EXPECT_TRUE(call.responseRequired);
  EXPECT_EQ(4, static_cast<int>(call.priority));
}

TEST_F(Register, Images_AreReportedWithoutAWait) {
  handle(kFull);
  EXPECT_THAT(svc_.calls<OsControllerVersionMe>(),
              ElementsAre(imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", true)));
  const auto call = svc_.sent(OsControllerVersionMe::kClassId).at(0);
  EXPECT_FALSE(call.responseRequired);
  EXPECT_EQ(4, static_cast<int>(call.priority));
  EXPECT_NE(svc_.sent()[0].cookie, svc_.sent()[1].cookie);
  EXPECT_EQ(1U, handler_.knownCookies()) << "only the validation is waited for";
}

TEST_F(Register, Images_AreReportedWhateverTheVerdict) {
  answer(false, true, "");
  handle(kFull);
  answer(false, false, "");
  handle(kFull);
  EXPECT_THAT(svc_.calls<OsControllerVersionMe>(),
              ElementsAre(imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", false),
                          imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", false)));
}

struct ImageCase {
  const char* name;
  std::string images;
  const char* runningVersion;
  const char* runningImage;
  unsigned size;
  const char* cachedVersion;
  const char* cachedImage;
  std::vector<std::string> missing;
};

void PrintTo(const ImageCase& image, std::ostream* out) {
  *out << image.name;
}

class Images : public Register, public testing::WithParamInterface<ImageCase> {};

TEST_P(Images, OfARequest_AreReportedAsSent) {
  handle(requestOf(kAddress + "<token>mine</token>" + kPresence + GetParam().images));
  EXPECT_THAT(
      svc_.calls<OsControllerVersionMe>(),
      ElementsAre(imagesOf(3, GetParam().runningVersion, GetParam().runningImage, GetParam().size,
                           GetParam().cachedVersion, GetParam().cachedImage, true)));
  std::vector<std::string> missing;
  for (const LogLine& line : log_.lines()) {
    if (line.level == 5 && line.function == "missingTagError") {
      missing.push_back(line.text);
    }
  }
  std::vector<std::string> expected;
  for (const std::string& tag : GetParam().missing) {
    expected.push_back("No <" + tag + "> tag found in the register request");
  }
  EXPECT_EQ(expected, missing);
}

const std::string kCache =
    "<cachePlatformImage><osVersion>2.2</osVersion><imageName>c.img</imageName><size>22</size>"
    "<checksum_md5>c</checksum_md5></cachePlatformImage>";
const std::string kRunning =
    "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img</imageName><size>11</size>"
    "<checksum_md5>r</checksum_md5></runningPlatformImage>";

INSTANTIATE_TEST_SUITE_P(
    All, Images,
    testing::Values(
        ImageCase{"both", kCache + kRunning, "1.1", "r.img", 11, "2.2", "c.img", {}},
        ImageCase{"running image first", kRunning + kCache, "1.1", "r.img", 11, "2.2", "c.img", {}},
        ImageCase{"cached only", kCache, "", "", 22, "2.2", "c.img", {"runningPlatformImage"}},
        ImageCase{"running only", kRunning, "1.1", "r.img", 11, "", "", {"cachePlatformImage"}},
        ImageCase{"none", "", "", "", 0, "", "", {"cachePlatformImage", "runningPlatformImage"}},
        ImageCase{"two cached",
                  kCache + kCache + kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "",
                  "",
                  {"cachePlatformImage"}},
        ImageCase{"two running",
                  kCache + kRunning + kRunning,
                  "",
                  "",
                  22,
                  "2.2",
                  "c.img",
                  {"runningPlatformImage"}},
        ImageCase{"size of the cached image stands in",
                  kCache + "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img"
                           "</imageName><checksum/></runningPlatformImage>",
                  "1.1",
                  "r.img",
                  22,
                  "2.2",
                  "c.img",
                  {"size"}},
        ImageCase{"size that is no number is 0",
                  kCache + "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img"
                           "</imageName><size>big</size><checksum/></runningPlatformImage>",
                  "1.1",
                  "r.img",
                  0,
                  "2.2",
                  "c.img",
                  {}},
        ImageCase{"blanks",
                  "<cachePlatformImage><osVersion> 2.2\n</osVersion><imageName>\tc.img"
                  "</imageName><size> 22 </size><checksum_x/></cachePlatformImage>" +
                      kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "2.2",
                  "c.img",
                  {}},
        ImageCase{"empty images",
                  "<cachePlatformImage/><runningPlatformImage/>",
                  "",
                  "",
                  0,
                  "",
                  "",
                  {"osVersion", "imageName", "size", "checksum", "osVersion", "imageName", "size",
                   "checksum"}},
        ImageCase{"nested deeper",
                  "<deep>" + kCache + "</deep>" + kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "2.2",
                  "c.img",
                  {}}));

struct ChecksumCase {
  const char* tag;
  bool counts;
};

class Checksums : public Register, public testing::WithParamInterface<ChecksumCase> {};

TEST_P(Checksums, TagOfAnImage_CountsByItsFirstPiece) {
  const std::string tag = GetParam().tag;
  handle(requestOf(kAddress + "<token/>" + kPresence + kCache +
                   "<runningPlatformImage><osVersion/><imageName/><size/><" + tag +
                   "/></runningPlatformImage>"));
  EXPECT_EQ(GetParam().counts ? 0U : 1U,
            log_.count(5, "No <checksum> tag found in the register request"));
}

INSTANTIATE_TEST_SUITE_P(
    All, Checksums,
    testing::Values(ChecksumCase{"checksum", true}, ChecksumCase{"checksum_md5", true},
                    ChecksumCase{"checksum_", true}, ChecksumCase{"checksum_sha_256", true},
                    ChecksumCase{"checksums", false}, ChecksumCase{"_checksum_x", false},
                    ChecksumCase{"md5_checksum", false}, ChecksumCase{"Checksum", false}));

// ----- Tags -------------------------------------------------------------------------------------

class MissingRequired : public Register, public testing::WithParamInterface<std::string> {};

TEST_P(MissingRequired, Tag_EndsTheRequestBeforeTheEngineIsAsked) {
  std::string tags;
  for (const std::string tag : {"bladeSlotId", "ip", "port"}) {
    if (tag != GetParam()) {
      tags.append("<").append(tag).append(">1</").append(tag).append(">");
    }
  }
  const auto response = handle(requestOf(tags));
  ASSERT_NE(nullptr, response);
  EXPECT_EQ(505U, response->status);
  const ReplyDocument reply = ReplyDocument::parse(response->body);
  EXPECT_EQ("registerResponse", reply.root);
  EXPECT_THAT(reply.below, ElementsAre("response"));
  EXPECT_THAT(reply.response,
              ElementsAre(Pair("code", "505"), Pair("message", "No <" + GetParam() +
                                                                   "> tag found in the register "
                                                                   "request")));
  EXPECT_THAT(svc_.sent(), IsEmpty());
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_EQ(0U, handler_.knownCookies());
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{6, "errorResponse",
                                  "No <" + GetParam() + "> tag found in the register request"}));
}

INSTANTIATE_TEST_SUITE_P(All, MissingRequired, testing::Values("bladeSlotId", "ip", "port"));

TEST_F(Register, SeveralRequiredTagsMissing_TheFirstIsNamed) {
  const auto missingOf = [this](const std::string& tags) {
    log_.clear();
    handle(requestOf(tags));
    return log_.lines().at(0).text;
  };
  EXPECT_EQ("No <ip> tag found in the register request", missingOf("<bladeSlotId>3</bladeSlotId>"));
  EXPECT_EQ("No <bladeSlotId> tag found in the register request", missingOf("<port>1</port>"));
  EXPECT_EQ("No <bladeSlotId> tag found in the register request", missingOf("<ip>h</ip>"));
}

TEST_F(Register, NoDocument_LacksItsFirstTag) {
  for (const std::string& document :
       {std::string(), std::string("no document"), std::string("<registerRequest>"),
        std::string("<heartbeatRequest/>"), std::string("\xff\xfe"),
        std::string(2 * 1024 * 1024, '<')}) {
    const auto response = handle(document);
    EXPECT_EQ(505U, response->status);
    EXPECT_THAT(ReplyDocument::parse(response->body).response,
                ElementsAre(Pair("code", "505"),
                            Pair("message", "No <bladeSlotId> tag found in the register request")));
  }
}

TEST_F(Register, TagTwice_TheLastCounts) {
  handle(requestOf("<bladeSlotId>2</bladeSlotId>" + kAddress));
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_FALSE(is_bladeRegistered("2"));
}

TEST_F(Register, BlanksAroundTheAddress_AreTrimmed) {
  handle(
      requestOf("<bladeSlotId> 3 </bladeSlotId><ip>\n10.0.0.3\t</ip><port> 5560 </port>"
                "<token> mine </token>"));
  EXPECT_EQ("server tcp://10.0.0.3:5560", channels_.events().back());
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(3U, base::String(""), base::String("mine"))));
}

TEST_F(Register, SlotInAGroup_IsNoSlot) {
  const auto response = handle(requestOf("<group>" + kAddress + "</group>"));
  EXPECT_EQ(505U, response->status);
}

TEST_F(Register, OptionalTagsMissing_AreLoggedInOrderAndSentEmpty) {
  expectReply(handle(requestOf(kAddress)), 100, "OK", "engine's token");
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(3U, base::String(""), base::String(""))));
  std::vector<std::string> missing;
  for (const LogLine& line : log_.lines()) {
    if (line.level == 5 && line.function == "missingTagError") {
      missing.push_back(line.text);
    }
  }
  EXPECT_THAT(missing, ElementsAre("No <token> tag found in the register request",
                                   "No <authorizedPubKey> tag found in the register request",
                                   "No <bladeCurrTime> tag found in the register request",
                                   "No <upTime> tag found in the register request",
                                   "No <cachePlatformImage> tag found in the register request",
                                   "No <runningPlatformImage> tag found in the register request"));
}

TEST_F(Register, EmptyRequiredTags_ArePresent) {
  expectReply(handle(requestOf("<bladeSlotId/><ip/><port/>")), 100, "OK", "engine's token");
  EXPECT_TRUE(is_bladeRegistered(""));
  EXPECT_EQ("server tcp://:0", channels_.events().back());
}

struct SlotText {
  const char* sent;
  unsigned number;
  const char* key;
};

class SlotTexts : public Register, public testing::WithParamInterface<SlotText> {};

TEST_P(SlotTexts, SlotTag_IsANumberToTheEngineAndATextToTheRegistry) {
  handle(requestOf(std::string("<bladeSlotId>") + GetParam().sent +
                   "</bladeSlotId><ip>h</ip><port>1</port>"));
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(GetParam().number, base::String(""), base::String(""))));
  EXPECT_TRUE(getBladeStatus(GetParam().key));
}

INSTANTIATE_TEST_SUITE_P(
    All, SlotTexts,
    testing::Values(SlotText{"3", 3, "3"}, SlotText{" 3\n", 3, "3"}, SlotText{"03", 3, "03"},
                    SlotText{"+3", 3, "+3"}, SlotText{"-1", 4294967295U, "-1"},
                    SlotText{"abc", 0, "abc"}, SlotText{"3abc", 3, "3abc"},
                    SlotText{"99999999999999999999", 4294967295U, "99999999999999999999"}));

TEST_F(Register, IdentityOfAnotherSlot_DoesNotMatter) {
  handle(kFull);
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_FALSE(is_bladeRegistered("9"));
}

TEST_F(Register, Megabyte_IsHandledAsText) {
  const std::string token(1000000, 't');
  handle(requestOf(kAddress + "<token>" + token + "</token>"));
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(3U, base::String(""), base::String(token))));
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

// ----- Failures and threads ---------------------------------------------------------------------

TEST_F(Register, CallFails_WithdrawsItsCookie) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

TEST_F(Register, AddressIsRefused_LeavesNoClient) {
  channels_.onServerEndPoint(test_support::throws(std::runtime_error("no such host")));
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_EQ(0U, handler_.waitingCookies());
}

TEST_F(Register, TwoInFlight_GetTheirOwnAnswers) {
  neverAnswer();
  const auto requestOfSlot = [](const std::string& slot) {
    return requestOf("<bladeSlotId>" + slot + "</bladeSlotId><ip>h</ip><port>1</port>");
  };
  auto third = std::async(std::launch::async, [&] { return handle(requestOfSlot("3")); });
  ASSERT_TRUE(svc_.waitForSent(1));
  auto fourth = std::async(std::launch::async, [&] { return handle(requestOfSlot("4")); });
  ASSERT_TRUE(svc_.waitForSent(2));
  const auto calls = svc_.sent(ValidateBladeStateMe::kClassId);
  ASSERT_EQ(2U, calls.size());
  EXPECT_NE(calls[0].cookie, calls[1].cookie);
  answerValidation(calls[1].cookie, false, false, "of four");
  expectReply(fourth.get(), 511, "failed to recognized blade in DME", "of four");
  answerValidation(calls[0].cookie, true, false, "of three");
  expectReply(third.get(), 100, "OK", "of three");
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_FALSE(getBladeStatus("4"));
}

TEST_F(Register, AnsweredTwice_OneOfTheAnswersIsTaken) {
  std::vector<std::thread> engines;
  svc_.onSend([&engines](const RecordingSvc::Sent& call) {
    if (call.classId == ValidateBladeStateMe::kClassId) {
      for (const char* token : {"first", "second"}) {
        engines.emplace_back(
            [cookie = call.cookie, token] { answerValidation(cookie, true, false, token); });
      }
    }
  });
  for (int round = 0; round < 50; ++round) {
    const auto response = handle(kFull);
    const auto further = ReplyDocument::parse(response->body).further;
    EXPECT_THAT(further, ElementsAre(Pair("token", testing::AnyOf("first", "second")),
                                     Pair("zedPubKey", "host key")));
    for (std::thread& engine : engines) {
      engine.join();
    }
    engines.clear();
  }
}

TEST_F(Register, ThousandRegistrations_LeaveAThousandCookies) {
  core_log::setLevel(8);
  for (int call = 0; call < 1000; ++call) {
    handle(kFull);
  }
  EXPECT_EQ(1000U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

}  // namespace
}  // namespace zan_serviceOrchAG
