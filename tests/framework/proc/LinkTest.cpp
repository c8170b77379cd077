#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "framework/net/ChannelBank.h"
#include "framework/proc/StateRequest.h"
#include "framework/proc/Timer.h"
#include "tests/framework/proc/EndPoints.h"
#include "tests/framework/proc/TestEngine.h"
#include "tests/framework/proc/TestMethods.h"
#include "tests/framework/proc/TestService.h"
#include "tests/support/ManualClock.h"

namespace {

using test_methods::EchoMe;
using test_support::freeEndPoint;
using test_support::TestEngine;
using test_support::TestService;

/// Answers every EchoMe with its arguments.
void echo(proc::EngineLink& link, const TestEngine::Arrived& arrived) {
  const auto call = method::decodeCall<EchoMe>(arrived.bytes.data(), arrived.bytes.size());
  if (call != nullptr && call->isResponseRequired()) {
    link.send(arrived.peer, method::encodeAnswer(*call, call->in), true);
  }
}

/// Counts the answers by the cookie that they carry.
struct Answers {
  std::atomic<unsigned> matching{0};
  std::atomic<unsigned> other{0};
  os::WaitableEvent done;
  unsigned expected = 0;
};
Answers* answers = nullptr;

std::string textOf(const base::Buffer& cookie) {
  return {reinterpret_cast<const char*>(cookie.data()), cookie.size()};
}

/// The cookie of a call is the text that it carries.
void echoedCb(EchoMe& me, const std::uint32_t&, const base::String& text) {
  (text.str() == textOf(me.cookie()) ? answers->matching : answers->other)++;
  if (answers->matching + answers->other == answers->expected) {
    answers->done.set();
  }
}

void sendEcho(proc::Svc& svc, std::uint32_t number, const std::string& cookie,
              bool responseRequired) {
  auto me = std::make_unique<EchoMe>();
  me->in = {number, cookie};
  me->setCookie(base::Buffer(cookie.data(), cookie.size()));
  me->setResponseRequired(responseRequired);
  svc.send(std::move(me));
}

class LinkTest : public testing::TestWithParam<std::string> {
 protected:
  LinkTest() { answers = &answers_; }
  ~LinkTest() override { answers = nullptr; }

  Answers answers_;
  const std::string endPoint_ = freeEndPoint(GetParam());
};

TEST_P(LinkTest, CallsOfTwoThreads_GetTheAnswersOfTheirCookies) {
  answers_.expected = 400;
  TestEngine engine(endPoint_, echo);
  TestService service;
  EchoMe::registerCbs(nullptr, echoedCb, nullptr, nullptr, nullptr);
  service.connect(endPoint_);
  {
    std::vector<std::jthread> threads;
    for (const char* thread : {"left", "right"}) {
      threads.emplace_back([&, thread] {
        for (std::uint32_t i = 0; i < 200; ++i) {
          sendEcho(service.svc, i, thread + std::to_string(i), true);
        }
      });
    }
  }
  EXPECT_EQ(answers_.done.wait(30000), 0U);
  EXPECT_EQ(answers_.matching, 400U);
  EXPECT_EQ(answers_.other, 0U);
}

TEST_P(LinkTest, EngineThatComesLater_GetsWhatWasSentInOrder) {
  TestService service;
  for (std::uint32_t i = 0; i < 5; ++i) {
    sendEcho(service.svc, i, "before the link is open", false);
  }
  service.connect(endPoint_);
  for (std::uint32_t i = 5; i < 100; ++i) {
    sendEcho(service.svc, i, "before the engine is there", false);
  }
  TestEngine engine(endPoint_);
  const auto arrived = engine.waitFor(100);
  ASSERT_EQ(arrived.size(), 100U);
  for (std::uint32_t i = 0; i < 100; ++i) {
    const auto call = method::decodeCall<EchoMe>(arrived[i].bytes.data(), arrived[i].bytes.size());
    ASSERT_NE(call, nullptr) << i;
    EXPECT_EQ(std::get<0>(call->in), i);
  }
}

TEST_P(LinkTest, CallOfTheEngine_IsCarriedOutAndAnswered) {
  TestEngine engine(endPoint_);
  TestService service;
  EchoMe::registerCbs(
      [](EchoMe& me, const std::uint32_t& number, const base::String&) {
        me.out = {number, "ok"};
      },
      nullptr, nullptr, nullptr, nullptr);
  service.connect(endPoint_);
  sendEcho(service.svc, 1, "so that the engine knows the service", false);
  const auto first = engine.waitFor(1);
  ASSERT_EQ(first.size(), 1U);

  EchoMe call;
  call.in = {7, "do it"};
  call.setCookie(base::Buffer("stage-1", 7));
  engine.link().send(first[0].peer, method::encodeCall(call), true);
  const auto arrived = engine.waitFor(2);
  ASSERT_EQ(arrived.size(), 2U);
  const auto answer =
      method::decodeAnswer<EchoMe>(arrived[1].bytes.data(), arrived[1].bytes.size());
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->me->out, std::make_tuple(7U, base::String("ok")));
  EXPECT_EQ(textOf(answer->me->cookie()), "stage-1");
}

