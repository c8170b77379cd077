#include "serviceOrchAG/server/WorkerTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/os/Clock.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ReplyDocument.h"
#include "tests/support/RunningWorker.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::InstalledMsgHandler;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::ManualClock;
using test_support::RecordingSvc;
using test_support::RegistryCleaner;
using test_support::ReplyDocument;
using test_support::RunningWorker;
using test_support::ScriptedChannel;
using test_support::throws;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Parts = ScriptedChannel::Parts;

const std::string kDocument =
    "<heartbeatRequest><count>1</count><timer>2</timer></heartbeatRequest>";

Parts heartbeat(const std::string& subject = "serviceOrchAG.heartbeat") {
  return {subject, "nox-xml:1", "id-1", "sma_slot3", kDocument};
}

/// Ends every wait for a deadline at once and counts them.
class PauseCounter final : public os::Clock {
 public:
  TimePoint now() const override { return TimePoint(); }

  bool waitUntil(std::condition_variable& /*condition*/, std::unique_lock<std::mutex>& /*lock*/,
                 TimePoint /*deadline*/, const std::function<bool()>& predicate) override {
    ++pauses;
    return predicate();
  }

  std::atomic<int> pauses = 0;
};

class WorkerTaskTest : public testing::Test {
 protected:
  WorkerTaskTest() {
    handler_.registerCommands();
    createSMAClient("3", "h", "1", true);
    log_.clear();
  }

  /// Lets one worker take everything that is scripted and come back for more.
  void serve(bool left = true) {
    const RunningWorker worker(channels_, 0, left);
    ASSERT_TRUE(channels_.waitForIdleWorkers(1));
  }

  /// The lines of one request: between the first two "waiting" lines.
  std::vector<LogLine> requestLines() const {
    const LogLine waiting{1, "run", "Worker 0 waiting to receive message from SMA."};
    const std::vector<LogLine> lines = log_.lines();
    const auto first = std::find(lines.begin(), lines.end(), waiting);
    const auto second = std::find(first + 1, lines.end(), waiting);
    EXPECT_NE(lines.end(), second) << "the worker did not come back";
    return {first + 1, second};
  }

  /// As serve, and returns how often the worker paused on its way.
  int serveCountingPauses() {
    // Never freed: a thread may be about to wait on it.
    static PauseCounter& clock = *new PauseCounter;
    clock.pauses = 0;
    os::Clock* const previous = os::Clock::install(&clock);
    serve();
    os::Clock::install(previous);
    return clock.pauses;
  }

  std::size_t waits() const {
    return log_.count(1, "Worker 0 waiting to receive message from SMA.");
  }

  void expectDropped() {
    EXPECT_THAT(channels_.sent(), IsEmpty());
    EXPECT_EQ(2U, waits()) << "the worker must wait for the next request";
  }

  ScriptedChannel channels_;
  RecordingSvc svc_;
  MsgHandler handler_;
  const InstalledMsgHandler installed_{handler_};
  const RegistryCleaner cleaner_;
  LogCapture log_;
};

// ----- Set-up -----------------------------------------------------------------------------------

TEST_F(WorkerTaskTest, AsATask_CarriesNothingAndIsNotCopied) {
  WorkerTask task(1, true);
  EXPECT_EQ(-1, task.id());
  EXPECT_EQ(nullptr, task.clone());
  EXPECT_EQ(nullptr, task.getPayload());
  int payload = 0;
  task.setPayload(&payload);
  EXPECT_EQ(nullptr, task.getPayload());
  log_.clear();
  task.logTaskInfo();
  task.onExit();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(WorkerTaskTest, Left_ServesAtItsEndPointWithoutTimeLimit) {
  ScriptedChannel fresh;
  const RunningWorker worker(fresh, 2, true);
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_THAT(fresh.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 5", "server tcp://127.0.0.1:5557",
                          "worker inproc://worker-end-point", "receive -1"));
  EXPECT_TRUE(log_.contains(5, "Starting worker 2"));
  EXPECT_TRUE(log_.contains(1, "Worker 2 waiting to receive message from SMA."));
}

