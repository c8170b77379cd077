#include "serviceOrchAG/executors/ApplicationPackage.h"

#include <gtest/gtest.h>

namespace zan_serviceOrchAG {
namespace {

TEST(GetDeployType, UnsetOrOdd_IsUnknown) {
  sm::AppMo app;
  EXPECT_EQ(getDeployType(app), "unknown");
  app.set(sm::AppMo::kDeployType, 7);
  EXPECT_EQ(getDeployType(app), "unknown");
  app.set(sm::AppMo::kDeployType, 3);
  EXPECT_EQ(getDeployType(app), "vm");
}

}  // namespace
}  // namespace zan_serviceOrchAG