TEST_P(LinkTest, AnsweringEngine_MakesTheChannelUp) {
  net::ChannelBank bank;
  TestService service;
  service.svc.setChannelBank(&bank);
  static os::WaitableEvent up;
  up.reset();
  service.svc.setBootstrapCb([](bool isUp) {
    if (isUp) {
      up.set();
    }
  });
  service.connect(endPoint_);
  EXPECT_FALSE(service.svc.link().isUp());
  EXPECT_FALSE(bank.find("dme")->isUp);
  TestEngine engine(endPoint_);
  EXPECT_EQ(up.wait(30000), 0U);
  EXPECT_TRUE(service.svc.link().isUp());
  EXPECT_EQ(bank.find("dme"), (net::ChannelBank::Channel{endPoint_, true, 1}));
}

INSTANTIATE_TEST_SUITE_P(Transports, LinkTest, testing::Values("inproc", "ipc", "tcp"),
                         [](const auto& row) { return row.param; });

/// Notes every change of the channel.
struct Activity {
  std::mutex lock;
  std::condition_variable changed;
  std::vector<bool> ups;

  std::vector<bool> waitFor(std::size_t count) {
    std::unique_lock guard(lock);
    changed.wait_for(guard, std::chrono::seconds(30), [&] { return ups.size() >= count; });
    return ups;
  }
  void operator()(bool up) {
    {
      const std::lock_guard guard(lock);
      ups.push_back(up);
    }
    changed.notify_all();
  }
};

class DmeLinkTest : public testing::Test {
 protected:
  void open(const std::string& endPoint) {
    link_.open(
        endPoint, [](const unsigned char*, std::size_t) {}, [this](bool up) { activity_(up); });
  }

  Activity activity_;
  proc::DmeLink link_;
};

TEST_F(DmeLinkTest, EngineStartedAnew_IsReportedAsGoneAndThere) {
  const std::string endPoint = freeEndPoint("ipc");
  auto engine = std::make_unique<TestEngine>(endPoint);
  open(endPoint);
  EXPECT_EQ(activity_.waitFor(1), (std::vector<bool>{true}));
  engine.reset();
  engine = std::make_unique<TestEngine>(endPoint);
  EXPECT_EQ(activity_.waitFor(3), (std::vector<bool>{true, false, true}));
}

TEST_F(DmeLinkTest, SameEngineAgain_IsReportedOnce) {
  const std::string endPoint = freeEndPoint("inproc");
  TestEngine engine(endPoint);
  open(endPoint);
  EXPECT_EQ(activity_.waitFor(1).size(), 1U);
  for (int i = 0; i < 2; ++i) {
    link_.probe();
  }
  base::OBioStream last;
  last.write(std::uint32_t{1});
  link_.send(last, true);
  engine.waitFor(1);
  EXPECT_EQ(activity_.waitFor(1).size(), 1U);
}

TEST_F(DmeLinkTest, ThreeHellosWithoutGreeting_AreGone) {
  const std::string endPoint = freeEndPoint("ipc");
  auto engine = std::make_unique<TestEngine>(endPoint);
  open(endPoint);
  ASSERT_EQ(activity_.waitFor(1).size(), 1U);
  engine.reset();
  // The hello of open() may have got its greeting before it was counted, or not.
  int probes = 0;
  while (link_.isUp() && probes < 10) {
    link_.probe();
    ++probes;
  }
  EXPECT_GE(probes, 3);
  EXPECT_LE(probes, 4);
  link_.probe();
  EXPECT_EQ(activity_.waitFor(2), (std::vector<bool>{true, false}));
}

TEST_F(DmeLinkTest, ClosedLink_DropsAndCounts) {
  open(freeEndPoint("inproc"));
  link_.close();
  link_.close();
  EXPECT_FALSE(link_.send(base::OBioStream(), true));
  EXPECT_EQ(link_.dropped(), 1U);
}

