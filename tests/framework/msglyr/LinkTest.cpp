#include "framework/msglyr/Link.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

#include "framework/msglyr/LinkBatch.h"
#include "tests/framework/msglyr/TestPeer.h"

namespace msglyr::test {
namespace {

using std::chrono::milliseconds;

// Collects what a link receives.
class Inbox {
 public:
  Link::Handler handler() {
    return [this](Link::PeerId from, std::span<const std::string_view> messages) {
      const std::lock_guard guard(mutex_);
      from_ = from;
      for (const std::string_view message : messages) {
        messages_.emplace_back(message);
      }
      changed_.notify_all();
    };
  }

  // The messages so far, as soon as there are `count`; fewer if that takes too long.
  Parts waitFor(std::size_t count, std::chrono::milliseconds limit = kPatience) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, limit, [&] { return messages_.size() >= count; });
    return messages_;
  }
  Link::PeerId from() {
    const std::lock_guard guard(mutex_);
    return from_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  Parts messages_;         // guarded by mutex_
  Link::PeerId from_ = 0;  // guarded by mutex_
};

std::string uniqueEndPoint(const std::string& transport) {
  static int number = 0;
  const std::string name = "link-test-" + std::to_string(getpid()) + "-" + std::to_string(++number);
  if (transport == "tcp") {
    return "tcp://127.0.0.1:*";
  }
  return transport == "ipc" ? "ipc:///tmp/" + name : "inproc://" + name;
}

class LinkOver : public testing::TestWithParam<const char*> {
 protected:
  const std::string asked_ = uniqueEndPoint(GetParam());
  Inbox engineInbox_;
  Inbox serviceInbox_;
  Link engine_{Link::Side::Bind, asked_, engineInbox_.handler()};
  Link service_{Link::Side::Connect, engine_.endPoint(), serviceInbox_.handler()};
};

TEST_P(LinkOver, MessagesBothWays_ArriveInOrderAndWhole) {
  const std::string binary("\0\1\2", 3);
  EXPECT_TRUE(service_.send(binary, Urgency::AtOnce));
  EXPECT_TRUE(service_.send("", Urgency::Batched));
  EXPECT_TRUE(service_.send("last", Urgency::AtOnce));
  EXPECT_EQ(engineInbox_.waitFor(3), (Parts{binary, "", "last"}));
  EXPECT_TRUE(engine_.sendTo(engineInbox_.from(), "answer", Urgency::AtOnce));
  EXPECT_EQ(serviceInbox_.waitFor(1), (Parts{"answer"}));
  EXPECT_EQ(serviceInbox_.from(), Link::kPeer);
}

TEST_P(LinkOver, EngineSpeaksFirst_ReachesTheServiceThatConnected) {
  EXPECT_TRUE(engine_.send("order", Urgency::Batched));
  EXPECT_EQ(serviceInbox_.waitFor(1), (Parts{"order"}));
}

TEST_P(LinkOver, ManyOneWayMessages_TravelInFewBatches) {
  constexpr std::size_t kCount = 20000;
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_TRUE(service_.send("heartbeat " + std::to_string(i), Urgency::Batched));
  }
  const Parts received = engineInbox_.waitFor(kCount);
  ASSERT_EQ(received.size(), kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(received[i], "heartbeat " + std::to_string(i));
  }
  service_.stop();
  EXPECT_EQ(engine_.counters().received, kCount);
  EXPECT_EQ(service_.counters().sent, kCount);
  EXPECT_LT(service_.counters().batches, kCount / 10);
}

TEST_P(LinkOver, SeveralThreads_LoseNothing) {
  constexpr int kThreads = 4;
  constexpr int kEach = 2000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEach; ++i) {
        service_.send(std::string(1, static_cast<char>('a' + t)),
                      i % 100 == 0 ? Urgency::AtOnce : Urgency::Batched);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const Parts received = engineInbox_.waitFor(kThreads * kEach);
  EXPECT_EQ(received.size(), static_cast<std::size_t>(kThreads * kEach));
}

TEST_P(LinkOver, LongMessage_ArrivesWhole) {
  const std::string text(3 * 1024 * 1024, 'x');
  EXPECT_TRUE(service_.send("before", Urgency::Batched));
  EXPECT_TRUE(service_.send(text, Urgency::Batched));
  EXPECT_TRUE(service_.send("after", Urgency::AtOnce));
  const Parts received = engineInbox_.waitFor(3);
  ASSERT_EQ(received.size(), 3U);
  EXPECT_TRUE(received[1] == text);
}

TEST_P(LinkOver, Stopped_RefusesFurtherMessages) {
  service_.stop();
  EXPECT_FALSE(service_.send("late", Urgency::AtOnce));
  EXPECT_EQ(service_.counters().dropped, 1U);
  service_.stop();
}

