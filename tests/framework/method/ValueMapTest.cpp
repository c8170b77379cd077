#include "framework/method/ValueMap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using method::kindOf;
using method::Value;
using method::ValueKind;
using method::ValueMap;

std::vector<std::uint32_t> idsOf(const ValueMap& map) {
  std::vector<std::uint32_t> ids;
  for (const auto& [id, value] : map) {
    ids.push_back(id);
  }
  return ids;
}

TEST(ValueMap, SetInAnyOrder_IsReadInAscendingOrder) {
  ValueMap map;
  for (const std::uint32_t id : {7U, 3U, 9U, 1U, 8U}) {
    map.set(id, id * 10);
  }
  EXPECT_EQ(idsOf(map), (std::vector<std::uint32_t>{1, 3, 7, 8, 9}));
  ASSERT_NE(map.find(8), nullptr);
  EXPECT_EQ(*map.find(8), Value(std::uint32_t{80}));
}

TEST(ValueMap, SetTwice_HoldsTheLaterValueOnce) {
  ValueMap map;
  map.set(5, true);
  map.set(5, base::String("x"));
  map.set(2, false);
  map.set(2, true);
  EXPECT_EQ(map.size(), 2U);
  EXPECT_EQ(*map.find(5), Value(base::String("x")));
  EXPECT_EQ(*map.find(2), Value(true));
}

TEST(ValueMap, WhatIsNotThere_IsNotFoundAndNotErased) {
  ValueMap map;
  EXPECT_EQ(map.find(1), nullptr);
  EXPECT_FALSE(map.erase(1));
  map.set(4, true);
  EXPECT_EQ(map.find(3), nullptr);
  EXPECT_EQ(map.find(5), nullptr);
  EXPECT_FALSE(map.erase(3));
  EXPECT_FALSE(map.erase(5));
  EXPECT_TRUE(map.erase(4));
  EXPECT_TRUE(map.empty());
}

TEST(ValueMap, KeepIf_AsksInAscendingOrderAndErasesTheRest) {
  ValueMap map;
  for (const std::uint32_t id : {4U, 1U, 3U, 2U}) {
    map.set(id, id);
  }
  std::vector<std::uint32_t> asked;
  map.keepIf([&asked](std::uint32_t id) {
    asked.push_back(id);
    return id % 2 == 0;
  });
  EXPECT_EQ(asked, (std::vector<std::uint32_t>{1, 2, 3, 4}));
  EXPECT_EQ(idsOf(map), (std::vector<std::uint32_t>{2, 4}));
  EXPECT_EQ(*map.find(4), Value(std::uint32_t{4}));
}

TEST(ValueMap, Equality_ComparesIdsAndValues) {
  ValueMap one;
  one.set(1, true);
  one.set(2, std::uint8_t{3});
  ValueMap other;
  other.set(2, std::uint8_t{3});
  EXPECT_NE(one, other);
  other.set(1, true);
  EXPECT_EQ(one, other);
  other.set(2, std::uint32_t{3});
  EXPECT_NE(one, other);
}

TEST(ValueKind, OfAType_IsTheTagOfItsValues) {
  EXPECT_EQ(kindOf<bool>(), ValueKind::kBool);
  EXPECT_EQ(kindOf<std::uint8_t>(), ValueKind::kUint8);
  EXPECT_EQ(kindOf<std::int32_t>(), ValueKind::kInt32);
  EXPECT_EQ(kindOf<std::uint32_t>(), ValueKind::kUint32);
  EXPECT_EQ(kindOf<std::uint64_t>(), ValueKind::kUint64);
  EXPECT_EQ(kindOf<float>(), ValueKind::kFloat);
  EXPECT_EQ(kindOf<base::String>(), ValueKind::kText);
  EXPECT_EQ(kindOf(Value()), ValueKind::kNone);
  EXPECT_EQ(kindOf(Value(2.5F)), ValueKind::kFloat);
  EXPECT_EQ(static_cast<int>(ValueKind::kText), 7);
}

}  // namespace
