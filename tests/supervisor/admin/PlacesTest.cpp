#include "supervisor/admin/Places.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace supervisor::admin {
namespace {

using Place = Places::Place;

class PlacesFixture : public testing::Test {
 protected:
  std::unique_ptr<Place> take(const std::string& name) {
    return std::make_unique<Place>(places_, [this, name] { lost_ += name; });
  }

  Places places_{2};
  std::string lost_;  // the names of those who lost their places
};

TEST_F(PlacesFixture, Free_IsGivenAndComesBack) {
  EXPECT_TRUE(places_.makeRoom());
  const auto first = take("a");
  EXPECT_TRUE(places_.makeRoom());
  auto second = take("b");
  EXPECT_FALSE(places_.makeRoom());
  second.reset();
  EXPECT_TRUE(places_.makeRoom());
  EXPECT_EQ(lost_, "");
}

TEST_F(PlacesFixture, IdleForLongest_LosesItsPlaceOnce) {
  const auto first = take("a");
  const auto second = take("b");
  second->setIdle();
  first->setIdle();
  second->setIdle();  // does not make it idle anew
  EXPECT_TRUE(places_.makeRoom());
  EXPECT_EQ(lost_, "b");
  const auto third = take("c");
  EXPECT_TRUE(places_.makeRoom());
  EXPECT_EQ(lost_, "ba");
}

TEST_F(PlacesFixture, BusyAgain_Stays) {
  const auto first = take("a");
  const auto second = take("b");
  first->setIdle();
  first->setBusy();
  EXPECT_FALSE(places_.makeRoom());
  first->setIdle();
  second->setIdle();
  first->setBusy();
  first->setIdle();
  EXPECT_TRUE(places_.makeRoom());
  EXPECT_EQ(lost_, "b");
}

TEST_F(PlacesFixture, IdleThatEnds_IsForgotten) {
  auto first = take("a");
  const auto second = take("b");
  first->setIdle();
  first.reset();
  EXPECT_TRUE(places_.makeRoom());
  const auto third = take("c");
  EXPECT_FALSE(places_.makeRoom());
  EXPECT_EQ(lost_, "");
}

TEST_F(PlacesFixture, Lost_IsNeitherCountedNorLostAgain) {
  auto first = take("a");
  const auto second = take("b");
  first->setIdle();
  EXPECT_TRUE(places_.makeRoom());
  const auto third = take("c");
  first->setIdle();
  EXPECT_FALSE(places_.makeRoom());
  first.reset();
  EXPECT_FALSE(places_.makeRoom());
  EXPECT_EQ(lost_, "a");
}

}  // namespace
}  // namespace supervisor::admin