TEST_P(LinkOver, QueuedBeforeStop_IsHandedOver) {
  EXPECT_TRUE(service_.send("hello", Urgency::AtOnce));
  ASSERT_EQ(engineInbox_.waitFor(1).size(), 1U);  // connected
  EXPECT_TRUE(service_.send("goodbye", Urgency::Batched));
  service_.stop();
  EXPECT_EQ(engineInbox_.waitFor(2), (Parts{"hello", "goodbye"}));
}

INSTANTIATE_TEST_SUITE_P(Transports, LinkOver, testing::Values("inproc", "ipc", "tcp"),
                         [](const auto& transport) { return std::string(transport.param); });

TEST(Link, ConnectsBeforeTheOtherSideBinds_NothingIsLost) {
  const std::string endPoint = uniqueEndPoint("inproc");
  Inbox engineInbox;
  Inbox serviceInbox;
  Link service(Link::Side::Connect, endPoint, serviceInbox.handler());
  EXPECT_TRUE(service.send("early", Urgency::AtOnce));
  Link engine(Link::Side::Bind, endPoint, engineInbox.handler());
  EXPECT_EQ(engineInbox.waitFor(1), (Parts{"early"}));
  EXPECT_TRUE(engine.send("welcome", Urgency::AtOnce));
  EXPECT_EQ(serviceInbox.waitFor(1), (Parts{"welcome"}));
}

TEST(Link, TwoServices_EachIsAnsweredAndTheLatestIsThePeer) {
  Inbox engineInbox;
  Inbox firstInbox;
  Inbox secondInbox;
  const std::string endPoint = uniqueEndPoint("inproc");
  Link engine(Link::Side::Bind, endPoint, engineInbox.handler());
  Link first(Link::Side::Connect, endPoint, firstInbox.handler());
  first.send("1", Urgency::AtOnce);
  engineInbox.waitFor(1);
  const Link::PeerId firstPeer = engineInbox.from();
  Link second(Link::Side::Connect, endPoint, secondInbox.handler());
  second.send("2", Urgency::AtOnce);
  engineInbox.waitFor(2);
  EXPECT_NE(engineInbox.from(), firstPeer);
  engine.send("to the latest", Urgency::AtOnce);
  engine.sendTo(firstPeer, "to the first", Urgency::AtOnce);
  EXPECT_EQ(secondInbox.waitFor(1), (Parts{"to the latest"}));
  EXPECT_EQ(firstInbox.waitFor(1), (Parts{"to the first"}));
}

TEST(Link, ServiceComesBack_IsFoundAgain) {
  Inbox engineInbox;
  Inbox serviceInbox;
  Link engine(Link::Side::Bind, "tcp://127.0.0.1:*", engineInbox.handler());
  {
    Link gone(Link::Side::Connect, engine.endPoint(), [](auto, auto) {});
    gone.send("1", Urgency::AtOnce);
    engineInbox.waitFor(1);
  }
  Link service(Link::Side::Connect, engine.endPoint(), serviceInbox.handler());
  service.send("2", Urgency::AtOnce);
  engineInbox.waitFor(2);
  engine.send("order", Urgency::AtOnce);
  EXPECT_EQ(serviceInbox.waitFor(1), (Parts{"order"}));
}

TEST(Link, EngineComesBack_TheServiceReachesItAndIsReached) {
  Inbox serviceInbox;
  std::optional<Inbox> engineInbox(std::in_place);
  std::optional<Link> engine(std::in_place, Link::Side::Bind, "tcp://127.0.0.1:*",
                             engineInbox->handler());
  const std::string endPoint = engine->endPoint();
  Link service(Link::Side::Connect, endPoint, serviceInbox.handler());
  service.send("1", Urgency::AtOnce);
  engineInbox->waitFor(1);
  engine.reset();
  Inbox newInbox;
  while (!engine) {
    try {
      engine.emplace(Link::Side::Bind, endPoint, newInbox.handler());
    } catch (const std::runtime_error&) {
      std::this_thread::yield();  // the transport frees the port in the background
    }
  }
  engine->send("order", Urgency::Batched);
  EXPECT_EQ(serviceInbox.waitFor(1), (Parts{"order"}));
  service.send("2", Urgency::Batched);
  EXPECT_EQ(newInbox.waitFor(1), (Parts{"2"}));
}