TEST_F(DmeLinkTest, BadEndPoint_ThrowsAndMayBeOpenedAgain) {
  EXPECT_THROW(open("nonsense"), std::runtime_error);
  const std::string endPoint = freeEndPoint("inproc");
  TestEngine engine(endPoint);
  open(endPoint);
  EXPECT_EQ(activity_.waitFor(1), (std::vector<bool>{true}));
}

TEST_F(DmeLinkTest, MoreThan4096BeforeOpen_AreDropped) {
  base::OBioStream bytes;
  bytes.write(std::uint32_t{1});
  for (int i = 0; i < 4096; ++i) {
    ASSERT_TRUE(link_.send(bytes, false)) << i;
  }
  EXPECT_FALSE(link_.send(bytes, false));
  EXPECT_EQ(link_.dropped(), 1U);
}

TEST(EngineLink, EndPointInUse_Throws) {
  const std::string endPoint = freeEndPoint("inproc");
  TestEngine engine(endPoint);
  EXPECT_THROW(TestEngine(endPoint, {}), std::runtime_error);
}

TEST(EngineLink, ExceptionInTheReceiver_LosesThatStimulusOnly) {
  const std::string endPoint = freeEndPoint("inproc");
  TestEngine engine(endPoint,
                    [first = true](proc::EngineLink&, const TestEngine::Arrived&) mutable {
                      if (std::exchange(first, false)) {
                        throw std::runtime_error("once");
                      }
                    });
  TestService service;
  service.connect(endPoint);
  sendEcho(service.svc, 1, "lost", false);
  sendEcho(service.svc, 2, "kept", false);
  const auto call = engine.waitForCall<EchoMe>();
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(std::get<0>(call->in), 2U);
}

/// The headers of what the service sent to the engine.
class FrameworkCalls : public testing::Test {
 protected:
  void connect() { service_.connect(endPoint_); }
  std::unique_ptr<proc::StimulusHeader> header(std::size_t index) {
    const auto arrived = engine_.waitFor(index + 1);
    return arrived.size() <= index
               ? nullptr
               : method::readHeader(arrived[index].bytes.data(), arrived[index].bytes.size());
  }

  const std::string endPoint_ = freeEndPoint("inproc");
  TestEngine engine_{endPoint_};
  TestService service_;
};

TEST_F(FrameworkCalls, StateRequest_IsAddressedToTheClusterState) {
  proc::StateRequest::get().requestDme();
  connect();
  const auto request = header(0);
  ASSERT_NE(request, nullptr);
  EXPECT_EQ(request->classId(), 446U);
  EXPECT_EQ(request->bulk(), 0U);
  EXPECT_TRUE(request->isResponseRequired());
  EXPECT_EQ(request->address().service, 26U);
  EXPECT_EQ(request->address().instance, 1U);
  EXPECT_EQ(request->address().sender, 4U);
  EXPECT_EQ(request->address().senderInstance, 4U);
}

TEST_F(FrameworkCalls, UnansweredStateRequest_IsRepeatedWhenTheChannelComesUp) {
  proc::StateRequest::get().requestDme();
  connect();
  const auto repeated = header(1);
  ASSERT_NE(repeated, nullptr);
  EXPECT_EQ(repeated->classId(), 446U);
}

TEST_F(FrameworkCalls, RefreshTimer_AsksForTheLogLevelEachInterval) {
  test_support::ManualClock clock;
  connect();
  proc::Timer timer(120000);
  timer.markLogControlRefresh();
  timer.submit();
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(120000)));
  clock.advance(std::chrono::milliseconds(120000));
  const auto request = header(0);
  ASSERT_NE(request, nullptr);
  EXPECT_EQ(request->classId(), 502U);
  EXPECT_TRUE(request->isResponseRequired());
  EXPECT_EQ(request->address().sender, 26U);
}

TEST(StateRequest, Response_IsKeptAndSetsTheEvent) {
  proc::StateRequest& request = proc::StateRequest::get();
  request.reset();
  EXPECT_EQ(request.wait(0), 1U);
  request.processStateResponse(77, 1, 12);
  EXPECT_EQ(request.wait(0), 0U);
  EXPECT_EQ(request.state().clusterId, 77U);
  EXPECT_EQ(request.state().state, 1U);
  EXPECT_EQ(request.state().epoch, 12U);
  request.reset();
}

}  // namespace
