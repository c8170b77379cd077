#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "tests/framework/msglyr/TestPeer.h"
#include "tests/support/TcpProxy.h"

// A client's channel over a link that a test damages.

namespace msglyr::test {
namespace {

using std::chrono::milliseconds;
using test_support::TcpProxy;

// Long enough for the system to repeat what was lost, and to give it up.
constexpr milliseconds kTimeOut{3000};

std::uint16_t portOf(const std::string& endPoint) {
  return static_cast<std::uint16_t>(std::stoi(endPoint.substr(endPoint.rfind(':') + 1)));
}

class DamagedLink : public testing::Test {
 protected:
  void SetUp() override {
    channel_.setServerEndPoint("tcp://127.0.0.1:" + std::to_string(link_.port()));
  }

  // A request, and what receive returns for it.
  std::future<int> request(const std::string& text, milliseconds timeout = kTimeOut) {
    return std::async(std::launch::async, [this, text, timeout] {
      Message message(Parts{text});
      EXPECT_EQ(channel_.send("", &message), 1);
      const int count = channel_.receive(nullptr, &reply_, timeout.count());
      return count;
    });
  }
  // The routing frame of the blade's next request, which is this one.
  std::string take(const std::string& text) {
    const auto request = blade_.receive();
    if (!request) {
      ADD_FAILURE() << "no request";
      return {};
    }
    EXPECT_EQ(request->back(), text);
    return request->front();
  }
  void expectServed(const std::string& text) {
    std::future<int> served = request(text, kPatience);
    const std::string routing = take(text);
    blade_.send({routing, "answer to " + text});
    EXPECT_EQ(served.get(), 1);
    EXPECT_EQ(reply_.parts(), Parts{"answer to " + text});
  }
  // A request that gets two answers at once, the second one with so many parts; returns its
  // routing frame.
  std::string answerTwice(const std::string& text, std::size_t parts = 1) {
    std::future<int> twice = request(text, kPatience);
    std::string routing = take(text);
    link_.hold();
    blade_.send({routing, "answer"});
    Parts second(1 + parts, "more");
    second[0] = routing;
    second.back() = "answer";
    blade_.send(second);
    EXPECT_TRUE(link_.waitForHeld("answer", 2));
    link_.release();
    EXPECT_EQ(twice.get(), 1);
    return routing;
  }
  // Nothing comes for as long as the system repeats what was sent within the time-out.
  void expectNothingMore() { EXPECT_EQ(blade_.receive(kTimeOut), std::nullopt); }

  TestPeer blade_ = TestPeer::listening();
  TcpProxy link_{portOf(blade_.endPoint())};
  Message reply_;
  AsyncRouterDealerChannel channel_{"ZEDServiceOrchAGChannel", kRoleClient};
};

TEST_F(DamagedLink, CutBeforeTheRequest_IsNotDeliveredWhenTheLinkComesBack) {
  expectServed("first");
  link_.cut();
  EXPECT_EQ(request("lost").get(), 0);
  link_.mend();
  expectNothingMore();
  expectServed("next");
}

TEST_F(DamagedLink, CutWhenTheConnectionIsMade_IsNotDeliveredWhenTheLinkComesBack) {
  link_.cutBeforeTheFirstMessage();
  EXPECT_EQ(request("lost").get(), 0);
  EXPECT_TRUE(link_.waitForCut());
  link_.mend();
  expectNothingMore();
  expectServed("next");
}

TEST_F(DamagedLink, ConnectionLateAndThenCut_IsNotDeliveredWhenTheLinkComesBack) {
  link_.cut();  // also what a client says of itself
  std::future<int> lost = request("lost", 2 * kTimeOut);
  std::this_thread::sleep_for(kTimeOut * 2 / 3);
  link_.disconnect();
  link_.cutBeforeTheFirstMessage();
  link_.mend();
  EXPECT_TRUE(link_.waitForCut());
  EXPECT_EQ(lost.get(), 0);
  link_.mend();
  expectNothingMore();
  expectServed("next");
}

TEST_F(DamagedLink, CutForAMoment_TheRequestArrives) {
  expectServed("first");
  link_.cut();
  std::future<int> late = request("late", kPatience);
  std::this_thread::sleep_for(milliseconds(300));
  link_.mend();
  const std::string routing = take("late");
  blade_.send({routing, "answer"});
  EXPECT_EQ(late.get(), 1);
}

TEST_F(DamagedLink, CutForLongerWhenTheConnectionIsMade_TheRequestArrives) {
  link_.cutBeforeTheFirstMessage();
  std::future<int> late = request("late", 2 * kTimeOut);
  EXPECT_TRUE(link_.waitForCut());
  std::this_thread::sleep_for(milliseconds(1800));
  link_.mend();
  const std::string routing = take("late");
  blade_.send({routing, "answer"});
  EXPECT_EQ(late.get(), 1);
}

TEST_F(DamagedLink, ConnectionClosedDuringTheExchange_TheRequestIsNotRepeated) {
  std::future<int> lost = request("once");
  take("once");
  link_.disconnect();
  EXPECT_EQ(lost.get(), 0);
  expectNothingMore();
  expectServed("next");
}

TEST_F(DamagedLink, AnswerAfterTheTimeOut_IsNobodys) {
  std::future<int> late = request("late");
  const std::string routing = take("late");
  EXPECT_EQ(late.get(), 0);
  blade_.send({routing, "too late"});
  expectServed("next");
}

TEST_F(DamagedLink, SecondAnswer_IsNotTheNextOnes) {
  answerTwice("first");
  expectServed("next");
}

// Of any size.
class DamagedLinkAnswers : public DamagedLink, public testing::WithParamInterface<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(SecondAnswer, DamagedLinkAnswers, testing::Values(1, 17));

TEST_P(DamagedLinkAnswers, GoOn_TheyAreNotTheNextOnes) {
  const std::string former = answerTwice("first", GetParam());
  std::future<int> next = request("next", kPatience);
  const std::string routing = take("next");
  EXPECT_NE(routing, former);
  blade_.send({former, "answer"});
  blade_.send({routing, "own answer"});
  EXPECT_EQ(next.get(), 1);
  EXPECT_EQ(reply_.parts(), Parts{"own answer"});
}

}  // namespace
}  // namespace msglyr::test
