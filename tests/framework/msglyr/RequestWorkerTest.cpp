#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <optional>
#include <semaphore>
#include <set>

#include "framework/msglyr/Counters.h"
#include "framework/os/WaitableEvent.h"
#include "tests/framework/msglyr/RequestWorkers.h"
#include "tests/framework/msglyr/TestPeer.h"

namespace msglyr::test {
namespace {

using std::chrono::milliseconds;

const Parts kRequest{"serviceOrchAG.heartbeat", "nox-xml:1", "17", "sma_slot3", "<x/>"};

// One worker channel driven by the test's own thread.
class SingleWorker : public testing::Test {
 protected:
  SingleWorker() { join(channel_); }

  void join(AsyncRouterDealerChannel& channel) {
    channel.setServerEndPoint(RequestWorkers::kServer);
    channel.setWorkerEndPoint(RequestWorkers::kWorker);
  }
  static std::string group() {
    return testing::UnitTest::GetInstance()->current_test_info()->name();
  }
  static std::string endPoint() {
    return RequestDispatcher::join(group(), RequestWorkers::kServer, RequestWorkers::kWorker)
        ->endPoint();
  }

  AsyncRouterDealerChannel channel_{group(), kRoleRequestWorker};
};

TEST_F(SingleWorker, FivePartRequest_IsReceivedWholeAndAnswered) {
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send(kRequest);
  Message message;
  char address[kAddressBytes] = "untouched";
  ASSERT_EQ(channel_.receive(address, &message, -1), 5);
  EXPECT_EQ(message.parts(), kRequest);
  EXPECT_STRNE(address, "untouched");
  message[0] = "sma_slot3.heartbeat";
  message[3] = "100";
  message[4] = "";
  EXPECT_EQ(channel_.send("sma_slot3.heartbeat", &message), 5);
  EXPECT_EQ(peer.receive(), (Parts{"sma_slot3.heartbeat", "nox-xml:1", "17", "100", ""}));
}

TEST_F(SingleWorker, OtherNumbersOfParts_AreReportedAsTheyAre) {
  TestPeer peer = TestPeer::connected(endPoint());
  for (const unsigned count : {1U, 4U, 6U, 16U}) {
    peer.send(Parts(count, "part"));
    Message message;
    EXPECT_EQ(channel_.receive(nullptr, &message, -1), static_cast<int>(count));
    EXPECT_EQ(message.getnumParts(), count);
  }
}

TEST_F(SingleWorker, EmptyDelimiterFrame_IsAPartLikeAnyOther) {
  TestPeer peer(ZMQ_REQ);
  peer.socket().connect(endPoint());
  peer.send({"subject"});
  Message message;
  EXPECT_EQ(channel_.receive(nullptr, &message, -1), 2);
  EXPECT_EQ(message.parts(), (Parts{"", "subject"}));
}

TEST_F(SingleWorker, TooManyParts_AreDrainedAndCountedAndTheNextRequestIsServed) {
  const Counters before = counters();
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send(Parts(17, "x"));
  peer.send(Parts(1000, "y"));
  peer.send(kRequest);
  Message message;
  EXPECT_EQ(channel_.receive(nullptr, &message, -1), 5);
  EXPECT_EQ(message.parts(), kRequest);
  EXPECT_EQ(counters().refusedParts - before.refusedParts, 2U);
  EXPECT_EQ(counters().received - before.received, 1U);
}

TEST_F(SingleWorker, PartsTogetherBeyondTheSize_AreRefusedAndCounted) {
  const Counters before = counters();
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send(Parts(2, std::string(600 * 1024, 'x')));
  peer.send(kRequest);
  Message message;
  EXPECT_EQ(channel_.receive(nullptr, &message, -1), 5);
  EXPECT_EQ(counters().refusedBytes - before.refusedBytes, 1U);
}

TEST_F(SingleWorker, MessageOfExactlyTheSize_IsReceived) {
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send({std::string(1024 * 1024, 'x')});
  Message message;
  EXPECT_EQ(channel_.receive(nullptr, &message, -1), 1);
  EXPECT_EQ(message[0].size(), 1024U * 1024U);
}

TEST_F(SingleWorker, FrameBeyondTheSize_CutsThatPeerOffAndNobodyElse) {
  TestPeer other = TestPeer::connected(endPoint());
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send({std::string(1024 * 1024 + 1, 'x')});
  other.send(kRequest);
  Message message;
  EXPECT_EQ(channel_.receive(nullptr, &message, -1), 5);
  EXPECT_EQ(channel_.receive(nullptr, &message, 50), 0);
}

TEST_F(SingleWorker, NoRequest_ZeroAfterTheTimeOutAndMessageUntouched) {
  Message message(2);
  message[0] = "kept";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(channel_.receive(nullptr, &message, 30), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(30));
  EXPECT_EQ(message.getnumParts(), 2U);
  EXPECT_EQ(message[0], "kept");
  EXPECT_EQ(channel_.receive(nullptr, &message, 0), 0);
}

TEST_F(SingleWorker, SendBeforeAnyRequest_MinusOne) {
  Message message(5);
  EXPECT_EQ(channel_.send("sma_slot3.heartbeat", &message), -1);
}

TEST_F(SingleWorker, TwoPeers_EachGetsTheReplyToItsOwnRequest) {
  TestPeer first = TestPeer::connected(endPoint());
  TestPeer second = TestPeer::connected(endPoint());
  Message message;
  first.send({"from first"});
  ASSERT_EQ(channel_.receive(nullptr, &message, -1), 1);
  ASSERT_EQ(channel_.send("same address", &message), 1);
  second.send({"from second"});
  ASSERT_EQ(channel_.receive(nullptr, &message, -1), 1);
  ASSERT_EQ(channel_.send("same address", &message), 1);
  EXPECT_EQ(first.receive(), (Parts{"from first"}));
  EXPECT_EQ(second.receive(), (Parts{"from second"}));
}

TEST_F(SingleWorker, TwoChannels_EachAnswersThePeerItReceivedFromLast) {
  AsyncRouterDealerChannel other(group(), kRoleRequestWorker);
  join(other);
  TestPeer first = TestPeer::connected(endPoint());
  TestPeer second = TestPeer::connected(endPoint());
  Message one;
  Message two;
  first.send({"1"});
  ASSERT_EQ(channel_.receive(nullptr, &one, -1), 1);
  second.send({"2"});
  ASSERT_EQ(other.receive(nullptr, &two, -1), 1);
  EXPECT_EQ(channel_.send("", &one), 1);
  EXPECT_EQ(other.send("", &two), 1);
  EXPECT_EQ(first.receive(), (Parts{"1"}));
  EXPECT_EQ(second.receive(), (Parts{"2"}));
}

TEST_F(SingleWorker, RefusedMessageInBetween_DoesNotRedirectTheReply) {
  TestPeer asker = TestPeer::connected(endPoint());
  TestPeer rude = TestPeer::connected(endPoint());
  Message message;
  asker.send({"question"});
  ASSERT_EQ(channel_.receive(nullptr, &message, -1), 1);
  const std::uint64_t refused = counters().refusedParts;
  rude.send(Parts(17, "x"));
  Message none;
  while (counters().refusedParts == refused) {
    ASSERT_EQ(channel_.receive(nullptr, &none, 20), 0);
  }
  EXPECT_EQ(channel_.send("", &message), 1);
  EXPECT_EQ(asker.receive(), (Parts{"question"}));
}

TEST_F(SingleWorker, VanishedPeer_SendReturnsMinusOne) {
  const Counters before = counters();
  Message message;
  {
    TestPeer peer = TestPeer::connected(endPoint());
    peer.send(kRequest);
    ASSERT_EQ(channel_.receive(nullptr, &message, -1), 5);
  }
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  int sent = 5;
  while (sent == 5 && std::chrono::steady_clock::now() < giveUp) {
    sent = channel_.send("sma_slot3.heartbeat", &message);
    Message none;
    channel_.receive(nullptr, &none, 1);  // at a pace at which the loss is noticed first
  }
  EXPECT_EQ(sent, -1);
  EXPECT_EQ(counters().sendFailed - before.sendFailed, 1U);
}

TEST_F(SingleWorker, PeerThatDoesNotRead_SendReturnsMinusOneAndNeverBlocks) {
  TestPeer deaf = TestPeer::connected(endPoint());
  deaf.send({"hello"});
  Message message;
  ASSERT_EQ(channel_.receive(nullptr, &message, -1), 1);
  message[0] = std::string(64 * 1024, 'x');
  int sent = 1;
  int count = 0;
  while (sent == 1 && count < 100000) {
    sent = channel_.send("", &message);
    ++count;
  }
  EXPECT_EQ(sent, -1);
  // The others are served all the same.
  TestPeer peer = TestPeer::connected(endPoint());
  peer.send(kRequest);
  ASSERT_EQ(channel_.receive(nullptr, &message, -1), 5);
  EXPECT_EQ(channel_.send("", &message), 5);
  EXPECT_EQ(peer.receive(), kRequest);
}

TEST(RequestWorker, UnknownRole_Throws) {
  EXPECT_THROW(AsyncRouterDealerChannel("x", 3), std::invalid_argument);
}

TEST(RequestWorker, ReceiveWithoutEndPoints_Throws) {
  AsyncRouterDealerChannel channel("x", kRoleRequestWorker);
  Message message;
  EXPECT_THROW(channel.receive(nullptr, &message, 0), std::logic_error);
  EXPECT_EQ(channel.send("", &message), -1);
}

std::string textOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST(RequestWorker, EndPointInUse_ThrowsNamingItAndCanBeTriedAgain) {
  std::optional<TestPeer> occupant = TestPeer::listening();
  const std::string endPoint = occupant->endPoint();
  const auto setUp = [&] {
    AsyncRouterDealerChannel channel("conflict", kRoleRequestWorker);
    channel.setServerEndPoint(endPoint);
    channel.setWorkerEndPoint("inproc://worker-end-point");
  };
  const std::uint64_t bound = counters().bound;
  EXPECT_EQ(textOf(setUp), "cannot bind '" + endPoint + "': Address already in use");
  EXPECT_EQ(counters().bound, bound);
  EXPECT_EQ(textOf(setUp), "cannot bind '" + endPoint + "': Address already in use");
  occupant.reset();
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  std::string text;
  do {
    text = textOf(setUp);  // the transport frees the port in the background
  } while (text != "nothing thrown" && std::chrono::steady_clock::now() < giveUp);
  EXPECT_EQ(text, "nothing thrown");
  EXPECT_EQ(counters().bound, bound + 1);
}

TEST(RequestWorker, MalformedEndPoint_ThrowsNamingIt) {
  AsyncRouterDealerChannel channel("malformed", kRoleRequestWorker);
  channel.setServerEndPoint("tcp:/127.0.0.1:1");
  EXPECT_EQ(textOf([&] { channel.setWorkerEndPoint("inproc://w"); }),
            "cannot bind 'tcp:/127.0.0.1:1': Invalid argument");
}

// A request whose first part is "hold" keeps its worker until it is released.
class FiveWorkers : public testing::TestWithParam<int> {
 protected:
  FiveWorkers()
      : workers_(std::make_unique<RequestWorkers>(name(), 5, [this](Message& message) {
          if (message[0] == "hold") {
            ++held_;
            gate_.acquire();
          }
        })) {}
  ~FiveWorkers() override { release(); }

