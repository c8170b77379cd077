#include "supervisor/admin/HttpServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "supervisor/admin/AdminSocket.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/supervisor/admin/RawClient.h"

namespace supervisor::admin {
namespace {

using std::chrono::milliseconds;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::chrono::seconds kLong{30};
constexpr std::size_t kLarge = std::size_t{16} << 20U;
constexpr const char* kRequest = "GET /a HTTP/1.1\r\nHost: x\r\n\r\n";
constexpr const char* kHalfBody = "POST / HTTP/1.1\r\nContent-Length: 10\r\n\r\nx";

/// Tells the request back; "/large" is answered with more than any socket buffers.
Response answer(const Request& request) {
  if (request.target == "/large") {
    return {200, "text/plain", std::string(kLarge, 'x'), ""};
  }
  Response response{200, "text/plain", request.method + " " + request.target, ""};
  if (!request.body.empty()) {
    response.body += " " + request.contentType + " " + request.body;
  }
  if (request.method == "PUT") {
    response.status = 405;
    response.allow = "GET, POST";
  }
  return response;
}

class HttpServerFixture : public testing::Test {
 protected:
  void serve(const HttpLimits& limits = {}) {
    server_.emplace(socket_->duplicate(), limits,
                    [](const Request& request, const Reply& reply) { reply(answer(request)); });
  }
  std::string path() const { return directory_.file("admin.sock"); }
  /// The status that a new client gets: "200" or "503".
  std::string statusOfNewClient() const {
    RawClient client(path());
    client.send(kRequest);
    return client.response().substr(9, 3);
  }
  /// Whether there is a place for a new client, or comes to be one.
  bool isSoonServed() const {
    const auto deadline = std::chrono::steady_clock::now() + kLong;
    while (std::chrono::steady_clock::now() < deadline) {
      if (statusOfNewClient() == "200") {
        return true;
      }
    }
    return false;
  }

