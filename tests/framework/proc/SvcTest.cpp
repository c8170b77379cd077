#include "framework/proc/Svc.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/mo/Transactor.h"
#include "framework/proc/BinStimulus.h"
#include "framework/proc/Cookie.h"
#include "framework/proc/InitStimulus.h"
#include "tests/framework/proc/EndPoints.h"
#include "tests/framework/proc/TestEngine.h"
#include "tests/framework/proc/TestMethods.h"
#include "tests/framework/proc/TestService.h"
#include "tests/support/LogCapture.h"

namespace {

using test_methods::EchoMe;
using test_methods::OrderedMe;
using test_support::TestEngine;
using test_support::TestService;

/// What the callbacks saw, in order; callbacks run on the pool.
class Trace {
 public:
  void add(const std::string& text) {
    {
      const std::lock_guard guard(lock_);
      lines_.push_back(text);
    }
    changed_.notify_all();
  }
  std::vector<std::string> waitFor(std::size_t count) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, std::chrono::seconds(30), [&] { return lines_.size() >= count; });
    return lines_;
  }
  void clear() {
    const std::lock_guard guard(lock_);
    lines_.clear();
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
};

Trace trace;

void echoCb(EchoMe& me, const std::uint32_t& number, const base::String& text) {
  me.out = {number + 1, text + "!"};
}
void throwingCb(EchoMe&, const std::uint32_t&, const base::String&) {
  throw std::runtime_error("no paper");
}
void tracingCb(EchoMe&, const std::uint32_t& number, const base::String&) {
  trace.add(std::to_string(number));
}
void orderedCb(OrderedMe&, const std::uint32_t& number) {
  trace.add(std::to_string(number));
}
void successCb(EchoMe&, const std::uint32_t& number, const base::String& text) {
  trace.add("success " + std::to_string(number) + " " + text.str());
}
void throwingSuccessCb(EchoMe&, const std::uint32_t&, const base::String&) {
  throw std::runtime_error("no pen");
}
void failureCb(EchoMe&, unsigned int code, const base::String& text) {
  trace.add("failure " + std::to_string(code) + " " + text.str());
}

base::OBioStream echoCall(std::uint32_t number, bool responseRequired = true) {
  EchoMe me;
  me.in = {number, "text"};
  base::Buffer cookie;
  proc::makeCookie(cookie);
  me.setCookie(cookie);
  me.setAddress({26, 1, 1, 0});
  me.setResponseRequired(responseRequired);
  return method::encodeCall(me);
}

/// Service and engine, connected by a hello that the engine has answered.
class SvcTest : public testing::Test {
 protected:
  SvcTest() {
    trace.clear();
    service_.connect(endPoint_);
  }

  /// Handles the bytes here, and what the engine is answered.
  method::Answer<EchoMe> handle(const base::OBioStream& bytes) {
    const std::size_t before = engine_.waitFor(0).size();
    handled_ = service_.svc.handle(bytes.data(), bytes.size());
    const auto arrived = engine_.waitFor(before + 1);
    if (arrived.size() <= before) {
      return {};
    }
    const auto& answer = arrived[before].bytes;
    return method::decodeAnswer<EchoMe>(answer.data(), answer.size())
        .value_or(method::Answer<EchoMe>());
  }

  /// True when the engine gets nothing for `bytes`: what is sent behind them arrives next.
  bool isUnanswered(const base::OBioStream& bytes) {
    const std::size_t before = engine_.waitFor(0).size();
    handled_ = service_.svc.handle(bytes.data(), bytes.size());
    EchoMe::registerCbs(echoCb, nullptr, nullptr, nullptr, nullptr);
    const base::OBioStream marker = echoCall(4711);
    service_.svc.handle(marker.data(), marker.size());
    const auto arrived = engine_.waitFor(before + 1);
    const auto answer = method::decodeAnswer<EchoMe>(arrived.at(before).bytes.data(),
                                                     arrived.at(before).bytes.size());
    return answer.has_value() && std::get<0>(answer->me->out) == 4712;
  }

