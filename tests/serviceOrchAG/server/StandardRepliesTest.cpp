#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "framework/noxxml/XMLConverter.h"
#include "serviceOrchAG/server/Envelope.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/ExpectedReply.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ReplyDocument.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;
using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::unique_ptr<Response> owned(Response* response) {
  return std::unique_ptr<Response>(response);
}

TEST(ResponseGenerate, CodeAndMessage_StandBelowResponseInThisOrder) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root =
      MsgHandler::AG_response_generate(converter, "heartbeat", 100, "OK");
  EXPECT_EQ(
      "<heartbeatResponse><response><code>100</code><message>OK</message></response>"
      "</heartbeatResponse>",
      noxxml::XMLConverter::xmlSerialize(root));
}

TEST(ResponseGenerate, EmptyMessage_ResponseHoldsOnlyTheCode) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root =
      MsgHandler::AG_response_generate(converter, "heartbeat", 100, "");
  const ReplyDocument reply = ReplyDocument::parse(noxxml::XMLConverter::xmlSerialize(root));
  EXPECT_THAT(reply.response, ElementsAre(Pair("code", "100")));
}

TEST(ResponseGenerate, LargestCode_IsWrittenUnsigned) {
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root =
      MsgHandler::AG_response_generate(converter, "x", 4294967295U, "");
  const ReplyDocument reply = ReplyDocument::parse(noxxml::XMLConverter::xmlSerialize(root));
  EXPECT_THAT(reply.response, ElementsAre(Pair("code", "4294967295")));
}

TEST(ErrorResponse, NullResponse_MakesANewOne) {
  LogCapture log;
  const auto response = owned(MsgHandler::errorResponse("register", 508, "went wrong", nullptr));
  test_support::expectReply(response.get(), "registerResponse", 508, "went wrong");
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{6, "errorResponse", "went wrong"}));
}

TEST(ErrorResponse, ResponseGiven_ItsCodeAndBodyAreReplacedAndItIsReturned) {
  LogCapture log;
  Response response{"old body", 100};
  EXPECT_EQ(&response, MsgHandler::errorResponse("heartbeat", 500, "no", &response));
  EXPECT_EQ(500U, response.status);
  EXPECT_THAT(ReplyDocument::parse(response.body).response,
              ElementsAre(Pair("code", "500"), Pair("message", "no")));
}

TEST(ErrorResponse, EmptyMessage_IsLoggedAsAnEmptyLine) {
  LogCapture log;
  const auto response = owned(MsgHandler::errorResponse("heartbeat", 500, "", nullptr));
  EXPECT_THAT(ReplyDocument::parse(response->body).response, ElementsAre(Pair("code", "500")));
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{6, "errorResponse", ""}));
}

TEST(ErrorResponse, FormatSpecifiersInTheText_AreTextOnly) {
  LogCapture log;
  const auto response = owned(MsgHandler::errorResponse("x", 505, "%s%n%d %100000c", nullptr));
  EXPECT_TRUE(log.contains(6, "%s%n%d %100000c"));
  EXPECT_THAT(ReplyDocument::parse(response->body).response,
              ElementsAre(Pair("code", "505"), Pair("message", "%s%n%d %100000c")));
}

TEST(ErrorResponse, ControlCharactersInTheText_DoNotReachTheLogRaw) {
  LogCapture log;
  const auto response = owned(MsgHandler::errorResponse("x", 505, "a\nb\x1b[2J\x7f", nullptr));
  EXPECT_TRUE(log.contains(6, "a\\x0Ab\\x1B[2J\\x7F"));
}

TEST(ErrorResponse, MarkupInTheText_ReadsBackAsItWas) {
  LogCapture log;
  const std::string text = "</message></response><code>100</code>&amp;\"'";
  const auto response = owned(MsgHandler::errorResponse("x", 505, text, nullptr));
  EXPECT_THAT(ReplyDocument::parse(response->body).response,
              ElementsAre(Pair("code", "505"), Pair("message", text)));
}

class IllegalCommandName : public testing::TestWithParam<std::string> {};