TEST(Link, AnswerFromTheHandler_LeavesAtOnce) {
  const std::string endPoint = uniqueEndPoint("inproc");
  Link* engineLink = nullptr;
  std::mutex ready;
  std::unique_lock hold(ready);
  Link engine(Link::Side::Bind, endPoint,
              [&](Link::PeerId from, std::span<const std::string_view> messages) {
                const std::lock_guard guard(ready);
                for (const std::string_view message : messages) {
                  engineLink->sendTo(from, message, Urgency::AtOnce);
                }
              });
  engineLink = &engine;
  hold.unlock();
  Inbox inbox;
  Link service(Link::Side::Connect, endPoint, inbox.handler());
  for (std::size_t i = 1; i <= 100; ++i) {
    service.send("question", Urgency::AtOnce);
    ASSERT_EQ(inbox.waitFor(i).size(), i);
  }
}

TEST(Link, NobodyTakesTheMessages_BoundedAndCounted) {
  Link::Limits limits;
  limits.maxQueuedBytes = 100 * 1000;
  Link service(
      Link::Side::Connect, "tcp://127.0.0.1:1", [](auto, auto) {}, limits);
  std::uint64_t refused = 0;
  for (int i = 0; i < 1000; ++i) {
    refused += service.send(std::string(996, 'x'), Urgency::Batched) ? 0U : 1U;
  }
  EXPECT_EQ(refused, 900U);
  EXPECT_EQ(service.counters().dropped, 900U);
  service.stop();
  EXPECT_EQ(service.counters().dropped, 1000U);
  EXPECT_EQ(service.counters().sent, 0U);
}

TEST(Link, NobodyTakesAMessageInTime_ItIsDroppedAndRoomIsMade) {
  Link::Limits limits;
  limits.maxQueuedBytes = 10;
  limits.maxWait = milliseconds(1);
  Link service(
      Link::Side::Connect, "tcp://127.0.0.1:1", [](auto, auto) {}, limits);
  ASSERT_TRUE(service.send("stale", Urgency::AtOnce));
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  while (service.counters().dropped == 0 && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::yield();
  }
  EXPECT_EQ(service.counters().dropped, 1U);
  EXPECT_TRUE(service.send("fresh", Urgency::Batched));
}

TEST(Link, MessageBeyondTheLimit_Refused) {
  Link::Limits limits;
  limits.maxMessageBytes = 10;
  Link service(
      Link::Side::Connect, uniqueEndPoint("inproc"), [](auto, auto) {}, limits);
  EXPECT_FALSE(service.send("eleven byte", Urgency::Batched));
  EXPECT_TRUE(service.send("ten bytes!", Urgency::Batched));
}

TEST(Link, ForeignPeersAndMalformedBatches_AreRefusedAndCounted) {
  Inbox inbox;
  Link engine(Link::Side::Bind, "tcp://127.0.0.1:*", inbox.handler());
  TestPeer anonymous = TestPeer::connected(engine.endPoint());
  anonymous.send({std::string("\1\0\0\0x", 5)});
  TestPeer broken(ZMQ_DEALER);
  broken.socket().set(ZMQ_ROUTING_ID, "8 bytes!");
  broken.socket().connect(engine.endPoint());
  broken.send({"\377\377\377\377"});
  broken.send({"two", "frames"});
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  while (engine.counters().refused < 3 && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::yield();
  }
  EXPECT_EQ(engine.counters().refused, 3U);
  EXPECT_EQ(engine.counters().received, 0U);
}

TEST(Link, EndPointInUse_ThrowsNamingIt) {
  const std::string endPoint = uniqueEndPoint("inproc");
  Link engine(Link::Side::Bind, endPoint, [](auto, auto) {});
  try {
    Link second(Link::Side::Bind, endPoint, [](auto, auto) {});
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), "cannot bind '" + endPoint + "': Address already in use");
  }
}

TEST(LinkBatch, MessagesAppended_AreSplitAgain) {
  std::string batch;
  appendToBatch(batch, "ab");
  appendToBatch(batch, "");
  EXPECT_EQ(batch, std::string("\2\0\0\0ab\0\0\0\0", 10));
  std::vector<std::string_view> messages;
  EXPECT_TRUE(splitBatch(batch, messages));
  EXPECT_EQ(messages, (std::vector<std::string_view>{"ab", ""}));
}

TEST(LinkBatch, CutAnywhereButBetweenMessages_IsMalformed) {
  std::string batch;
  appendToBatch(batch, "ab");
  std::vector<std::string_view> messages;
  for (std::size_t size = 1; size < batch.size(); ++size) {
    EXPECT_FALSE(splitBatch(std::string_view(batch).substr(0, size), messages)) << size;
  }
  EXPECT_TRUE(splitBatch("", messages));
  EXPECT_TRUE(messages.empty());
}

}  // namespace
}  // namespace msglyr::test