  const std::string endPoint_ = test_support::freeEndPoint("inproc");
  TestEngine engine_{endPoint_};
  TestService service_;
  bool handled_ = false;
  const test_support::LogCapture log_;
};

TEST_F(SvcTest, Call_IsCarriedOutAndAnswered) {
  EchoMe::registerCbs(echoCb, nullptr, nullptr, nullptr, nullptr);
  const auto answer = handle(echoCall(7));
  EXPECT_TRUE(handled_);
  ASSERT_NE(answer.me, nullptr);
  EXPECT_FALSE(answer.failure.has_value());
  EXPECT_EQ(answer.me->out, std::make_tuple(8U, base::String("text!")));
}

TEST_F(SvcTest, CallThatRequiresNoResponse_IsNotAnswered) {
  EchoMe::registerCbs(tracingCb, nullptr, nullptr, nullptr, nullptr);
  EXPECT_TRUE(isUnanswered(echoCall(7, false)));
  EXPECT_EQ(trace.waitFor(1), (std::vector<std::string>{"7"}));
}

TEST_F(SvcTest, ClassNobodyRegistered_IsLoggedCountedAndAnsweredAsFailure) {
  const auto answer = handle(echoCall(7));
  EXPECT_FALSE(handled_);
  ASSERT_TRUE(answer.failure.has_value());
  EXPECT_EQ(answer.failure->bits, 1U);
  EXPECT_EQ(answer.failure->code, 1U);
  EXPECT_TRUE(log_.contains(6, "method class 9001 refused: nothing carries it out here"));
  EXPECT_EQ(service_.svc.refused().unhandled, 1U);
}

TEST_F(SvcTest, ClassWithoutExecuteCallback_IsAnsweredAsFailure) {
  EchoMe::registerCbs(nullptr, successCb, failureCb, nullptr, nullptr);
  const auto answer = handle(echoCall(7));
  ASSERT_TRUE(answer.failure.has_value());
  EXPECT_EQ(answer.failure->code, 1U);
}

TEST_F(SvcTest, ClassNobodyRegisteredWithoutResponse_IsNotAnswered) {
  EXPECT_TRUE(isUnanswered(echoCall(7, false)));
  EXPECT_EQ(service_.svc.refused().unhandled, 1U);
}

TEST_F(SvcTest, CallCutInItsArguments_IsAnsweredAsFailureAtEveryLength) {
  EchoMe::registerCbs(tracingCb, nullptr, nullptr, nullptr, nullptr);
  const base::OBioStream whole = echoCall(7);
  const std::size_t header = whole.size() - 12;  // number, length of the text, text
  for (std::size_t size = header; size < whole.size(); ++size) {
    base::OBioStream cut;
    cut.loopWrite(whole.data(), static_cast<unsigned>(size));
    const auto answer = handle(cut);
    EXPECT_FALSE(handled_) << size;
    ASSERT_TRUE(answer.failure.has_value()) << size;
    EXPECT_EQ(answer.failure->code, 2U) << size;
  }
  EXPECT_EQ(service_.svc.refused().undecodable, 12U);
  EXPECT_EQ(log_.count(6, "method class 9001 refused: arguments undecodable"), 12U);
}

TEST_F(SvcTest, CallCutInItsHeader_IsCountedAndNotAnswered) {
  EchoMe::registerCbs(tracingCb, nullptr, nullptr, nullptr, nullptr);
  const base::OBioStream whole = echoCall(7);
  const std::size_t header = whole.size() - 12;
  for (std::size_t size = 0; size < header; ++size) {
    EXPECT_FALSE(service_.svc.handle(whole.data(), size)) << size;
  }
  EXPECT_EQ(service_.svc.refused().undecodable, header);
  EXPECT_TRUE(log_.contains(6, "0 bytes dropped: no stimulus"));
  base::OBioStream nothing;
  EXPECT_TRUE(isUnanswered(nothing));
}

