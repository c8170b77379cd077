#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <thread>

#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "framework/msglyr/Counters.h"
#include "framework/msglyr/Socket.h"
#include "tests/framework/msglyr/TestPeer.h"
#include "tests/framework/msglyr/VacantEndPoint.h"

namespace msglyr::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const Parts kCommand{"sma_slot3.formatDisk", "nox-xml:1", "1", "serviceOrchAG", "<formatDisk/>"};

/// Waits for a command, sends it back and returns it, behind its routing frame.
Parts answerWithItself(TestPeer& blade) {
  const auto command = blade.receive();
  if (!command) {
    ADD_FAILURE() << "no command";
    return Parts(2);
  }
  blade.send(*command);
  return *command;
}

class ClientChannel : public testing::Test {
 protected:
  ClientChannel() { channel_.setServerEndPoint(blade_.endPoint()); }

  int sendCommand() {
    Message message(kCommand);
    return channel_.send("sma_slot3.formatDisk", &message);
  }
  // The peer's routing frame; the command must be the rest, without a delimiter.
  std::string takeCommand() {
    const auto request = blade_.receive();
    if (!request) {
      ADD_FAILURE() << "no command";
      return {};
    }
    EXPECT_EQ(Parts(request->begin() + 1, request->end()), kCommand);
    return request->front();
  }
  void answer(const std::string& routing, Parts parts) {
    parts.insert(parts.begin(), routing);
    blade_.send(parts);
  }

  TestPeer blade_ = TestPeer::listening();
  AsyncRouterDealerChannel channel_{"ZEDServiceOrchAGChannel", kRoleClient};
};

TEST_F(ClientChannel, CommandAndReply_ArriveWholeWithoutDelimiter) {
  ASSERT_EQ(sendCommand(), 5);
  Message reply;
  std::thread blade([this] {
    answer(takeCommand(), {"a", "b", "1", "100", std::string("x\0y", 3)});
  });
  char address[kAddressBytes];
  std::fill(std::begin(address), std::end(address), 'x');
  EXPECT_EQ(channel_.receive(address, &reply, 10000), 5);
  blade.join();
  EXPECT_EQ(reply.parts(), (Parts{"a", "b", "1", "100", std::string("x\0y", 3)}));
  EXPECT_EQ(address, blade_.endPoint());
}

TEST_F(ClientChannel, WorkerEndPoint_HasNoEffect) {
  channel_.setWorkerEndPoint("inproc://workers");
  ASSERT_EQ(sendCommand(), 5);
  Message reply;
  std::thread blade([this] { answer(takeCommand(), {"answer"}); });
  EXPECT_EQ(channel_.receive(nullptr, &reply, 10000), 1);
  blade.join();
}

TEST_F(ClientChannel, LongEndPoint_IsCutToTheAddressBuffer) {
  const std::string endPoint = blade_.endPoint();
  const std::string zeros(2 * kAddressBytes, '0');
  const std::string padded = "tcp://" + zeros + "177.0.0.1" + endPoint.substr(endPoint.rfind(':'));
  channel_.setServerEndPoint(padded);  // the same address: 177 is octal
  ASSERT_EQ(sendCommand(), 5);
  Message reply;
  std::thread blade([this] { answer(takeCommand(), {"answer"}); });
  char address[kAddressBytes + 1];
  address[kAddressBytes] = 'x';
  EXPECT_EQ(channel_.receive(address, &reply, 10000), 1);
  blade.join();
  EXPECT_EQ(address, padded.substr(0, kAddressBytes - 1));
  EXPECT_EQ(address[kAddressBytes], 'x');
}

TEST_F(ClientChannel, ReplyOfOtherSizes_IsReportedAsItIs) {
  for (const unsigned count : {1U, 3U, 6U}) {
    ASSERT_EQ(sendCommand(), 5);
    std::thread blade([&] { answer(takeCommand(), Parts(count, "part")); });
    Message reply(5);
    EXPECT_EQ(channel_.receive(nullptr, &reply, 10000), static_cast<int>(count));
    blade.join();
    EXPECT_EQ(reply.getnumParts(), count);
  }
}

TEST_F(ClientChannel, ReplyBeyondTheBounds_MinusOneAndCounted) {
  const Counters before = counters();
  ASSERT_EQ(sendCommand(), 5);
  std::thread blade([&] { answer(takeCommand(), Parts(17, "x")); });
  Message reply(5);
  EXPECT_EQ(channel_.receive(nullptr, &reply, 10000), -1);
  blade.join();
  EXPECT_EQ(counters().refusedParts - before.refusedParts, 1U);
}

