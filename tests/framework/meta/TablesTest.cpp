#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "framework/meta/Describe.h"
#include "framework/meta/Fsm.h"
#include "framework/meta/NameRef.h"
#include "framework/meta/PropValidator.h"
#include "framework/meta/Type.h"
#include "framework/method/MethodObject.h"

namespace {

class WeighMe
    : public method::MethodObject<WeighMe, method::In<std::uint32_t, base::String, method::Config>,
                                  method::Out<bool, mo::Dn>> {
 public:
  static constexpr std::uint32_t kClassId = 9001;
  static constexpr std::string_view kName = "test::Weigh";
};

TEST(MetaDescribe, Method_IsDescribedByItsClass) {
  constexpr meta::Method kWeigh = meta::describe<WeighMe>();
  EXPECT_EQ(kWeigh.id, 9001U);
  EXPECT_EQ(kWeigh.name, "test::Weigh");
  EXPECT_EQ(kWeigh.arguments, 3U);
  EXPECT_EQ(kWeigh.results, 2U);
}

TEST(MetaDescribe, Arguments_AreNumberedWithTheirTypes) {
  static constexpr auto kArgs = meta::describeArgs<WeighMe>();
  ASSERT_EQ(kArgs.size(), 5U);
  meta::Arg::initializeArgMeta(kArgs.data(), kArgs.size());
  const auto args = meta::Arg::ofMethod(9001);
  ASSERT_EQ(args.size(), 5U);
  const std::uint32_t types[] = {4, 7, 9, 1, 8};
  const std::uint32_t positions[] = {0, 1, 2, 0, 1};
  for (std::size_t i = 0; i < args.size(); ++i) {
    EXPECT_EQ(args[i].typeId, types[i]) << i;
    EXPECT_EQ(args[i].position, positions[i]) << i;
    EXPECT_EQ(args[i].isResult, i >= 3) << i;
  }
  EXPECT_TRUE(meta::Arg::ofMethod(9002).empty());
}

TEST(MetaTable, Rows_AreFoundByNumberInWhateverOrder) {
  static constexpr meta::Type kTypes[] = {{9, "nine"}, {2, "two"}, {5, "five"}};
  meta::Type::initializeTypeMeta(kTypes, 3);
  ASSERT_NE(meta::Type::find(2), nullptr);
  EXPECT_EQ(meta::Type::find(2)->name, "two");
  EXPECT_EQ(meta::Type::find(5)->name, "five");
  EXPECT_EQ(meta::Type::find(9)->name, "nine");
  EXPECT_EQ(meta::Type::find(3), nullptr);
  EXPECT_EQ(meta::Type::find(10), nullptr);
  EXPECT_EQ(meta::Type::all().size(), 3U);
}

TEST(MetaTable, TwoRowsWithOneNumber_AreRefusedAndTheOldOnesStay) {
  static constexpr meta::Type kGood[] = {{1, "one"}};
  static constexpr meta::Type kBad[] = {{2, "two"}, {2, "again"}};
  meta::Type::initializeTypeMeta(kGood, 1);
  EXPECT_THROW(meta::Type::initializeTypeMeta(kBad, 2), std::invalid_argument);
  EXPECT_NE(meta::Type::find(1), nullptr);
  EXPECT_EQ(meta::Type::find(2), nullptr);
}

TEST(MetaTable, NoRows_AreFine) {
  meta::Type::initializeTypeMeta(nullptr, 0);
  EXPECT_EQ(meta::Type::find(1), nullptr);
  EXPECT_TRUE(meta::Type::all().empty());
}

TEST(MetaNameRef, Index_FindsByProperty) {
  static constexpr meta::NameRef kRefs[] = {{1, 10, 100}, {2, 20, 200}};
  meta::NameRef::initializeNameRefMeta(kRefs, 2);
  meta::NameRef::indexByProperty();
  ASSERT_NE(meta::NameRef::findByProperty(200), nullptr);
  EXPECT_EQ(meta::NameRef::findByProperty(200)->classId, 20U);
  EXPECT_EQ(meta::NameRef::findByProperty(10), nullptr);
}

TEST(MetaPropValidator, Range_IncludesItsEnds) {
  static constexpr meta::PropValidator kRanges[] = {{7, 0, 100}};
  meta::PropValidator::initializePropValMeta(kRanges, 1);
  using meta::PropValidator;
  EXPECT_TRUE(PropValidator::isValid(7, std::uint32_t{0}));
  EXPECT_TRUE(PropValidator::isValid(7, std::int32_t{100}));
  EXPECT_FALSE(PropValidator::isValid(7, std::int32_t{-1}));
  EXPECT_FALSE(PropValidator::isValid(7, 100.5F));
  EXPECT_FALSE(PropValidator::isValid(7, std::nanf("")));
  EXPECT_TRUE(PropValidator::isValid(7, base::String("a text")));
  EXPECT_TRUE(PropValidator::isValid(8, std::int32_t{-1}));
}

TEST(MetaFsm, Throttles_AreFoundOnceIndexed) {
  static constexpr meta::FsmThrottle kThrottles[] = {{2, 20}, {1, 10}};
  meta::FsmThrottle::install(kThrottles, 2);
  meta::FsmThrottle::indexById();
  ASSERT_NE(meta::FsmThrottle::find(1), nullptr);
  EXPECT_EQ(meta::FsmThrottle::find(1)->most, 10U);
}

}  // namespace