  static std::string name() {
    return testing::UnitTest::GetInstance()->current_test_info()->name();
  }

  // Has `count` workers stand still, each with a request of its own peer.
  void hold(int count) {
    for (int i = 0; i < count; ++i) {
      blockers_.push_back(TestPeer::connected(workers_->endPoint()));
      blockers_.back().send({"hold"});
    }
    const auto giveUp = std::chrono::steady_clock::now() + kPatience;
    while (held_ < count && std::chrono::steady_clock::now() < giveUp) {
      std::this_thread::yield();
    }
    ASSERT_EQ(held_, count);
  }
  // Lets all go on that stand still.
  void release() { gate_.release(held_.exchange(0)); }
  void expectAnswersToBlockers() {
    for (TestPeer& peer : blockers_) {
      EXPECT_EQ(peer.receive(), (Parts{"hold"}));
    }
    blockers_.clear();
  }

  std::counting_semaphore<> gate_{0};
  std::atomic<int> held_{0};
  std::unique_ptr<RequestWorkers> workers_;
  std::vector<TestPeer> blockers_;
};

TEST_F(FiveWorkers, BlockedAgainAndAgain_TheOthersAnswerEveryRequest) {
  TestPeer peer = TestPeer::connected(workers_->endPoint());
  for (int round = 0; round < 3; ++round) {
    for (int blocked = 1; blocked <= 4; ++blocked) {
      hold(blocked);
      for (int i = 0; i < 20; ++i) {
        const Parts request{"go", std::to_string(i)};
        peer.send(request);
        ASSERT_EQ(peer.receive(), request) << blocked << " blocked in round " << round;
      }
      release();
      expectAnswersToBlockers();
    }
  }
}

TEST_P(FiveWorkers, SomeBlocked_TheOthersAnswerEveryRequest) {
  hold(GetParam());
  TestPeer first = TestPeer::connected(workers_->endPoint());
  TestPeer second = TestPeer::connected(workers_->endPoint());
  for (int i = 0; i < 200; ++i) {
    const Parts request{"go", std::to_string(i)};
    first.send(request);
    second.send(request);
    ASSERT_EQ(first.receive(), request);
    ASSERT_EQ(second.receive(), request);
  }
  release();
  expectAnswersToBlockers();
}

INSTANTIATE_TEST_SUITE_P(Blocked, FiveWorkers, testing::Values(0, 1, 4));

TEST_F(FiveWorkers, BurstWithBlockersInIt_IsAnsweredBehindThem) {
  // One peer sends everything at once, so that the blocking requests arrive in the same batch.
  TestPeer peer = TestPeer::connected(workers_->endPoint());
  int expected = 0;
  for (int i = 0; i < 100; ++i) {
    const bool blocks = i % 25 == 0;  // four of them
    peer.send({blocks ? "hold" : "go"});
    expected += blocks ? 0 : 1;
  }
  for (int i = 0; i < expected; ++i) {
    ASSERT_EQ(peer.receive(), (Parts{"go"})) << i;
  }
  EXPECT_EQ(held_, 4);
  release();
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(peer.receive(), (Parts{"hold"}));
  }
}

TEST_F(FiveWorkers, AllBlocked_TheRequestWaitsAndIsAnsweredLater) {
  hold(5);
  TestPeer peer = TestPeer::connected(workers_->endPoint());
  peer.send({"go"});
  EXPECT_EQ(peer.receive(milliseconds(100)), std::nullopt);
  release();
  EXPECT_EQ(peer.receive(), (Parts{"go"}));
}

TEST_F(FiveWorkers, ManyPeersWithManyRequests_EachGetsItsRepliesInFull) {
  constexpr int kPeers = 8;
  constexpr int kRequests = 300;
  std::vector<TestPeer> peers;
  for (int i = 0; i < kPeers; ++i) {
    peers.push_back(TestPeer::connected(workers_->endPoint()));
  }
  for (int r = 0; r < kRequests; ++r) {
    for (int p = 0; p < kPeers; ++p) {
      peers[static_cast<std::size_t>(p)].send({"go", std::to_string(p), std::to_string(r)});
    }
  }
  for (int p = 0; p < kPeers; ++p) {
    std::set<std::string> seen;
    for (int r = 0; r < kRequests; ++r) {
      const auto reply = peers[static_cast<std::size_t>(p)].receive();
      ASSERT_TRUE(reply.has_value());
      ASSERT_EQ(reply->at(1), std::to_string(p));
      seen.insert(reply->at(2));
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kRequests));
  }
}

