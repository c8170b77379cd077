#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "supervisor/admin/AdminInterface.h"
#include "supervisor/admin/Json.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/supervisor/admin/FullApp.h"
#include "tests/supervisor/admin/RawClient.h"

// The interface before a real engine, over real sockets.

namespace supervisor::admin {
namespace {

constexpr const char* kChassis =
    "[chassis]\nserial = \"C1\"\nmodel = \"c\"\n"
    "[[slot]]\nnumber = 3\nserial = \"B3\"\nmodel = \"b\"\n"
    "[[slot]]\nnumber = 4\nserial = \"B4\"\nmodel = \"b\"\n";
constexpr const char* kLeast = R"({"id":"fw","slot":3,"app":{"packageFile":"/p/fw-1.2.pkg"}})";

struct Answer {
  int status = 0;
  std::string head;
  Json body;

  std::string type() const { return body.value("type", ""); }
};

class AdminEngine : public testing::Test {
 protected:
  AdminEngine() {
    dme_test::writeBytes(directory_.file("chassis.toml"), kChassis);
    start();
  }
  ~AdminEngine() override { stop(); }

  void start() {
    auto engine = dme::Engine::open(
        {state_, directory_.file("chassis.toml"), "inproc://admin-engine-test", {}});
    ASSERT_TRUE(engine) << engine.error().text;
    engine_ = std::move(*engine);
    const auto started = engine_->start();
    ASSERT_TRUE(started) << started.error().text;
    interface_ = std::make_unique<AdminInterface>(state_, "1.2.3", "inproc://x", engine_.get());
  }
  void stop() {
    interface_.reset();
    engine_->stop();
    engine_.reset();
  }

