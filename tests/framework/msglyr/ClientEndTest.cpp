#include "framework/msglyr/ClientEnd.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <future>
#include <stdexcept>
#include <thread>

#include "framework/msglyr/Counters.h"
#include "framework/msglyr/FileDescriptor.h"
#include "tests/framework/msglyr/TestPeer.h"
#include "tests/framework/msglyr/VacantEndPoint.h"

// What a channel's connecting side forgets, when it gives up, and what its waiting costs.

namespace msglyr::test {
namespace {

using Clock = ClientEnd::Clock;
using std::chrono::milliseconds;

class ClientEndTest : public testing::Test {
 protected:
  ClientEndTest() { end_.connect(blade_.endPoint()); }

  int send(const std::string& text) { return end_.send(Message(Parts{text})); }
  /// What receive returns, and how long it took.
  std::pair<int, milliseconds> receive(milliseconds timeout) {
    const auto begin = Clock::now();
    const int count = end_.receive(reply_, timeout);
    return {count, std::chrono::duration_cast<milliseconds>(Clock::now() - begin)};
  }
  /// Sends a request that the peer answers so, and returns what receive returns. Notes the routing
  /// frame.
  int exchange(TestPeer& peer, const std::string& text, Parts answer) {
    EXPECT_EQ(send(text), 1);
    std::thread answering([&] {
      const auto request = peer.receive();
      ASSERT_TRUE(request.has_value());
      EXPECT_EQ(request->back(), text);
      routing_ = request->front();
      answer.insert(answer.begin(), routing_);
      peer.send(answer);
    });
    const int count = end_.receive(reply_, kPatience);
    answering.join();
    return count;
  }
  static void expectNothing(TestPeer& peer) {
    EXPECT_EQ(peer.receive(milliseconds(100)), std::nullopt);
  }

