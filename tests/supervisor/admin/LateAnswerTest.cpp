#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "supervisor/admin/AdminSocket.h"
#include "supervisor/admin/HttpServer.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/supervisor/admin/RawClient.h"

// Answers that come after the handler has returned, over real sockets.

namespace supervisor::admin {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr seconds kLong{30};

/// Requests that wait for their answer, with what became of them.
class Waiting {
 public:
  void add(const Reply& reply) {
    reply.whenOver([this] {
      const std::lock_guard guard(mutex_);
      ++over_;
      changed_.notify_all();
    });
    const std::lock_guard guard(mutex_);
    replies_.push_back(reply);
    changed_.notify_all();
  }
  /// The replies once there are so many; fewer when that takes too long.
  std::vector<Reply> take(std::size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, kLong, [&] { return replies_.size() >= count; }));
    return std::exchange(replies_, {});
  }
  bool areOver(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kLong, [&] { return over_ >= count; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Reply> replies_;
  int over_ = 0;
};

class LateAnswer : public testing::Test {
 protected:
  void serve(const HttpLimits& limits = {}) {
    server_.emplace(socket_.duplicate(), limits,
                    [this](const Request& request, const Reply& reply) {
                      if (request.target == "/now") {
                        reply({200, "text/plain", "now", ""});
                        return;
                      }
                      if (request.target == "/patient") {
                        reply.within(milliseconds(30), [] {
                          return Response{200, "text/plain", "patient", ""};
                        });
                      }
                      waiting_.add(reply);
                    });
  }
  std::string path() const { return directory_.file("admin.sock"); }
  static std::string get(const std::string& target) {
    return "GET " + target + " HTTP/1.1\r\n\r\n";
  }

  Waiting waiting_;
  const dme_test::TempDirectory directory_;
  const AdminSocket socket_{directory_.path()};
  std::optional<HttpServer> server_;
};

TEST_F(LateAnswer, FromAnotherThread_ReachesItsClient) {
  serve();
  RawClient client(path());
  for (int round = 0; round < 3; ++round) {
    client.send(get("/late"));
    const std::vector<Reply> replies = waiting_.take(1);
    std::thread([&] { replies.at(0)({200, "text/plain", "late", ""}); }).join();
    EXPECT_THAT(client.response(), EndsWith("\r\n\r\nlate"));
    EXPECT_TRUE(waiting_.areOver(round + 1));
  }
}

TEST_F(LateAnswer, OthersAreServedMeanwhile) {
  serve();
  RawClient slow(path());
  slow.send(get("/late"));
  const std::vector<Reply> replies = waiting_.take(1);
  RawClient quick(path());
  quick.send(get("/now"));
  EXPECT_THAT(quick.response(), EndsWith("now"));
  EXPECT_FALSE(slow.isClosed());
}

TEST_F(LateAnswer, Pipelined_KeepTheirOrder) {
  serve();
  RawClient client(path());
  client.send(get("/late") + get("/now") + get("/late"));
  waiting_.take(1).at(0)({200, "text/plain", "first", ""});
  EXPECT_THAT(client.response(), EndsWith("first"));
  EXPECT_THAT(client.response(), EndsWith("now"));
  waiting_.take(1).at(0)({200, "text/plain", "third", ""});
  EXPECT_THAT(client.response(), EndsWith("third"));
}

TEST_F(LateAnswer, ManyThreads_TheFirstAnswerCounts) {
  serve();
  constexpr int kThreads = 8;
  RawClient client(path());
  for (int round = 0; round < 50; ++round) {
    client.send(get("/late"));
    const Reply reply = waiting_.take(1).at(0);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([reply] { reply({200, "text/plain", "one of them", ""}); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_THAT(client.response(), EndsWith("one of them"));
  }
}

TEST_F(LateAnswer, NoContent_HasNeitherBodyNorLength) {
  serve();
  RawClient client(path());
  client.send(get("/late") + "GET /now HTTP/1.0\r\n\r\n");
  waiting_.take(1).at(0)({204, "", "", ""});
  EXPECT_THAT(client.untilClosed(),
              StartsWith("HTTP/1.1 204 No Content\r\nCache-Control: no-store\r\n\r\n"
                         "HTTP/1.1 200 OK\r\n"));
}

TEST_F(LateAnswer, MadeSomething_SaysWhere) {
  serve();
  RawClient client(path());
  client.send(get("/late"));
  Response response{201, "text/plain", "made", ""};
  response.location = "/api/v1/apps/a";
  waiting_.take(1).at(0)(response);
  EXPECT_THAT(client.response(), HasSubstr("\r\nLocation: /api/v1/apps/a\r\n"));
}

TEST_F(LateAnswer, ClientGone_IsNoticed) {
  serve();
  auto client = std::make_optional<RawClient>(directory_.file("admin.sock"));
  client->send(get("/late") + "GET /rest");
  const std::vector<Reply> replies = waiting_.take(1);
  client.reset();
  EXPECT_TRUE(waiting_.areOver(1));
  replies.at(0)({200, "text/plain", "to nobody", ""});
}

TEST_F(LateAnswer, ClientThatOnlyStopsSending_IsAnswered) {
  serve();
  RawClient client(path());
  client.send(get("/late"));
  client.shutdownSending();
  waiting_.take(1).at(0)({200, "text/plain", "late", ""});
  EXPECT_THAT(client.untilClosed(), EndsWith("late"));
}

TEST_F(LateAnswer, NeverAnswered_IsAProblemAfterTheBound) {
  HttpLimits limits;
  limits.answerWithin = milliseconds(30);
  serve(limits);
  RawClient client(path());
  client.send(get("/late"));
  const std::string response = client.response();
  EXPECT_THAT(response, StartsWith("HTTP/1.1 504 Gateway Timeout\r\n"));
  EXPECT_THAT(response, HasSubstr("/problems/no-answer"));
  EXPECT_TRUE(waiting_.areOver(1));
  client.send(get("/now"));
  EXPECT_THAT(client.response(), EndsWith("now"));
}

TEST_F(LateAnswer, HandlersOwnTime_GoesBeforeTheBound) {
  HttpLimits limits;
  limits.answerWithin = kLong;
  serve(limits);
  RawClient client(path());
  client.send(get("/patient"));
  EXPECT_THAT(client.response(), EndsWith("patient"));
}

TEST_F(LateAnswer, AllConnectionsInService_NewOnesAreRefusedUntilOneIsIdle) {
  const HttpLimits limits;
  serve(limits);
  std::vector<std::unique_ptr<RawClient>> clients;
  std::vector<Reply> replies;
  for (std::size_t i = 0; i < limits.maxConnections; ++i) {
    clients.push_back(std::make_unique<RawClient>(path()));
    clients.back()->send(get("/late"));
    replies.push_back(waiting_.take(1).at(0));
  }
  const std::string refusal = RawClient(path()).untilClosed();
  EXPECT_THAT(refusal, StartsWith("HTTP/1.1 503 Service Unavailable\r\n"));
  EXPECT_THAT(refusal, HasSubstr("\r\nRetry-After: 1\r\n"));
  EXPECT_THAT(refusal, HasSubstr("/problems/too-many-connections"));
  EXPECT_THAT(refusal,
              HasSubstr("\"detail\":\"all of 128 connections have a request in service\""));

  replies.back()({200, "text/plain", "late", ""});
  EXPECT_THAT(clients.back()->response(), EndsWith("late"));
  std::string response;
  for (const auto end = std::chrono::steady_clock::now() + kLong;
       !response.ends_with("now") && std::chrono::steady_clock::now() < end;) {
    RawClient quick(path());
    quick.send(get("/now"));
    response = quick.response();
  }
  EXPECT_THAT(response, EndsWith("now"));
  EXPECT_EQ(clients.back()->untilClosed(), "");
  clients.pop_back();
  for (const auto& client : clients) {
    EXPECT_FALSE(client->isClosed());
  }
}

TEST_F(LateAnswer, ServerEnds_WaitsEndPromptlyAndLateAnswersDoNoHarm) {
  serve();
  std::vector<std::unique_ptr<RawClient>> clients;
  constexpr int kClients = 8;
  for (int i = 0; i < kClients; ++i) {
    clients.push_back(std::make_unique<RawClient>(directory_.file("admin.sock")));
    clients.back()->send(get("/late"));
  }
  const std::vector<Reply> replies = waiting_.take(kClients);
  const auto begin = std::chrono::steady_clock::now();
  std::thread answering([&] {
    for (const Reply& reply : replies) {
      reply.post([] {});
      reply({200, "text/plain", "late", ""});
    }
  });
  server_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, seconds(5));
  answering.join();
  EXPECT_TRUE(waiting_.areOver(kClients));
  replies.at(0)({200, "text/plain", "again", ""});
  replies.at(0).post([] { FAIL() << "a step after the end"; });
}

}  // namespace
}  // namespace supervisor::admin
