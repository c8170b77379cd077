#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

#include "tests/serviceOrchAG/server/WorkerTaskHarness.h"

// Requests that end without a reply, and what fails on their way.

namespace zan_serviceOrchAG::worker_task_test {
namespace {

using testing::ElementsAre;

// ----- Requests that are dropped ----------------------------------------------------------------

struct Refused {
  int result;
  Parts parts;
};

class WrongPartCounts : public WorkerTaskTest, public testing::WithParamInterface<Refused> {};

TEST_P(WrongPartCounts, Message_IsLoggedAndDropped) {
  channels_.onReceive([refused = GetParam()](msglyr::Message& message) {
    message.parts() = refused.parts;
    return refused.result;
  });
  serve();
  EXPECT_THAT(requestLines(), ElementsAre(LogLine{6, "run",
                                                  "Received " + std::to_string(GetParam().result) +
                                                      " message parts (should be 5)"}));
  expectDropped();
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongPartCounts,
    testing::Values(Refused{0, {}}, Refused{-1, {}}, Refused{1, {"serviceOrchAG.heartbeat"}},
                    Refused{4, {"serviceOrchAG.heartbeat", "nox-xml:1", "1", "sma_slot3"}},
                    Refused{6, {"serviceOrchAG.heartbeat", "nox-xml:1", "1", "sma_slot3", "", ""}},
                    Refused{5, {"serviceOrchAG.heartbeat", "nox-xml:1"}},
                    Refused{3, {"serviceOrchAG.heartbeat", "nox-xml:1", "1", "sma_slot3", ""}}));

struct ForeignSubject {
  std::string subject;
  const char* line;
};

class ForeignSubjects : public WorkerTaskTest,
                        public testing::WithParamInterface<ForeignSubject> {};

TEST_P(ForeignSubjects, Message_IsLoggedAndDropped) {
  channels_.onReceive(heartbeat(GetParam().subject));
  serve();
  EXPECT_THAT(requestLines(), ElementsAre(LogLine{6, "run", GetParam().line}));
  expectDropped();
}

INSTANTIATE_TEST_SUITE_P(
    All, ForeignSubjects,
    testing::Values(
        ForeignSubject{"otherService.heartbeat",
                       "My identity passed was otherService, should be serviceOrchAG"},
        ForeignSubject{"", "My identity passed was , should be serviceOrchAG"},
        ForeignSubject{".heartbeat", "My identity passed was , should be serviceOrchAG"},
        ForeignSubject{"serviceorchag.heartbeat",
                       "My identity passed was serviceorchag, should be serviceOrchAG"},
        ForeignSubject{"serviceOrchAGx.heartbeat",
                       "My identity passed was serviceOrchAGx, should be serviceOrchAG"},
        ForeignSubject{"%s%n\n.heartbeat",
                       "My identity passed was %s%n\\x0A, should be serviceOrchAG"},
        ForeignSubject{"\xff\xfe.heartbeat",
                       "My identity passed was \\xFF\\xFE, should be serviceOrchAG"},
        ForeignSubject{std::string("serviceOrchAG\0.heartbeat", 24),
                       "My identity passed was serviceOrchAG, should be serviceOrchAG"},
        ForeignSubject{"serviceOrchAG", "The subject serviceOrchAG names no command"}));

TEST_F(WorkerTaskTest, NoCommandAndAWrongContentType_IsDropped) {
  channels_.onReceive(Parts{"serviceOrchAG", "nox-xml:2", "1", "sma_slot3", ""});
  serve();
  expectDropped();
}

TEST_F(WorkerTaskTest, SubjectOfAMegabyteOfPoints_IsAnswered) {
  channels_.onReceive(heartbeat("serviceOrchAG.heartbeat" + std::string(1024 * 1024, '.')));
  serve();
  ASSERT_EQ(1U, channels_.sent().size());
  EXPECT_EQ("100", channels_.sent()[0].parts[3]);
}

TEST_F(WorkerTaskTest, HandlerWithoutAResponse_IsFollowedByNothing) {
  const std::string progress =
      "<commandProgressUpdateRequest><appInstanceId>-1</appInstanceId>"
      "<operCmd>formatDisk</operCmd><operProgress>1</operProgress>"
      "<operStatus>running</operStatus><code>102</code><ack>no</ack>"
      "</commandProgressUpdateRequest>";
  channels_.onReceive(
      Parts{"serviceOrchAG.commandProgress.update", "nox-xml:1", "id-1", "sma_slot3", progress});
  serve();
  expectDropped();
  for (const LogLine& line : requestLines()) {
    EXPECT_TRUE(line.function != "run" || line.text.starts_with("Calling handleCb with identity"))
        << line.text;
  }
}

// ----- Failures ---------------------------------------------------------------------------------

TEST_F(WorkerTaskTest, SendFails_IsLoggedOnceAndTheNextRequestIsServed) {
  channels_.onSend([](const msglyr::Message&) { return -1; });
  channels_.onReceive(heartbeat());
  channels_.onReceive(heartbeat());
  EXPECT_EQ(0, serveCountingPauses());
  EXPECT_EQ(1U, log_.count(6, "messaging layer send() failed, rc = -1, Message Id = id-1"));
  EXPECT_EQ(1U, log_.count(1,
                           "Reply sent from serviceAG to SMA with subject : sma_slot3.heartbeat, "
                           "Message ID : id-1"));
  EXPECT_EQ(2U, channels_.sent().size());
  EXPECT_EQ(3U, waits());
}

TEST_F(WorkerTaskTest, SendOfFewerParts_IsAFailure) {
  channels_.onSend([](const msglyr::Message&) { return 4; });
  channels_.onReceive(heartbeat());
  serve();
  EXPECT_EQ(1U, log_.count(6, "messaging layer send() failed, rc = 4, Message Id = id-1"));
}

TEST_F(WorkerTaskTest, UnparsableIdentity_IsLoggedAndDropped) {
  Parts request = heartbeat();
  request[3] = "blade1";
  channels_.onReceive(request);
  serve();
  expectDropped();
  EXPECT_EQ((LogLine{8, "run", "run : caught standard exception: invalid client identity"}),
            requestLines().back());
}

struct Thrown {
  std::function<int(msglyr::Message&)> action;
  const char* line;
};

class Exceptions : public WorkerTaskTest, public testing::WithParamInterface<Thrown> {};

TEST_P(Exceptions, FromReceive_AreLoggedAndTheWorkerReceivesAgain) {
  channels_.onReceive(GetParam().action);
  channels_.onReceive(heartbeat());
  EXPECT_EQ(0, serveCountingPauses());
  EXPECT_THAT(requestLines(), ElementsAre(LogLine{8, "run", GetParam().line}));
  EXPECT_EQ(1U, channels_.sent().size()) << "the next request is served";
}

TEST_P(Exceptions, FromSend_AreLoggedAndTheWorkerReceivesAgain) {
  channels_.onSend([](const msglyr::Message&) {
    msglyr::Message unused;
    return GetParam().action(unused);
  });
  channels_.onReceive(heartbeat());
  channels_.onReceive(heartbeat());
  serve();
  EXPECT_EQ(1U, log_.count(8, GetParam().line));
  EXPECT_EQ(2U, channels_.sent().size());
}

TEST_P(Exceptions, FromAHandler_DropTheRequest) {
  svc_.onSend([](const RecordingSvc::Sent&) {
    msglyr::Message unused;
    GetParam().action(unused);
  });
  channels_.onReceive(heartbeat());
  serve();
  EXPECT_EQ((LogLine{8, "run", GetParam().line}), requestLines().back());
  expectDropped();
}

INSTANTIATE_TEST_SUITE_P(
    All, Exceptions,
    testing::Values(
        Thrown{throws(std::bad_alloc()), "run : caught baddalloc std::bad_alloc"},
        Thrown{throws(std::runtime_error("broken")), "run : caught standard exception: broken"},
        Thrown{throws(std::string("text")), "run : caught string exception: text"},
        Thrown{throws<const char*>("plain text"), "run : caught string exception: plain text"},
        Thrown{throws(std::string("%s%n")), "run : caught string exception: %s%n"},
        Thrown{throws(7), "run : caught unknown exception"}));

}  // namespace
}  // namespace zan_serviceOrchAG::worker_task_test
