#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/serviceOrchAG/handlers/RegisterHarness.h"
#include "tests/support/ExpectedReply.h"
#include "tests/support/ReplyDocument.h"

// The tags of a request: missing, twice, blank or odd.

namespace zan_serviceOrchAG::register_test {
namespace {

using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class MissingRequired : public Register, public testing::WithParamInterface<std::string> {};

TEST_P(MissingRequired, Tag_EndsTheRequestBeforeTheEngineIsAsked) {
  std::string tags;
  for (const std::string tag : {"bladeSlotId", "ip", "port"}) {
    if (tag != GetParam()) {
      tags.append("<").append(tag).append(">1</").append(tag).append(">");
    }
  }
  const std::string message = "No <" + GetParam() + "> tag found in the register request";
  test_support::expectReply(handle(requestOf(tags)).get(), "registerResponse", 505, message);
  EXPECT_THAT(svc_.sent(), IsEmpty());
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_EQ(0U, handler_.knownCookies());
  EXPECT_THAT(log_.lines(), ElementsAre(LogLine{6, "errorResponse", message}));
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
  EXPECT_THAT(log_.linesOf("missingTagError"),
              ElementsAre(missing("token"), missing("authorizedPubKey"), missing("bladeCurrTime"),
                          missing("upTime"), missing("cachePlatformImage"),
                          missing("runningPlatformImage")));
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

}  // namespace
}  // namespace zan_serviceOrchAG::register_test
