#include "framework/msglyr/DealerSet.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <thread>

#include "tests/framework/msglyr/TestPeer.h"

namespace msglyr::test {
namespace {

using std::chrono::milliseconds;

const Parts kRequest{"subject", "nox-xml:1", "7", "sma_slot3", ""};

// Connects in the background: a message goes out as soon as there is a connection.
void sendWhenConnected(DealerSet& set, DealerSet::Index index, const Message& message,
                       const DealerSet::Handler& handler) {
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  while (!set.send(index, message)) {
    ASSERT_LT(std::chrono::steady_clock::now(), giveUp);
    set.poll(milliseconds(1), handler);
  }
}

const DealerSet::Handler kIgnore = [](auto, const auto&, auto&) {
};

TEST(DealerSet, RequestsOfManyClientsToOwnListeners_AreAllAnswered) {
  constexpr std::size_t kCount = 50;
  DealerSet set;
  std::map<DealerSet::Index, DealerSet::Index> listenerOf;
  std::map<DealerSet::Index, Parts> replies;
  const DealerSet::Handler handler = [&](DealerSet::Index index, const std::string& routing,
                                         Message& message) {
    if (!routing.empty()) {
      message[0] += " answered by " + std::to_string(index);
      EXPECT_TRUE(set.reply(index, routing, message));
    } else {
      replies[index] = message.parts();
    }
  };
  for (std::size_t i = 0; i < kCount; ++i) {
    const DealerSet::Index listener = set.addListener("tcp://127.0.0.1:*");
    listenerOf[set.add(set.endPoint(listener))] = listener;
  }
  EXPECT_EQ(set.size(), 2 * kCount);
  for (const auto& [client, listener] : listenerOf) {
    sendWhenConnected(set, client, Message(kRequest), handler);
  }
  while (replies.size() < kCount && set.poll(kPatience, handler) > 0) {
  }
  ASSERT_EQ(replies.size(), kCount);
  for (const auto& [client, listener] : listenerOf) {
    EXPECT_EQ(replies[client][0], "subject answered by " + std::to_string(listener));
    EXPECT_EQ(replies[client].size(), 5U);
  }
}

TEST(DealerSet, NobodyListens_SendIsFalseAndNothingIsSentLater) {
  DealerSet set;
  const DealerSet::Index index = set.add("tcp://127.0.0.1:1");
  EXPECT_FALSE(set.send(index, Message(kRequest)));
}

TEST(DealerSet, NothingArrives_PollReturnsZeroAfterTheTimeOut) {
  DealerSet set;
  TestPeer server = TestPeer::listening();
  set.add(server.endPoint());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(set.poll(milliseconds(30), kIgnore), 0U);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(30));
}

TEST(DealerSet, Wake_EndsAPollWithoutLimit) {
  DealerSet set;
  std::thread waker([&] { set.wake(); });
  EXPECT_EQ(set.poll(milliseconds(-1), kIgnore), 0U);
  waker.join();
}

TEST(DealerSet, Removed_IsGoneAndItsIndexIsUsedAgain) {
  DealerSet set;
  TestPeer server = TestPeer::listening();
  const DealerSet::Index index = set.add(server.endPoint());
  sendWhenConnected(set, index, Message(kRequest), kIgnore);
  const auto request = server.receive();
  ASSERT_TRUE(request.has_value());
  set.remove(index);
  EXPECT_EQ(set.size(), 0U);
  EXPECT_THROW(set.send(index, Message(kRequest)), std::out_of_range);
  EXPECT_THROW(set.remove(index), std::out_of_range);
  server.send(*request);  // to nobody
  EXPECT_EQ(set.add(server.endPoint()), index);
  EXPECT_EQ(set.poll(milliseconds(50), kIgnore), 0U);
}

TEST(DealerSet, RemovedInItsOwnHandler_TheRestOfItsMessagesIsDropped) {
  DealerSet set;
  TestPeer server = TestPeer::listening();
  const DealerSet::Index index = set.add(server.endPoint());
  sendWhenConnected(set, index, Message(kRequest), kIgnore);
  const auto request = server.receive();
  ASSERT_TRUE(request.has_value());
  server.send(*request);
  server.send(*request);
  int calls = 0;
  const DealerSet::Handler removing = [&](DealerSet::Index at, const std::string&, Message&) {
    ++calls;
    set.remove(at);
    set.add(server.endPoint());
  };
  set.poll(kPatience, removing);
  set.poll(milliseconds(50), removing);
  EXPECT_EQ(calls, 1);
}

TEST(DealerSet, ReplyToAVanishedPeer_IsFalse) {
  DealerSet set;
  const DealerSet::Index listener = set.addListener("tcp://127.0.0.1:*");
  std::string peer;
  {
    TestPeer client = TestPeer::connected(set.endPoint(listener));
    client.send({"hello"});
    set.poll(kPatience, [&](auto, const std::string& routing, Message&) { peer = routing; });
    ASSERT_FALSE(peer.empty());
  }
  const auto giveUp = std::chrono::steady_clock::now() + kPatience;
  bool sent = true;
  while (sent && std::chrono::steady_clock::now() < giveUp) {
    sent = set.reply(listener, peer, Message(kRequest));
    set.poll(milliseconds(1), kIgnore);  // at a pace at which the loss is noticed first
  }
  EXPECT_FALSE(sent);
}

TEST(DealerSet, OperationOfTheOtherKind_Throws) {
  DealerSet set;
  const DealerSet::Index listener = set.addListener("tcp://127.0.0.1:*");
  const DealerSet::Index client = set.add(set.endPoint(listener));
  EXPECT_THROW(set.send(listener, Message(1)), std::out_of_range);
  EXPECT_THROW(set.reply(client, "x", Message(1)), std::out_of_range);
}

TEST(DealerSet, ListenerAtAnOccupiedEndPoint_Throws) {
  DealerSet set;
  const DealerSet::Index listener = set.addListener("tcp://127.0.0.1:*");
  EXPECT_THROW(set.addListener(set.endPoint(listener)), std::runtime_error);
  EXPECT_EQ(set.size(), 1U);
}

TEST(DealerSet, MessageBeyondTheBounds_IsNotHandedOver) {
  DealerSet set;
  const DealerSet::Index listener = set.addListener("tcp://127.0.0.1:*");
  TestPeer client = TestPeer::connected(set.endPoint(listener));
  client.send(Parts(17, "x"));
  client.send(kRequest);
  Parts seen;
  EXPECT_EQ(set.poll(kPatience, [&](auto, const auto&, Message& m) { seen = m.parts(); }), 1U);
  EXPECT_EQ(seen, kRequest);
}

}  // namespace
}  // namespace msglyr::test
