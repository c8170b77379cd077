#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/serviceOrchAG/server/WorkerTaskHarness.h"
#include "tests/support/ReplyDocument.h"

// Requests that are answered.

namespace zan_serviceOrchAG::worker_task_test {
namespace {

using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// ----- A request and its reply ------------------------------------------------------------------

TEST_F(WorkerTaskTest, Request_IsAnsweredWithItsOwnContentTypeAndId) {
  channels_.onReceive(heartbeat());
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  const ScriptedChannel::Sent reply = channels_.sent()[0];
  EXPECT_EQ("sma_slot3.heartbeat", reply.address);
  ASSERT_EQ(5U, reply.parts.size());
  EXPECT_EQ("sma_slot3.heartbeat", reply.parts[0]);
  EXPECT_EQ("nox-xml:1", reply.parts[1]);
  EXPECT_EQ("id-1", reply.parts[2]);
  EXPECT_EQ("100", reply.parts[3]);
  EXPECT_THAT(ReplyDocument::parse(reply.parts[4]).response,
              ElementsAre(Pair("code", "100"), Pair("message", "OK")));
}

TEST_F(WorkerTaskTest, Request_LogsItsWay) {
  channels_.onReceive(heartbeat());
  serve();
  const std::string body =
      "<heartbeatResponse><response><code>100</code><message>OK</message></response>"
      "</heartbeatResponse>";
  EXPECT_THAT(
      requestLines(),
      ElementsAre(
          LogLine{1, "run",
                  "Calling handleCb with identity: serviceOrchAG, cmd: heartbeat, action: , "
                  "Message Id: id-1, client identity: sma_slot3"},
          LogLine{4, "handleCb",
                  "Handling SMA request cmd : heartbeat, action :  , key : heartbeat, message ID : "
                  "id-1, client identity : sma_slot3, Message : " +
                      kDocument + " "},
          LogLine{1, "AG_heartbeatReqCb",
                  "Triggering UpdateSmaHeartbeat method for slot : 3, Message ID : id-1"},
          LogLine{1, "run",
                  "Built serviceAG reply for SMA request with subject : sma_slot3.heartbeat, "
                  "Command : sma_slot3.heartbeat, Content-type : nox-xml:1, Status Code : 100, "
                  "Message ID : id-1,  Message : " +
                      body + " "},
          LogLine{1, "run",
                  "Reply sent from serviceAG to SMA with subject : sma_slot3.heartbeat, Message "
                  "ID : id-1"}));
}

struct SubjectCase {
  std::string subject;
  const char* replySubject;
  const char* status;
  const char* root;
};

class Subjects : public WorkerTaskTest, public testing::WithParamInterface<SubjectCase> {};

TEST_P(Subjects, Request_GetsTheReplyOfItsCommandAndAction) {
  Parts request = heartbeat(GetParam().subject);
  channels_.onReceive(request);
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ(GetParam().replySubject, channels_.sent()[0].address);
  EXPECT_EQ(GetParam().replySubject, channels_.sent()[0].parts[0]);
  EXPECT_EQ(GetParam().status, channels_.sent()[0].parts[3]);
  EXPECT_EQ(GetParam().root, ReplyDocument::parse(channels_.sent()[0].parts[4]).root);
}

INSTANTIATE_TEST_SUITE_P(
    All, Subjects,
    testing::Values(
        SubjectCase{"serviceOrchAG.heartbeat", "sma_slot3.heartbeat", "100", "heartbeatResponse"},
        SubjectCase{"serviceOrchAG.register", "sma_slot3.register", "505", "registerResponse"},
        SubjectCase{"serviceOrchAG.heartbeat.", "sma_slot3.heartbeat", "100", "heartbeatResponse"},
        SubjectCase{"serviceOrchAG.heartbeat..x", "sma_slot3.heartbeat", "100",
                    "heartbeatResponse"},
        SubjectCase{"serviceOrchAG.heartbeat.get", "sma_slot3.heartbeat.get", "500",
                    "heartbeatResponse"},
        SubjectCase{"serviceOrchAG.heartbeat.get.more.and.more", "sma_slot3.heartbeat.get", "500",
                    "heartbeatResponse"},
        SubjectCase{"serviceOrchAG.commandProgress", "sma_slot3.commandProgress", "500",
                    "commandProgressResponse"},
        SubjectCase{"serviceOrchAG.", "sma_slot3.", "500", "Response"},
        SubjectCase{"serviceOrchAG..update", "sma_slot3..update", "500", "Response"},
        SubjectCase{"serviceOrchAG.\xff\xfe", "sma_slot3.\xff\xfe", "500", ""},
        SubjectCase{"serviceOrchAG.%s%n", "sma_slot3.%s%n", "500", ""},
        SubjectCase{"serviceOrchAG.<x>", "sma_slot3.<x>", "500", ""}));

TEST_F(WorkerTaskTest, PlatformInfoWithAFourthSegment_IsPlatformInfoUpdate) {
  setBladeStatus("3", false);
  channels_.onReceive(heartbeat("serviceOrchAG.platformInfo.update.extra"));
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("sma_slot3.platformInfo.update", channels_.sent()[0].parts[0]);
  EXPECT_EQ("511", channels_.sent()[0].parts[3]) << "the key platformInfo.update is known";
}

TEST_F(WorkerTaskTest, RefusedSlot_IsAnswered) {
  removeBladeMapEntry("3");
  channels_.onReceive(heartbeat());
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("510", channels_.sent()[0].parts[3]);
}

TEST_F(WorkerTaskTest, EmptyReplyBody_IsSentAsAnEmptyPart) {
  channels_.onReceive(heartbeat("serviceOrchAG.not a name"));
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  ASSERT_EQ(5U, channels_.sent()[0].parts.size());
  EXPECT_EQ("", channels_.sent()[0].parts[4]);
}

TEST_F(WorkerTaskTest, EverythingEmptyButTheSubject_IsAnsweredForItsContentType) {
  channels_.onReceive(Parts{"serviceOrchAG.heartbeat", "", "", "", ""});
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ(".heartbeat", channels_.sent()[0].parts[0]);
  EXPECT_EQ("", channels_.sent()[0].parts[1]);
  EXPECT_EQ("501", channels_.sent()[0].parts[3]);
}

TEST_F(WorkerTaskTest, MegabyteBody_IsServed) {
  Parts request = heartbeat();
  request[4] =
      "<heartbeatRequest><count>" + std::string(1024 * 1024, '7') + "</count></heartbeatRequest>";
  channels_.onReceive(request);
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("100", channels_.sent()[0].parts[3]);
}

TEST_F(WorkerTaskTest, NulInTheParts_IsKept) {
  Parts request = heartbeat();
  request[2] = std::string("a\0b", 3);
  channels_.onReceive(request);
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ(std::string("a\0b", 3), channels_.sent()[0].parts[2]);
}

TEST_F(WorkerTaskTest, NulInTheSubject_EndsTheAddressOnly) {
  const std::string subject("serviceOrchAG.heart\0beat", 24);
  channels_.onReceive(heartbeat(subject));
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("sma_slot3.heart", channels_.sent()[0].address);
  EXPECT_EQ(std::string("sma_slot3.heart\0beat", 20), channels_.sent()[0].parts[0]);
  EXPECT_EQ("500", channels_.sent()[0].parts[3]);
  EXPECT_EQ("", channels_.sent()[0].parts[4]);
}

TEST_F(WorkerTaskTest, FormatSpecifiersInEveryPart_AreTextOnly) {
  channels_.onReceive(Parts{"serviceOrchAG.%s.%n", "nox-xml:1", "%d", "sma_slot3", "%100000c"});
  serve();
  EXPECT_TRUE(log_.contains(1,
                            "Calling handleCb with identity: serviceOrchAG, cmd: %s, action: %n, "
                            "Message Id: %d, client identity: sma_slot3"));
  EXPECT_TRUE(log_.contains(4,
                            "Handling SMA request cmd : %s, action :  %n, key : %s.%n, message ID "
                            ": %d, client identity : sma_slot3, Message : %100000c "));
  EXPECT_TRUE(log_.contains(1,
                            "Built serviceAG reply for SMA request with subject : sma_slot3.%s.%n, "
                            "Command : sma_slot3.%s.%n, Content-type : nox-xml:1, Status Code : "
                            "500, Message ID : %d,  Message :  "));
}

// ----- Content type -----------------------------------------------------------------------------

class WrongContentTypes : public WorkerTaskTest, public testing::WithParamInterface<std::string> {};

TEST_P(WrongContentTypes, Request_IsRefusedWithoutAHandlerAndEchoed) {
  Parts request = heartbeat();
  request[1] = GetParam();
  channels_.onReceive(request);
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  const Parts reply = channels_.sent()[0].parts;
  EXPECT_EQ("sma_slot3.heartbeat", reply[0]);
  EXPECT_EQ(GetParam(), reply[1]);
  EXPECT_EQ("id-1", reply[2]);
  EXPECT_EQ("501", reply[3]);
  EXPECT_EQ("heartbeatResponse", ReplyDocument::parse(reply[4]).root);
  EXPECT_THAT(ReplyDocument::parse(reply[4]).response,
              ElementsAre(Pair("code", "501"),
                          Pair("message", "Only content-type:version \"nox-xml:1\" is supported")));
  EXPECT_TRUE(log_.contains(6, "Only content-type:version \"nox-xml:1\" is supported"));
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, WrongContentTypes,
                         testing::Values("nox-xml:2", "NOX-XML:1", "nox-xml", "nox-xml:1 ", "",
                                         std::string("nox-xml:1\0", 10), "\xff\xfe"));

TEST_F(WorkerTaskTest, WrongContentTypeOfAnUnknownIdentity_IsAnsweredToIt) {
  channels_.onReceive(Parts{"serviceOrchAG.reboot.now", "text:9", "7", "blade1", ""});
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("blade1.reboot.now", channels_.sent()[0].address);
  EXPECT_EQ("501", channels_.sent()[0].parts[3]);
}

}  // namespace
}  // namespace zan_serviceOrchAG::worker_task_test