// A worker that waits for an event is not found out by looking: nobody looks for an hour.
TEST(RequestDispatcher, HandlerWaitsForAnEvent_AnotherWorkerTakesTheNextRequest) {
  const auto dispatcher =
      std::make_shared<RequestDispatcher>(RequestWorkers::kServer, std::chrono::hours(1));
  os::WaitableEvent gate;
  std::vector<std::jthread> workers;
  for (int i = 0; i < 3; ++i) {
    workers.emplace_back([&] {
      std::string peer;
      Message message;
      while (dispatcher->receive(peer, message, std::nullopt) > 0 && message[0] != "stop") {
        if (message[0] == "hold") {
          EXPECT_EQ(gate.wait(os::WaitableEvent::kNoLimit), 0U);
        }
        dispatcher->send(peer, message);
      }
      dispatcher->onWait();  // does not come back
    });
  }
  TestPeer blocker = TestPeer::connected(dispatcher->endPoint());
  TestPeer peer = TestPeer::connected(dispatcher->endPoint());
  for (int i = 0; i < 20; ++i) {
    blocker.send({"hold"});
    blocker.send({"hold"});
    const Parts request{"go", std::to_string(i)};
    for (int k = 0; k < 5; ++k) {
      peer.send(request);
      EXPECT_EQ(peer.receive(), request) << i;
    }
    gate.set();
    EXPECT_EQ(blocker.receive(), (Parts{"hold"})) << i;
    EXPECT_EQ(blocker.receive(), (Parts{"hold"})) << i;
    gate.reset();
  }
  gate.set();
  for (std::size_t i = 0; i < workers.size(); ++i) {
    blocker.send({"stop"});
  }
}

// Requests with quiet times between them: each finds the watcher waiting without limit.
TEST_F(FiveWorkers, RequestsOneByOne_AreAllAnswered) {
  TestPeer peer = TestPeer::connected(workers_->endPoint());
  for (int i = 0; i < 50; ++i) {
    peer.send({"go"});
    ASSERT_EQ(peer.receive(), (Parts{"go"}));
    EXPECT_EQ(peer.receive(milliseconds(3)), std::nullopt);
  }
}

}  // namespace
}  // namespace msglyr::test