  std::string path() const { return state_ + "/admin.sock"; }
  static void send(RawClient& client, const std::string& method, const std::string& target,
                   const std::string& body = "") {
    client.send(method + " /api/v1" + target +
                " HTTP/1.1\r\nContent-Type: application/json\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
  }
  static Answer receive(RawClient& client) {
    const std::string text = client.untilClosed();
    const std::size_t end = text.find("\r\n\r\n");
    if (text.size() < 12 || end == std::string::npos) {
      ADD_FAILURE() << "no answer: " << text;
      return {};
    }
    const std::string body = text.substr(end + 4);
    return {std::stoi(text.substr(9, 3)), text.substr(0, end),
            body.empty() ? Json() : Json::parse(body, nullptr, false)};
  }
  Answer ask(const std::string& method, const std::string& target,
             const std::string& body = "") const {
    RawClient client(path());
    send(client, method, target, body);
    return receive(client);
  }
  /// The number of the job that the order made.
  std::uint64_t order(const std::string& target, const std::string& body = "") const {
    const Answer answer = ask("POST", target, body);
    EXPECT_EQ(answer.status, 202) << answer.body;
    return answer.body.value("id", std::uint64_t{0});
  }

  const dme_test::TempDirectory directory_;
  const std::string state_ = directory_.file("state");
  std::unique_ptr<dme::Engine> engine_;
  std::unique_ptr<AdminInterface> interface_;
};

TEST_F(AdminEngine, Instance_IsMadeShownAndForgotten) {
  const Answer made = ask("POST", "/apps", kLeast);
  EXPECT_EQ(made.status, 201) << made.body;
  EXPECT_NE(made.head.find("\r\nLocation: /api/v1/apps/fw"), std::string::npos) << made.head;
  EXPECT_EQ(made.body["phase"], "absent");
  EXPECT_EQ(ask("POST", "/apps", kLeast).type(), "/problems/already-there");
  const Answer shown = ask("GET", "/apps/fw");
  EXPECT_EQ(shown.body["packageFile"], "/p/fw-1.2.pkg");
  EXPECT_EQ(shown.body["parts"]["resource"]["reqCpuCores"], 1);
  EXPECT_EQ(shown.body["parts"]["ldu"]["links"].at(0)["portName"], "mgmt0");
  EXPECT_EQ(shown.body["believed"]["dn"], "sys/chassis-1/slot-3/app-fw");
  EXPECT_TRUE(shown.body["reported"].is_null());
  EXPECT_EQ(ask("GET", "/apps?slot=3").body["apps"].size(), 1u);
  EXPECT_EQ(ask("GET", "/apps?slot=4").body["apps"].size(), 0u);
  EXPECT_EQ(ask("DELETE", "/apps/fw?dryRun=true").body["wouldDelete"]["id"], "fw");
  const Answer gone = ask("DELETE", "/apps/fw");
  EXPECT_EQ(gone.status, 204);
  EXPECT_TRUE(gone.body.is_null());
  EXPECT_EQ(ask("DELETE", "/apps/fw").type(), "/problems/unknown-app");
}

TEST_F(AdminEngine, Parts_MakeTheSameInstanceAgain) {
  ASSERT_EQ(ask("POST", "/apps", kFullApp).status, 201);
  Json parts = ask("GET", "/apps/fw.1_a:b-2").body["parts"];
  EXPECT_EQ(parts.dump(), Json::parse(kFullApp).dump());
  parts["id"] = "copy";
  parts["slot"] = 4;
  ASSERT_EQ(ask("POST", "/apps", parts.dump()).status, 201);
  EXPECT_EQ(ask("GET", "/apps/copy").body["parts"].dump(), parts.dump());
}

TEST_F(AdminEngine, DescriptionThatCannotBe_IsNamed) {
  const struct {
    const char* pointer;
    Json value;
    const char* type;
    const char* field;
  } rows[] = {
      {"/slot", 5, "unknown-slot", ""},
      {"/id", "a/b", "bad-value", "id"},
      {"/id", std::string(129, 'a'), "bad-value", "id"},
      {"/ldu/links/0/vlan", 4095, "bad-value", "ldu.links[0].vlan"},
      {"/ldu/links/1/bladeVnic1", "3:1", "bad-value", "ldu.links[1].bladeVnic1"},
      {"/ldu/links/1/portName", "Management0", "bad-value", "ldu.links[1]"},
      {"/ldu/links/1/portName", "", "bad-value", "ldu.links[1].portName"},
      {"/mgmtBootstrap/ipv6/prefixLength", 129, "bad-value", "mgmtBootstrap.ipv6.prefixLength"},
      {"/app/installTimeout", 604801, "bad-value", "app.installTimeout"},
      {"/netMgmtBootstraps/1/key", "dns", "bad-value", "netMgmtBootstraps[1]"},
  };
  for (const auto& row : rows) {
    Json json = Json::parse(kFullApp);
    json[Json::json_pointer(row.pointer)] = row.value;
    const Answer answer = ask("POST", "/apps", json.dump());
    EXPECT_EQ(answer.type(), std::string("/problems/") + row.type) << row.pointer << answer.body;
    EXPECT_EQ(answer.body.value("field", ""), row.field) << row.pointer;
  }
  EXPECT_EQ(ask("GET", "/apps").body["apps"].size(), 0u);
}

TEST_F(AdminEngine, Order_IsAJobThatCanBeWaitedForAndCancelled) {
  ASSERT_EQ(ask("POST", "/apps", kLeast).status, 201);
  const Answer would = ask("POST", "/apps/fw/install?dryRun=true");
  EXPECT_EQ(would.status, 200);
  EXPECT_EQ(would.body["would"]["id"], 0);
  EXPECT_EQ(ask("GET", "/jobs").body["jobs"].size(), 0u);
  const std::uint64_t id = order("/apps/fw/install", R"({"deliverWithinMs":600000})");
  const std::string job = "/jobs/" + std::to_string(id);
  EXPECT_EQ(ask("GET", job).body["state"], "accepted");
  const Answer inTheWay = ask("POST", "/apps/fw/install");
  EXPECT_EQ(inTheWay.type(), "/problems/job-in-the-way");
  EXPECT_EQ(inTheWay.body["job"], id);
  EXPECT_EQ(ask("GET", "/apps/fw").body["job"], id);
  RawClient waiting(path());
  send(waiting, "GET", job + "?waitMs=60000");
  EXPECT_FALSE(waiting.isClosed(50));
  EXPECT_EQ(ask("POST", job + "/cancel").body["reason"], "cancelled");
  const Answer end = receive(waiting);
  EXPECT_EQ(end.status, 200);
  EXPECT_EQ(end.body["state"], "failed");
  EXPECT_EQ(ask("POST", job + "/cancel").type(), "/problems/wrong-state");
  EXPECT_EQ(ask("GET", "/jobs?state=failed&app=fw").body["jobs"].at(0)["id"], id);
  EXPECT_EQ(ask("GET", "/jobs?state=accepted").body["jobs"].size(), 0u);
}

TEST_F(AdminEngine, SlotVerbs_AreTaken) {
  EXPECT_EQ(ask("POST", "/slots/5/format").type(), "/problems/unknown-slot");
  const Answer level = ask("POST", "/slots/3/log-level", R"({"level":"loud"})");
  EXPECT_EQ(level.type(), "/problems/bad-value");
  EXPECT_EQ(level.body["field"], "level");
  const std::uint64_t id = order("/slots/3/log-level", R"({"level":"debug"})");
  EXPECT_EQ(ask("GET", "/jobs/" + std::to_string(id)).body["argument"], "debug");
  order("/slots/4/clear-logs");
  EXPECT_EQ(ask("GET", "/health").body["jobs"].dump(), R"({"open":2,"unknown":0})");
}

TEST_F(AdminEngine, TimeZone_IsStored) {
  EXPECT_EQ(ask("GET", "/timezone").body.dump(), R"({"timezone":"UTC","posix":"UTC0"})");
  const Answer refused = ask("PUT", "/timezone", R"({"timezone":"Nowhere/Land"})");
  EXPECT_EQ(refused.type(), "/problems/bad-value") << refused.body;
  const Answer set = ask("PUT", "/timezone", R"({"timezone":"Asia/Kolkata"})");
  EXPECT_EQ(set.status, 202);
  EXPECT_EQ(set.body.dump(), R"({"timezone":"Asia/Kolkata","jobs":[]})");
  EXPECT_EQ(ask("GET", "/timezone").body["posix"], "IST-5:30");
}

TEST_F(AdminEngine, Restart_KeepsWhatWasAnswered) {
  ASSERT_EQ(ask("POST", "/apps", kLeast).status, 201);
  const std::uint64_t id = order("/apps/fw/install");
  ask("PUT", "/timezone", R"({"timezone":"Asia/Kolkata"})");
  const std::uint64_t revision =
      ask("GET", "/jobs/" + std::to_string(id)).body.value("revision", std::uint64_t{0});
  stop();
  start();
  const Answer job = ask("GET", "/jobs/" + std::to_string(id));
  EXPECT_EQ(job.body["state"], "accepted");
  EXPECT_GE(job.body.value("revision", std::uint64_t{0}), revision);
  EXPECT_EQ(ask("GET", "/apps/fw").body["job"], id);
  EXPECT_EQ(ask("GET", "/timezone").body["timezone"], "Asia/Kolkata");
}

TEST_F(AdminEngine, EndAmidWaits_IsPrompt) {
  ASSERT_EQ(ask("POST", "/apps", kLeast).status, 201);
  const std::string job = "/jobs/" + std::to_string(order("/apps/fw/install"));
  std::vector<std::unique_ptr<RawClient>> clients;
  for (int i = 0; i < 8; ++i) {
    clients.push_back(std::make_unique<RawClient>(path()));
    send(*clients.back(), "GET", job + "?waitMs=60000");
  }
  EXPECT_FALSE(clients.back()->isClosed(50));
  const auto begin = std::chrono::steady_clock::now();
  stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  for (const auto& client : clients) {
    EXPECT_EQ(client->untilClosed(), "");
  }
  start();
}

}  // namespace
}  // namespace supervisor::admin
