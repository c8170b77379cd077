#include "supervisor/admin/AdminInterface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "supervisor/admin/AdminClient.h"
#include "supervisor/admin/Json.h"
#include "tests/dme/support/TempDirectory.h"

namespace supervisor::admin {
namespace {

constexpr std::chrono::seconds kLong{30};

ClientResponse ask(const std::string& stateDir, const std::string& target) {
  const auto response = get(stateDir, target, kLong);
  EXPECT_TRUE(response) << response.error();
  return response.value_or(ClientResponse{});
}

TEST(AdminInterface, EveryResource_IsServedFromTheEngine) {
  const dme_test::TempDirectory directory;
  const auto engine = dme::Engine::open({directory.file("state"), "", "inproc://unused", {}});
  ASSERT_TRUE(engine) << engine.error().text;
  AdminInterface interface(directory.file("state"), "1.2.3", "inproc://unused", engine->get());
  const std::string state = directory.file("state");
  EXPECT_EQ(ask(state, "/api/v1/health").status, 503u);
  interface.setReady();
  EXPECT_EQ(ask(state, "/api/v1/health").status, 200u);
  EXPECT_EQ(Json::parse(ask(state, "/api/v1/chassis").body)["epoch"], 1);
  EXPECT_EQ(ask(state, "/api/v1/slots").body, "{\"slots\":[]}\n");
  EXPECT_EQ(ask(state, "/api/v1/slots/1").status, 404u);
  const Json model = Json::parse(ask(state, "/api/v1/model?dn=sys").body);
  EXPECT_EQ(model["objects"].at(1)["dn"], "sys/chassis-1");
  EXPECT_EQ(ask(state, "/api/v1/nothing").status, 404u);
}

TEST(AdminInterface, EngineElsewhere_OnlyHealthIsServed) {
  const dme_test::TempDirectory directory;
  const AdminInterface interface(directory.path(), "1.2.3", "ipc:///run/dme", nullptr);
  EXPECT_EQ(Json::parse(ask(directory.path(), "/api/v1/health").body)["engine"], "ipc:///run/dme");
  for (const char* path : {"chassis", "model", "slots", "slots/1"}) {
    EXPECT_EQ(ask(directory.path(), std::string("/api/v1/") + path).status, 503u) << path;
  }
}

}  // namespace
}  // namespace supervisor::admin