TEST_F(ClientChannel, SilentBlade_ZeroAtTheTimeOut) {
  const auto begin = Clock::now();
  ASSERT_EQ(sendCommand(), 5);
  Message reply;
  EXPECT_EQ(channel_.receive(nullptr, &reply, 200), 0);
  const auto took = Clock::now() - begin;
  EXPECT_GE(took, milliseconds(190));
  EXPECT_LT(took, milliseconds(2000));
}

TEST_F(ClientChannel, TimeOut_CountsFromTheSend) {
  constexpr milliseconds kWait{400};
  const auto begin = Clock::now();
  ASSERT_EQ(sendCommand(), 5);
  while (Clock::now() - begin < kWait) {
    std::this_thread::yield();
  }
  Message reply;
  EXPECT_EQ(channel_.receive(nullptr, &reply, kWait.count()), 0);
  EXPECT_LT(Clock::now() - begin, 2 * kWait - milliseconds(50));
}

TEST_F(ClientChannel, SecondAnswer_IsNotTakenForTheNextCommandsReply) {
  ASSERT_EQ(sendCommand(), 5);
  Message reply;
  std::string routing;
  std::thread blade([&] {
    routing = takeCommand();
    answer(routing, {"first"});
    answer(routing, {"first again"});
    answer(routing, {"and again"});
  });
  ASSERT_EQ(channel_.receive(nullptr, &reply, 10000), 1);
  ASSERT_EQ(channel_.receive(nullptr, &reply, 10000), 1);  // so that the third has come too
  blade.join();
  ASSERT_EQ(sendCommand(), 5);
  std::thread again([&] { answer(takeCommand(), {"second"}); });
  ASSERT_EQ(channel_.receive(nullptr, &reply, 10000), 1);
  again.join();
}

TEST_F(ClientChannel, NewEndPoint_LeavesTheFormerOne) {
  TestPeer other = TestPeer::listening();
  channel_.setServerEndPoint(other.endPoint());
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(sendCommand(), 5);
    std::thread blade([&] { answerWithItself(other); });
    Message reply;
    EXPECT_EQ(channel_.receive(nullptr, &reply, 10000), 5);
    blade.join();
  }
  EXPECT_EQ(blade_.receive(milliseconds(0)), std::nullopt);
}

TEST_F(ClientChannel, ConnectionLostAfterTheCommand_Zero) {
  ASSERT_EQ(sendCommand(), 5);
  std::thread blade([&] {
    takeCommand();
    blade_ = TestPeer(ZMQ_ROUTER);  // closes the connection without an answer
  });
  Message reply;
  EXPECT_EQ(channel_.receive(nullptr, &reply, 300), 0);
  blade.join();
}

TEST(UnreachableBlade, NobodyListens_ZeroAtTheDeadlineAndNeverDeliveredLater) {
  const std::string endPoint = vacantEndPoint();
  AsyncRouterDealerChannel channel("ZEDServiceOrchAGChannel", kRoleClient);
  channel.setServerEndPoint(endPoint);
  Message command(kCommand);
  const auto begin = Clock::now();
  ASSERT_EQ(channel.send("", &command), 5);
  Message reply;
  EXPECT_EQ(channel.receive(nullptr, &reply, 300), 0);
  EXPECT_LE(Clock::now() - begin, milliseconds(1000));

  // The blade comes up. The next command reaches it, the one given up does not.
  TestPeer blade = TestPeer::listening(endPoint);
  Message next(1);
  next[0] = "next";
  ASSERT_EQ(channel.send("", &next), 1);
  std::thread answering([&] { EXPECT_EQ(answerWithItself(blade).at(1), "next"); });
  EXPECT_EQ(channel.receive(nullptr, &reply, 10000), 1);
  answering.join();
  EXPECT_EQ(blade.receive(milliseconds(50)), std::nullopt);
}