  const dme_test::TempDirectory directory_;
  std::optional<AdminSocket> socket_{directory_.path()};
  std::optional<HttpServer> server_;
};

TEST_F(HttpServerFixture, Request_IsAnsweredAndTheConnectionStays) {
  serve();
  RawClient client(path());
  for (int round = 0; round < 2; ++round) {
    client.send(kRequest);
    EXPECT_EQ(client.response(),
              "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nCache-Control: no-store\r\n"
              "Content-Length: 6\r\n\r\nGET /a");
  }
  EXPECT_FALSE(client.isClosed());
}

TEST_F(HttpServerFixture, Body_ReachesTheAnswer) {
  serve();
  RawClient client(path());
  client.send(
      "POST /b HTTP/1.1\r\nHost: x\r\nContent-Type: text/x\r\nContent-Length: 4\r\n\r\nbody");
  EXPECT_THAT(client.response(), EndsWith("\r\n\r\nPOST /b text/x body"));
  client.send(
      "POST /b HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nbo\r\n2\r\ndy\r\n0\r\n\r\n");
  EXPECT_THAT(client.response(), EndsWith("\r\n\r\nPOST /b  body"));
}

TEST_F(HttpServerFixture, Head_IsAGetWithoutItsBody) {
  serve();
  RawClient client(path());
  client.send("HEAD /a HTTP/1.1\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(client.untilClosed(),
            "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nCache-Control: no-store\r\n"
            "Content-Length: 6\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpServerFixture, AllowedMethods_AreAField) {
  serve();
  RawClient client(path());
  client.send("PUT /a HTTP/1.1\r\n\r\n");
  const std::string response = client.response();
  EXPECT_THAT(response, StartsWith("HTTP/1.1 405 Method Not Allowed\r\n"));
  EXPECT_THAT(response, HasSubstr("\r\nAllow: GET, POST\r\n"));
}

TEST_F(HttpServerFixture, Pipelined_AreAnsweredInTheirOrder) {
  serve();
  RawClient client(path());
  std::string requests;
  constexpr int kCount = 200;
  for (int i = 0; i < kCount; ++i) {
    requests += "GET /" + std::to_string(i) + " HTTP/1.1\r\n\r\n";
  }
  ASSERT_TRUE(client.send(requests));
  for (int i = 0; i < kCount; ++i) {
    ASSERT_THAT(client.response(), EndsWith("\r\n\r\nGET /" + std::to_string(i)));
  }
}

TEST_F(HttpServerFixture, ClientThatCloses_IsAnsweredFirst) {
  serve();
  RawClient client(path());
  client.send(std::string(kRequest) + "GET /b HTTP/1.0\r\n\r\n");
  client.shutdownSending();
  const std::string all = client.untilClosed();
  EXPECT_THAT(all, HasSubstr("GET /a"));
  EXPECT_THAT(all, EndsWith("GET /b"));
}

TEST_F(HttpServerFixture, NoHttp_IsRefused) {
  serve();
  for (const char* bytes :
       {"nonsense\r\n\r\n", "GET  HTTP/1.1\r\n\r\n", "GET / HTTP/9.9\r\n\r\n", "\x16\x03\x01\x02",
        "GET / HTTP/1.1\r\nbad field\r\n\r\n", "GET / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
        "GET / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
        "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"}) {
    RawClient client(path());
    client.send(bytes);
    const std::string response = client.untilClosed();
    EXPECT_THAT(response, StartsWith("HTTP/1.1 400 Bad Request\r\n")) << bytes;
    EXPECT_THAT(response, HasSubstr("application/problem+json"));
    EXPECT_THAT(response, HasSubstr("\"remedy\":\"use a client that speaks HTTP/1.1\""));
  }
}

TEST_F(HttpServerFixture, HeadTooLarge_IsRefused) {
  serve();
  RawClient client(path());
  client.send("GET / HTTP/1.1\r\nX: " + std::string(8192, 'x') + "\r\n\r\n");
  const std::string response = client.untilClosed();
  EXPECT_THAT(response, StartsWith("HTTP/1.1 431 Request Header Fields Too Large\r\n"));
  EXPECT_THAT(response, HasSubstr("\"detail\":\"more than 8192 bytes\""));
}

TEST_F(HttpServerFixture, HeadWithoutEnd_IsRefusedAtItsBound) {
  serve();
  RawClient client(path());
  client.send("GET /" + std::string(100'000, 'x'));
  EXPECT_THAT(client.untilClosed(), StartsWith("HTTP/1.1 431 "));
}

TEST_F(HttpServerFixture, BodyTooLarge_IsRefusedAndTheAnswerIsSeen) {
  serve();
  const std::string body(1'000'000, 'x');
  for (const std::string& rest :
       {"Content-Length: 1000000\r\n\r\n" + body,
        "Transfer-Encoding: chunked\r\n\r\nF4240\r\n" + body + "\r\n0\r\n\r\n"}) {
    RawClient client(path());
    EXPECT_TRUE(client.send("POST / HTTP/1.1\r\n" + rest)) << "the server hung up too early";
    client.shutdownSending();
    const std::string response = client.untilClosed();
    EXPECT_THAT(response, StartsWith("HTTP/1.1 413 Payload Too Large\r\n"));
    EXPECT_THAT(response, HasSubstr("\"detail\":\"more than 65536 bytes\""));
  }
}

TEST_F(HttpServerFixture, SlowClient_KeepsNobodyWaiting) {
  serve();
  RawClient slow(path());
  slow.send("GET /slo");
  RawClient slowBody(path());
  slowBody.send(kHalfBody);
  RawClient slowReader(path());
  slowReader.send("GET /large HTTP/1.1\r\n\r\n");
  EXPECT_EQ(statusOfNewClient(), "200");
  slow.send("w HTTP/1.1\r\n\r\n");
  EXPECT_THAT(slow.response(), EndsWith("GET /slow"));
  EXPECT_THAT(slowReader.response(), EndsWith(std::string(1000, 'x')));
}

TEST_F(HttpServerFixture, RequestThatDripsIn_IsCutOff) {
  HttpLimits limits;
  limits.requestWithin = milliseconds(200);
  serve(limits);
  RawClient client(path());
  constexpr int kTooMany = 3000;  // bytes, one each 10 ms
  int sent = 0;
  while (sent < kTooMany && client.send("G") && !client.isClosed(10)) {
    ++sent;
  }
  EXPECT_LT(sent, kTooMany);
  EXPECT_EQ(statusOfNewClient(), "200");
}

TEST_F(HttpServerFixture, IdleConnection_IsClosed) {
  HttpLimits limits;
  limits.requestWithin = milliseconds(200);
  serve(limits);
  RawClient fresh(path());
  RawClient used(path());
  used.send(kRequest);
  EXPECT_THAT(used.response(), EndsWith("GET /a"));
  EXPECT_EQ(fresh.untilClosed(), "");
  EXPECT_EQ(used.untilClosed(), "");
}

TEST_F(HttpServerFixture, ResponseThatNobodyReads_GivesItsPlaceBack) {
  HttpLimits limits;
  limits.maxConnections = 1;
  limits.responseWithin = milliseconds(200);
  serve(limits);
  RawClient client(path());
  client.send("GET /large HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(isSoonServed());
  EXPECT_LT(client.untilClosed().size(), kLarge);
}

TEST_F(HttpServerFixture, HalfRequests_KeepNobodyOut) {
  HttpLimits limits;
  limits.requestWithin = kLong;
  for (const char* half : {"", "GET /a HTTP/1.1\r\nHos", kHalfBody}) {
    serve(limits);
    std::vector<std::unique_ptr<RawClient>> stuck;
    for (std::size_t i = 0; i < limits.maxConnections; ++i) {
      stuck.push_back(std::make_unique<RawClient>(path()));
      stuck.back()->send(half);
    }
    EXPECT_EQ(statusOfNewClient(), "200") << half;
    EXPECT_EQ(stuck.front()->untilClosed(), "") << half;
    EXPECT_FALSE(stuck.at(1)->isClosed()) << half;
  }
}

TEST_F(HttpServerFixture, NewConnection_TakesThePlaceOfTheOneThatIsIdleForLongest) {
  HttpLimits limits;
  limits.maxConnections = 3;
  limits.requestWithin = kLong;
  serve(limits);
  RawClient busy(path());
  const auto ask = [](RawClient& client) {
    client.send(kRequest);
    EXPECT_THAT(client.response(), EndsWith("GET /a"));
  };
  ask(busy);
  RawClient half(path());
  half.send("GET /ha");
  RawClient idle(path());
  ask(idle);
  ask(busy);  // so that it is the last one to have been served
  RawClient fourth(path());
  ask(fourth);
  EXPECT_EQ(half.untilClosed(), "");
  RawClient fifth(path());
  ask(fifth);
  EXPECT_EQ(idle.untilClosed(), "");
  ask(busy);
  ask(fourth);
  ask(fifth);
}

TEST_F(HttpServerFixture, RefusedClientThatDoesNotHangUp_GivesItsPlaceToANewOne) {
  HttpLimits limits;
  limits.maxConnections = 1;
  serve(limits);
  RawClient refused(path());
  refused.send("nonsense\r\n\r\n");
  EXPECT_THAT(refused.response(), StartsWith("HTTP/1.1 400 "));
  EXPECT_TRUE(isSoonServed());
  EXPECT_TRUE(refused.isClosed(1'000));
}

TEST_F(HttpServerFixture, Gone_DropsItsClients) {
  serve();
  RawClient idle(path());
  idle.send(kRequest);
  EXPECT_THAT(idle.response(), EndsWith("GET /a"));
  RawClient reading(path());
  reading.send("GET /large HTTP/1.1\r\n\r\n");
  server_.reset();
  socket_.reset();  // for those that were not even accepted
  EXPECT_EQ(idle.untilClosed(), "");
  EXPECT_LT(reading.untilClosed().size(), kLarge);
}

}  // namespace
}  // namespace supervisor::admin