TEST_F(WorkerTaskTest, Right_ServesAtTheOtherEndPoint) {
  ScriptedChannel fresh;
  const RunningWorker worker(fresh, 2, false);
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_EQ("server tcp://127.0.0.1:6557", fresh.events()[1]);
}

struct SetUpFailure {
  std::function<void()> action;
  const char* text;
};

class SetUpFailures : public WorkerTaskTest, public testing::WithParamInterface<SetUpFailure> {
 protected:
  ManualClock clock_;
};

std::string setUpLine(const std::string& text) {
  return "run : An exception occurred while setting up server or worker end point: " + text;
}

TEST_P(SetUpFailures, EachAttempt_LogsOneLineAndTheNextComesASecondLater) {
  ScriptedChannel fresh;
  for (int attempt = 0; attempt < 3; ++attempt) {
    fresh.onServerEndPoint(GetParam().action);
  }
  const RunningWorker worker(fresh, 0, true);
  for (std::size_t attempt = 1; attempt <= 3; ++attempt) {
    ASSERT_TRUE(clock_.waitForDeadline(std::chrono::seconds(1)));
    EXPECT_EQ(attempt, log_.count(8, setUpLine(GetParam().text)));
    EXPECT_EQ(attempt, log_.count(5, "Starting worker 0"));
    EXPECT_EQ(0U, fresh.alive()) << "the channel of a failed attempt is closed";
    clock_.advance(std::chrono::seconds(1));
  }
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_EQ(3U, log_.count(8, setUpLine(GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(
    All, SetUpFailures,
    testing::Values(SetUpFailure{throws(std::runtime_error("Address already in use")),
                                 "Address already in use"},
                    SetUpFailure{throws(std::string("text")), "text"},
                    SetUpFailure{throws<const char*>("plain text"), "plain text"},
                    SetUpFailure{throws(7), "unknown exception"}));

TEST_F(WorkerTaskTest, ChannelOrWorkerEndPointFails_IsTriedAgainToo) {
  ManualClock clock;
  ScriptedChannel fresh;
  fresh.onCreate(throws(std::bad_alloc()));
  fresh.onWorkerEndPoint(throws(std::runtime_error("no such group")));
  const RunningWorker worker(fresh, 0, true);
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(1)));
  EXPECT_EQ(1U, log_.count(8, setUpLine("std::bad_alloc")));
  EXPECT_EQ(0U, log_.count(5, "Starting worker 0"));
  clock.advance(std::chrono::seconds(1));
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(1)));
  EXPECT_EQ(1U, log_.count(8, setUpLine("no such group")));
  clock.advance(std::chrono::seconds(1));
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
}

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

// ----- Threads ----------------------------------------------------------------------------------

TEST_F(WorkerTaskTest, FiveWorkers_ServeEachRequestOnce) {
  for (int request = 0; request < 200; ++request) {
    Parts parts = heartbeat();
    parts[2] = std::to_string(request);
    channels_.onReceive(parts);
  }
  {
    std::vector<std::unique_ptr<RunningWorker>> workers;
    for (int number = 0; number < 5; ++number) {
      workers.push_back(std::make_unique<RunningWorker>(channels_, number, true));
    }
    ASSERT_TRUE(channels_.waitForSent(200));
    ASSERT_TRUE(channels_.waitForIdleWorkers(5));
  }
  std::vector<int> ids;
  for (const auto& reply : channels_.sent()) {
    ids.push_back(std::stoi(reply.parts[2]));
  }
  std::sort(ids.begin(), ids.end());
  for (int request = 0; request < 200; ++request) {
    EXPECT_EQ(request, ids[static_cast<std::size_t>(request)]);
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