TEST_F(SvcTest, TypeThatIsNeitherCallNorAnswer_IsCounted) {
  proc::Stimulus hello(9001, 0x8000, 0, 0, proc::Stimulus::Priority::kDefault, 0, 0);
  base::OBioStream bytes;
  hello.serialize(bytes);
  EXPECT_FALSE(service_.svc.handle(bytes.data(), bytes.size()));
  EXPECT_EQ(service_.svc.refused().undecodable, 1U);
}

TEST_F(SvcTest, ExceptionInTheCallback_IsLoggedAndAnsweredAsFailure) {
  EchoMe::registerCbs(throwingCb, nullptr, nullptr, nullptr, nullptr);
  const auto answer = handle(echoCall(7));
  EXPECT_FALSE(handled_);
  ASSERT_TRUE(answer.failure.has_value());
  EXPECT_EQ(answer.failure->code, 3U);
  EXPECT_EQ(answer.failure->text, "exception: no paper");
  EXPECT_TRUE(log_.contains(8, "method class 9001 : caught exception: no paper"));
}

TEST_F(SvcTest, Answers_GoToTheirCallbacks) {
  EchoMe::registerCbs(nullptr, successCb, failureCb, nullptr, nullptr);
  const EchoMe call;
  const base::OBioStream success = method::encodeAnswer(call, {5, "fine"});
  EXPECT_TRUE(service_.svc.handle(success.data(), success.size()));
  const base::OBioStream failure = method::encodeFailure(call, {64, 511, "not valid"});
  EXPECT_TRUE(service_.svc.handle(failure.data(), failure.size()));
  EXPECT_EQ(trace.waitFor(2),
            (std::vector<std::string>{"success 5 fine", "failure 511 not valid"}));
}

TEST_F(SvcTest, AnswerCutAnywhere_ReachesNoCallback) {
  EchoMe::registerCbs(nullptr, successCb, failureCb, nullptr, nullptr);
  const EchoMe call;
  const base::OBioStream whole = method::encodeAnswer(call, {5, "fine"});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(service_.svc.handle(whole.data(), size)) << size;
  }
  EXPECT_EQ(service_.svc.refused().undecodable, whole.size());
  EXPECT_TRUE(trace.waitFor(0).empty());
}

TEST_F(SvcTest, AnswerOfAClassNobodyRegistered_IsCounted) {
  const EchoMe call;
  const base::OBioStream bytes = method::encodeAnswer(call, {5, "fine"});
  EXPECT_FALSE(service_.svc.handle(bytes.data(), bytes.size()));
  EXPECT_EQ(service_.svc.refused().unhandled, 1U);
  EXPECT_TRUE(log_.contains(6, "answer of class 9001 dropped: nobody asks for it here"));
}

TEST_F(SvcTest, ExceptionInAnAnswersCallback_IsLogged) {
  EchoMe::registerCbs(nullptr, throwingSuccessCb, nullptr, nullptr, nullptr);
  const EchoMe call;
  const base::OBioStream bytes = method::encodeAnswer(call, {5, "fine"});
  EXPECT_FALSE(service_.svc.handle(bytes.data(), bytes.size()));
  EXPECT_TRUE(log_.contains(8, "method class 9001 : caught exception: no pen"));
}

TEST_F(SvcTest, Send_GivesABinaryStimulusBackToThePool) {
  while (proc::BinStimulus::POOL.take() != nullptr) {
  }
  auto stimulus = proc::BinStimulus::obtain(9001, 0, 0x100000);
  stimulus->serialize(stimulus->stream());
  service_.svc.send(std::move(stimulus));
  EXPECT_EQ(proc::BinStimulus::POOL.idle(), 1U);
}

