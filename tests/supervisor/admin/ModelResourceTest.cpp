#include "supervisor/admin/ModelResource.h"

#include <gtest/gtest.h>

#include "tests/supervisor/admin/AdminFixture.h"

namespace supervisor::admin {
namespace {

class ModelResource : public AdminFixture {
 protected:
  Response ask(std::map<std::string, std::string> query) {
    return getModel(context_, {"GET", "/api/v1/model", {}, std::move(query), "", ""});
  }
};

TEST_F(ModelResource, NoName_IsTheWholeTree) {
  engine_.models_[""] = {{"sys", "system", {}}};
  const Response response = ask({});
  EXPECT_EQ(response.status, 200u);
  EXPECT_EQ(response.contentType, "application/json");
  EXPECT_EQ(response.body,
            "{\"objects\":[\n{\"dn\":\"sys\",\"class\":\"system\",\"properties\":{}}\n]}\n");
}

TEST_F(ModelResource, Name_IsThatPartOfTheTree) {
  engine_.models_["sys/a"] = {{"sys/a", "slot", {{"hasToken", true}}}};
  EXPECT_EQ(ask({{"dn", "sys/a"}}).body,
            "{\"objects\":[\n"
            "{\"dn\":\"sys/a\",\"class\":\"slot\",\"properties\":{\"hasToken\":true}}\n]}\n");
}

TEST_F(ModelResource, UnknownName_IsAProblem) {
  const Response response = ask({{"dn", "sys/b"}});
  EXPECT_EQ(response.status, 404u);
  EXPECT_EQ(response.body,
            "{\"type\":\"/problems/unknown-object\",\"title\":\"There is no object of this name\","
            "\"status\":404,\"detail\":\"no object is named 'sys/b'\",\"remedy\":\"read the whole "
            "tree to see the names, e.g. sys/chassis-1/slot-3\"}\n");
}

}  // namespace
}  // namespace supervisor::admin