  TestPeer blade_ = TestPeer::listening();
  ClientEnd end_;
  Message reply_;
  std::string routing_;
};

// ----- The server ---------------------------------------------------------------------------

TEST(ClientEndWithoutServer, NeitherSendsNorReceives) {
  ClientEnd end;
  Message message(1);
  EXPECT_THROW(end.send(message), std::logic_error);
  EXPECT_THROW(end.receive(message, milliseconds(0)), std::logic_error);
}

TEST_F(ClientEndTest, MalformedEndPoint_LeavesItWithoutAServer) {
  EXPECT_THROW(end_.connect("tcp://garbage host:1"), TransportError);
  EXPECT_EQ(end_.endPoint(), "");
  EXPECT_THROW(send("request"), std::logic_error);
}

TEST_F(ClientEndTest, NewServer_GetsTheNextRequestAndNoneOfTheFormers) {
  ASSERT_EQ(exchange(blade_, "first", {"answer"}), 1);
  TestPeer other = TestPeer::listening();
  ASSERT_EQ(send("for the former"), 1);
  std::this_thread::sleep_for(milliseconds(150));
  end_.connect(other.endPoint());
  const auto [count, took] = receive(milliseconds(300));
  EXPECT_EQ(count, 0);
  EXPECT_GE(took, milliseconds(290)) << "counted from a request that is forgotten";
  expectNothing(blade_);
  expectNothing(other);
  EXPECT_EQ(exchange(other, "second", {"answer"}), 1);
}

// ----- Requests that were given up ------------------------------------------------------------

TEST(ClientEndAlone, GivenUp_IsNotSentByALaterReceive) {
  const std::string endPoint = vacantEndPoint();
  ClientEnd end;
  end.connect(endPoint);
  end.send(Message(Parts{"given up"}));
  Message reply;
  ASSERT_EQ(end.receive(reply, milliseconds(100)), 0);
  TestPeer blade = TestPeer::listening(endPoint);
  EXPECT_EQ(end.receive(reply, milliseconds(300)), 0);
  EXPECT_EQ(blade.receive(milliseconds(0)), std::nullopt);
}

TEST_F(ClientEndTest, OutOfDescriptors_ThrowsAndForgetsTheRequest) {
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  const rlimit none{3, usual.rlim_max};
  ASSERT_EQ(send("given up"), 1);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THROW(end_.receive(reply_, milliseconds(300)), TransportError);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
  EXPECT_EQ(receive(milliseconds(300)).first, 0);
  expectNothing(blade_);
  EXPECT_EQ(exchange(blade_, "next", {"answer"}), 1);
}

TEST_F(ClientEndTest, RefusedAnswer_IsCountedAndCostsItsConnection) {
  const struct {
    Parts answer;
    std::uint64_t parts;
    std::uint64_t bytes;
  } rows[] = {{Parts(17, "x"), 1, 0}, {Parts(2, std::string(600 * 1024, 'x')), 0, 1}};
  for (const auto& row : rows) {
    const Counters before = counters();
    EXPECT_EQ(exchange(blade_, "request", row.answer), -1);
    EXPECT_EQ(counters().refusedParts - before.refusedParts, row.parts);
    EXPECT_EQ(counters().refusedBytes - before.refusedBytes, row.bytes);
    const std::string former = routing_;
    EXPECT_EQ(exchange(blade_, "next", {"answer"}), 1);
    EXPECT_NE(routing_, former);
  }
}

// ----- Time -----------------------------------------------------------------------------------

TEST_F(ClientEndTest, SecondReceive_CountsFromNow) {
  ASSERT_EQ(exchange(blade_, "request", {"answer"}), 1);
  std::this_thread::sleep_for(milliseconds(150));
  const auto [count, took] = receive(milliseconds(200));
  EXPECT_EQ(count, 0);
  EXPECT_GE(took, milliseconds(190));
}

TEST(ClientEndAlone, NobodyThere_GivesUpWhereTheLastMomentsBegin) {
  ClientEnd end;
  end.connect(vacantEndPoint());
  const auto begin = Clock::now();
  end.send(Message(Parts{"request"}));
  Message reply;
  EXPECT_EQ(end.receive(reply, milliseconds(2500)), 0);
  EXPECT_GE(Clock::now() - begin, milliseconds(1490));
  EXPECT_LE(Clock::now() - begin, milliseconds(2450));
}

// A request's time to go out grows shorter, and a connection is made for each; but not for each
// moment that passes.
TEST(ClientEndAlone, ServerThatSaysNothing_IsDialledAFewTimes) {
  const FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0),
                                "socket");
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  ASSERT_EQ(::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(::listen(listener.get(), SOMAXCONN), 0);
  ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);
  ClientEnd end;
  end.connect("tcp://127.0.0.1:" + std::to_string(ntohs(address.sin_port)));
  end.send(Message(Parts{"request"}));
  Message reply;
  EXPECT_EQ(end.receive(reply, milliseconds(1000)), 0);
  int connections = 0;
  for (int accepted = 0; (accepted = ::accept(listener.get(), nullptr, nullptr)) >= 0;) {
    ::close(accepted);
    ++connections;
  }
  EXPECT_GE(connections, 1);
  EXPECT_LE(connections, 10);
}

milliseconds processorTime() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) +
         std::chrono::duration_cast<milliseconds>(std::chrono::nanoseconds(time.tv_nsec));
}

TEST_F(ClientEndTest, Waiting_CostsNoProcessorTime) {
  constexpr milliseconds kWait{1000};
  constexpr milliseconds kLittle = kWait / 20;
  const milliseconds before = processorTime();
  ASSERT_EQ(send("for an answer"), 1);
  EXPECT_EQ(receive(kWait).first, 0);
  EXPECT_LT(processorTime() - before, kLittle);
  end_.connect(vacantEndPoint());
  ASSERT_EQ(send("for a connection"), 1);
  EXPECT_EQ(receive(kWait).first, 0);
  EXPECT_LT(processorTime() - before, kLittle);
}

TEST_F(ClientEndTest, Interrupted_WaitsOn) {
  struct sigaction before {};
  struct sigaction nothing {};
  nothing.sa_handler = [](int) {
  };
  ASSERT_EQ(::sigaction(SIGUSR1, &nothing, &before), 0);
  const pthread_t receiver = ::pthread_self();
  std::atomic<bool> isOver = false;
  std::thread signals([&] {
    while (!isOver) {
      ::pthread_kill(receiver, SIGUSR1);
      std::this_thread::sleep_for(milliseconds(10));
    }
  });
  ASSERT_EQ(send("request"), 1);
  const auto [count, took] = receive(milliseconds(300));
  isOver = true;
  signals.join();
  ASSERT_EQ(::sigaction(SIGUSR1, &before, nullptr), 0);
  EXPECT_EQ(count, 0);
  EXPECT_GE(took, milliseconds(290));
}

}  // namespace
}  // namespace msglyr::test