TEST_F(SvcTest, OrderedCalls_KeepTheirOrderOnThePool) {
  OrderedMe::registerCbs(orderedCb, nullptr, nullptr, nullptr, nullptr);
  std::vector<std::string> expected;
  for (std::uint32_t i = 0; i < 500; ++i) {
    OrderedMe me;
    me.in = {i};
    me.setResponseRequired(false);
    const base::OBioStream bytes = method::encodeCall(me);
    service_.svc(bytes.data(), bytes.size());
    expected.push_back(std::to_string(i));
  }
  EXPECT_EQ(trace.waitFor(500), expected);
}

TEST_F(SvcTest, CallsThatBlock_RunSideBySide) {
  // Each waits for the other: on one thread neither would end.
  static os::WaitableEvent first;
  static os::WaitableEvent second;
  first.reset();
  second.reset();
  EchoMe::registerCbs(
      [](EchoMe&, const std::uint32_t& number, const base::String&) {
        os::WaitableEvent& own = number == 1 ? first : second;
        os::WaitableEvent& other = number == 1 ? second : first;
        own.set();
        trace.add(other.wait(30000) == 0 ? "met" : "missed");
      },
      nullptr, nullptr, nullptr, nullptr);
  for (const std::uint32_t number : {1U, 2U}) {
    const base::OBioStream bytes = echoCall(number, false);
    service_.svc(bytes.data(), bytes.size());
  }
  EXPECT_EQ(trace.waitFor(2), (std::vector<std::string>{"met", "met"}));
}

TEST_F(SvcTest, FailedMethod_RollsItsTransactionBack) {
  static mo::Transactor* transactor = nullptr;
  transactor = &service_.transactor;
  EchoMe::registerCbs(
      [](EchoMe& me, const std::uint32_t& number, const base::String&) {
        transactor->onRollback([number] { trace.add("undo " + std::to_string(number)); });
        transactor->onCommit([number] { trace.add("commit " + std::to_string(number)); });
        if (number == 1) {
          me.reportFailure(1, 1003, "refused");
        }
      },
      nullptr, nullptr, nullptr, nullptr);
  for (const std::uint32_t number : {1U, 2U}) {
    const base::OBioStream bytes = echoCall(number, false);
    service_.svc(bytes.data(), bytes.size());
    trace.waitFor(number);
  }
  EXPECT_EQ(trace.waitFor(2), (std::vector<std::string>{"undo 1", "commit 2"}));
}

TEST_F(SvcTest, InitStimulus_ComesThroughQueueAndPool) {
  proc::InitStimulus::processed().reset();
  proc::InitStimulus::issue();
  EXPECT_EQ(proc::InitStimulus::processed().wait(30000), 0U);
}

TEST(SvcWithoutQueue, ArrivedCall_RunsOnTheCallingThread) {
  trace.clear();
  proc::Svc svc(26);
  EchoMe::registerCbs(tracingCb, nullptr, nullptr, nullptr, nullptr);
  const base::OBioStream bytes = echoCall(7, false);
  svc(bytes.data(), bytes.size());
  EXPECT_EQ(trace.waitFor(0), (std::vector<std::string>{"7"}));
  proc::MethodTable::instance().clear();
}

TEST(RegService, SecondServiceOrNone_IsRefused) {
  proc::App app(1);
  proc::Svc svc(26);
  proc::regService(&app, &svc, "cluster");
  EXPECT_EQ(proc::Svc::instance, &svc);
  EXPECT_EQ(app.system(), "cluster");
  EXPECT_EQ(app.services(), (std::vector<proc::Svc*>{&svc}));
  EXPECT_THROW(proc::regService(&app, &svc, "cluster"), std::logic_error);
  proc::Svc::instance = nullptr;
  EXPECT_THROW(proc::regService(nullptr, &svc, "cluster"), std::invalid_argument);
  EXPECT_THROW(proc::regService(&app, nullptr, "cluster"), std::invalid_argument);
}

}  // namespace