TEST_P(IllegalCommandName, ErrorResponse_HasItsCodeAndAnEmptyBody) {
  LogCapture log;
  Response response{"old body", 100};
  MsgHandler::errorResponse(GetParam(), 500, "Invalid Command", &response);
  EXPECT_EQ(500U, response.status);
  EXPECT_THAT(response.body, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Hostile, IllegalCommandName,
                         testing::Values("a b", "<x", "1register", "x><evil/", "-", "\xff\xfe",
                                         std::string("a\0b", 3), "a\nb", "a\"b='c'"));

TEST(MissingTagResponse, Always_NamesTagAndCommand) {
  LogCapture log;
  const auto response = owned(MsgHandler::missingTagResponse("port", "register", nullptr));
  EXPECT_EQ(505U, response->status);
  EXPECT_EQ("registerResponse", ReplyDocument::parse(response->body).root);
  EXPECT_THAT(ReplyDocument::parse(response->body).response,
              ElementsAre(Pair("code", "505"),
                          Pair("message", "No <port> tag found in the register request")));
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{6, "errorResponse",
                                               "No <port> tag found in the register request"}));
}

TEST(MissingTagResponse, ResponseGiven_IsUsed) {
  LogCapture log;
  Response response;
  EXPECT_EQ(&response, MsgHandler::missingTagResponse("ip", "register", &response));
  EXPECT_EQ(505U, response.status);
}

TEST(MissingValueResponse, Always_EndsInResponse) {
  LogCapture log;
  Response response;
  EXPECT_EQ(&response, MsgHandler::missingValueResponse("port", "register", &response));
  EXPECT_EQ(505U, response.status);
  EXPECT_THAT(ReplyDocument::parse(response.body).response,
              ElementsAre(Pair("code", "505"),
                          Pair("message", "No port value found in the register response")));
  EXPECT_TRUE(log.contains(6, "No port value found in the register response"));
}

TEST(InvalidParamResponse, Always_QuotesTheValue) {
  LogCapture log;
  const auto response = owned(MsgHandler::invalidParamResponse("operCmd", "y.installApp",
                                                               "commandProgressUpdate", nullptr));
  EXPECT_EQ(505U, response->status);
  EXPECT_EQ("commandProgressUpdateResponse", ReplyDocument::parse(response->body).root);
  EXPECT_THAT(ReplyDocument::parse(response->body).response,
              ElementsAre(Pair("code", "505"),
                          Pair("message",
                               "Invalid value \"y.installApp\" found for <operCmd> in the "
                               "commandProgressUpdate request")));
}

TEST(InvalidParamResponse, EmptyValue_IsQuotedToo) {
  LogCapture log;
  const auto response =
      owned(MsgHandler::invalidParamResponse("code", "", "commandProgressUpdate", nullptr));
  EXPECT_TRUE(
      log.contains(6, "Invalid value \"\" found for <code> in the commandProgressUpdate request"));
}

TEST(InvalidParamResponse, MegabyteValue_IsAnsweredInFull) {
  LogCapture log;
  const std::string value(1024 * 1024, 'v');
  const auto response = owned(MsgHandler::invalidParamResponse("t", value, "c", nullptr));
  EXPECT_GT(response->body.size(), value.size());
}

TEST(InvalidActionResponse, Always_IsInvalidCommand) {
  LogCapture log;
  const auto response =
      owned(MsgHandler::invalidActionResponse("get", "platformInfoUpdate", nullptr));
  EXPECT_EQ(500U, response->status);
  EXPECT_THAT(ReplyDocument::parse(response->body).response,
              ElementsAre(Pair("code", "500"),
                          Pair("message",
                               "Received platformInfoUpdate request with invalid action \"get\"")));
}

TEST(MissingTagError, FormatSpecifiers_AreTextOnly) {
  LogCapture log;
  MsgHandler::missingTagError("%s%n", "%d");
  EXPECT_TRUE(log.contains(5, "No <%s%n> tag found in the %d request"));
}

TEST(Envelope, ContentTypeAndVersion_IsTheOneThatIsSpoken) {
  EXPECT_EQ("nox-xml:1", envelope::contentTypeAndVersion());
  EXPECT_STREQ("serviceOrchAG", envelope::kOwnIdentity);
  EXPECT_STREQ("sma_slot", envelope::kSlotIdentity);
}

}  // namespace
}  // namespace zan_serviceOrchAG
