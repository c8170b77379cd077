#include "framework/network/ElementBI.h"

#include <gtest/gtest.h>

#include "framework/base/SvcConfigParams.h"

namespace {

TEST(ElementBI, SelfId_IsTheConfiguredOne) {
  base::SvcConfigParams& params = base::SvcConfigParams::getInstance();
  ASSERT_TRUE(params.loadText("[supervisor]\nself_id = 2\nstate_dir = \"/var/lib/zedd\"\n"));
  EXPECT_EQ(network::ElementBI::getSelfId(), 2);
  params.reset();
  EXPECT_EQ(network::ElementBI::getSelfId(), 1);
}

}  // namespace