TEST(UnreachableBlade, ComesUpBeforeTheDeadline_GetsTheCommand) {
  const std::string endPoint = vacantEndPoint();
  AsyncRouterDealerChannel channel("ZEDServiceOrchAGChannel", kRoleClient);
  channel.setServerEndPoint(endPoint);
  Message command(kCommand);
  ASSERT_EQ(channel.send("", &command), 5);
  Message reply;
  std::thread blade([&] {
    TestPeer peer = TestPeer::listening(endPoint);
    answerWithItself(peer);
    peer.receive(milliseconds(200));  // keeps the connection while the reply travels
  });
  EXPECT_EQ(channel.receive(nullptr, &reply, 10000), 5);
  blade.join();
}

TEST(UnreachableBlade, ChannelDestroyedMeanwhile_NothingIsDelivered) {
  const std::string endPoint = vacantEndPoint();
  {
    AsyncRouterDealerChannel channel("ZEDServiceOrchAGChannel", kRoleClient);
    channel.setServerEndPoint(endPoint);
    Message command(kCommand);
    ASSERT_EQ(channel.send("", &command), 5);
  }
  TestPeer blade = TestPeer::listening(endPoint);
  EXPECT_EQ(blade.receive(milliseconds(300)), std::nullopt);
}

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

TEST(IdleChannels, ManyOfThem_CostNoDescriptors) {
  // Sockets of earlier tests may still be closing, which lowers the number meanwhile; a hundred
  // channels with a socket each would raise it by two hundred.
  const std::ptrdiff_t limit = openDescriptors() + 20;
  const std::string endPoint = vacantEndPoint();
  std::vector<std::unique_ptr<AsyncRouterDealerChannel>> channels;
  for (int i = 0; i < 100; ++i) {
    channels.push_back(
        std::make_unique<AsyncRouterDealerChannel>("ZEDServiceOrchAGChannel", kRoleClient));
    channels.back()->setServerEndPoint(endPoint);
  }
  EXPECT_LT(openDescriptors(), limit);
  for (const auto& channel : channels) {
    Message command(kCommand);
    ASSERT_EQ(channel->send("", &command), 5);
    Message reply;
    ASSERT_EQ(channel->receive(nullptr, &reply, 1), 0);
  }
  const auto giveUp = Clock::now() + kPatience;
  while (openDescriptors() >= limit && Clock::now() < giveUp) {
    std::this_thread::yield();  // the transport closes in the background
  }
  EXPECT_LT(openDescriptors(), limit);
}

class MalformedEndPoint : public testing::TestWithParam<const char*> {};

// The transport is asked too, so that the channel refuses what it refuses and nothing else.
TEST_P(MalformedEndPoint, IsRefusedLikeByTheTransport) {
  const std::string endPoint = GetParam();
  const bool transportTakesIt = [&] {
    Socket socket(ZMQ_DEALER);
    return zmq_connect(socket.handle(), endPoint.c_str()) == 0;
  }();
  const bool channelTakesIt = [&] {
    AsyncRouterDealerChannel channel("ZEDServiceOrchAGChannel", kRoleClient);
    try {
      channel.setServerEndPoint(endPoint);
    } catch (const std::runtime_error&) {
      return false;
    }
    return true;
  }();
  EXPECT_EQ(channelTakesIt, transportTakesIt) << endPoint;
}

INSTANTIATE_TEST_SUITE_P(Texts, MalformedEndPoint,
                         testing::Values("", "tcp://", "tcp:/127.0.0.1:1", "tcp://127.0.0.1",
                                         "tcp://127.0.0.1:", "tcp://127.0.0.1:x", "tcp://a b:1",
                                         "tcp://a\n:1", "tcp://a/b:1", "tcp://127.0.0.1:*",
                                         "tcp://127.0.0.1:1", "tcp://-a:1", "tcp://.a:1",
                                         "tcp://_a:1", "tcp://[::1]:5", "tcp://:5", "tcp://h:1x",
                                         "tcp://h;g:1", "tcp://h*g:1", "tcp://h%1:5", "tcp://h]:5",
                                         "tcp://h_g:1", "tcp://::1:5", "tcp://h:1:x"));

TEST(ClientEndPoint, IllegalHost_ThrowsNamingItAndLaterSendThrows) {
  AsyncRouterDealerChannel channel("ZEDServiceOrchAGChannel", kRoleClient);
  try {
    channel.setServerEndPoint("tcp://garbage host:5000");
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "cannot connect to 'tcp://garbage host:5000': Invalid argument");
  }
  Message command(kCommand);
  EXPECT_THROW(channel.send("", &command), std::logic_error);
}

}  // namespace
}  // namespace msglyr::test
