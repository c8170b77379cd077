#include "framework/filter/Filter.h"

#include <gtest/gtest.h>

namespace {

using filter::Filter;
using method::Value;

mo::Mo slotThree() {
  mo::Mo object(5, mo::Dn("sys/slot-3"));
  object.set(7, std::uint32_t{3});
  return object;
}

class FilterTest : public testing::Test {
 protected:
  FilterTest() { Filter::initFactories(); }
};

TEST_F(FilterTest, Equal_ComparesTypeAndValue) {
  EXPECT_TRUE(Filter::create("eq", 7, Value(std::uint32_t{3}))->matches(slotThree()));
  EXPECT_FALSE(Filter::create("eq", 7, Value(std::uint32_t{4}))->matches(slotThree()));
  EXPECT_FALSE(Filter::create("eq", 7, Value(std::int32_t{3}))->matches(slotThree()));
  EXPECT_FALSE(Filter::create("eq", 8, Value(std::uint32_t{3}))->matches(slotThree()));
}

TEST_F(FilterTest, NotEqual_IsTheOpposite) {
  EXPECT_FALSE(Filter::create("ne", 7, Value(std::uint32_t{3}))->matches(slotThree()));
  EXPECT_TRUE(Filter::create("ne", 8, Value(std::uint32_t{3}))->matches(slotThree()));
}

TEST_F(FilterTest, Set_AsksForThePropertyOnly) {
  EXPECT_TRUE(Filter::create("set", 7, Value())->matches(slotThree()));
  EXPECT_FALSE(Filter::create("set", 8, Value())->matches(slotThree()));
}

TEST_F(FilterTest, UnknownKind_IsNull) {
  EXPECT_EQ(Filter::create("like", 7, Value()), nullptr);
}

TEST_F(FilterTest, SecondInit_ChangesNothing) {
  Filter::initFactories();
  EXPECT_NE(Filter::create("eq", 7, Value()), nullptr);
}

}  // namespace
