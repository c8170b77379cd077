#include "framework/proc/QueueDeduplicatorImpl.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "framework/proc/Stimulus.h"
#include "framework/proc/Svc.h"

namespace {

using proc::InboundItem;
using proc::QueueDeduplicatorImpl;
using proc::Stimulus;

class QueueDeduplicatorImplTest : public testing::Test {
 protected:
  std::unique_ptr<InboundItem> item(std::uint32_t classId, std::uint32_t type,
                                    const std::string& cookie) {
    Stimulus stimulus(classId, type, 0, 0, Stimulus::Priority::kDefault, 0, 0);
    stimulus.setCookie(base::Buffer(cookie.data(), cookie.size()));
    base::OBioStream bytes;
    stimulus.serialize(bytes);
    return std::make_unique<InboundItem>(svc_, bytes.data(), bytes.size());
  }

  proc::Svc svc_{26};
  QueueDeduplicatorImpl deduplicator_{2};
};

TEST_F(QueueDeduplicatorImplTest, SameClassDirectionAndCookie_IsKeptOutWhileTheFirstWaits) {
  const auto first = item(1, Stimulus::kTypeMethod, "a");
  const auto again = item(1, Stimulus::kTypeMethod, "a");
  EXPECT_TRUE(deduplicator_.enter(*first));
  EXPECT_FALSE(deduplicator_.enter(*again));
  deduplicator_.leave(*first);
  EXPECT_TRUE(deduplicator_.enter(*again));
}

TEST_F(QueueDeduplicatorImplTest, DifferentInAnyOfThem_IsLetIn) {
  const auto first = item(1, Stimulus::kTypeMethod, "a");
  EXPECT_TRUE(deduplicator_.enter(*first));
  EXPECT_TRUE(deduplicator_.enter(*item(2, Stimulus::kTypeMethod, "a")));
  EXPECT_TRUE(deduplicator_.enter(*item(1, Stimulus::kTypeAnswer, "a")));
  EXPECT_TRUE(deduplicator_.enter(*item(1, Stimulus::kTypeMethod, "b")));
}

TEST_F(QueueDeduplicatorImplTest, WithoutACookie_NothingIsTheSame) {
  EXPECT_TRUE(deduplicator_.enter(*item(1, Stimulus::kTypeMethod, "")));
  EXPECT_TRUE(deduplicator_.enter(*item(1, Stimulus::kTypeMethod, "")));
}

TEST_F(QueueDeduplicatorImplTest, BeyondItsElements_ItLetsEverythingIn) {
  const auto a = item(1, Stimulus::kTypeMethod, "a");
  const auto b = item(1, Stimulus::kTypeMethod, "b");
  const auto c = item(1, Stimulus::kTypeMethod, "c");
  EXPECT_TRUE(deduplicator_.enter(*a));
  EXPECT_TRUE(deduplicator_.enter(*b));
  EXPECT_TRUE(deduplicator_.enter(*c));
  EXPECT_TRUE(deduplicator_.enter(*item(1, Stimulus::kTypeMethod, "c")));
  EXPECT_FALSE(deduplicator_.enter(*item(1, Stimulus::kTypeMethod, "b")));
}

}  // namespace
