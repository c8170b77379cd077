#include "dme/blades/BladeAdmission.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "dme/blades/Token.h"
#include "model/sd/SlotMo.h"
#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

using testing::MatchesRegex;

TEST(Token, Made_AreThirtyTwoHexDigitsAndDiffer) {
  std::set<std::string> tokens;
  for (int i = 0; i < 1000; ++i) {
    const auto token = makeToken();
    ASSERT_TRUE(token);
    EXPECT_THAT(token->str(), MatchesRegex("[0-9a-f]{32}"));
    tokens.insert(token->str());
  }
  EXPECT_EQ(tokens.size(), 1000u);
}

TEST(Token, Comparison_NeedsEveryByte) {
  EXPECT_TRUE(isSameToken("", ""));
  EXPECT_TRUE(isSameToken("abc", "abc"));
  EXPECT_FALSE(isSameToken("abc", "abd"));
  EXPECT_FALSE(isSameToken("xbc", "abc"));
  EXPECT_FALSE(isSameToken("abc", "abcd"));
  EXPECT_FALSE(isSameToken("", "a"));
  EXPECT_FALSE(isSameToken(std::string_view("a\0b", 3), std::string_view("a\0c", 3)));
  EXPECT_FALSE(isSameToken("\x01", "\x81"));
}

class Admission : public testing::Test {
 protected:
  void open(const std::optional<base::ChassisDescription>& description = std::nullopt) {
    auto store = ObjectStore::open(directory_.path());
    ASSERT_TRUE(store) << store.error().text;
    store_ = std::move(*store);
    chassis_ = std::make_unique<Chassis>(*store_, description);
    admission_ = std::make_unique<BladeAdmission>(*store_, *chassis_);
  }
  void close() {
    admission_.reset();
    chassis_.reset();
    store_.reset();
  }

  Verdict judge(std::uint32_t slot, const base::String& token) {
    return admission_->judge(slot, "1.2", token);
  }

  dme_test::TempDirectory directory_;
  std::unique_ptr<ObjectStore> store_;
  std::unique_ptr<Chassis> chassis_;
  std::unique_ptr<BladeAdmission> admission_;
};

TEST_F(Admission, FirstRegistration_IssuesATokenAndAsksToRetry) {
  open();
  const Verdict verdict = judge(3, "");
  EXPECT_FALSE(verdict.isRefused);
  EXPECT_FALSE(verdict.isValid);
  EXPECT_TRUE(verdict.shouldRetry);
  EXPECT_THAT(verdict.token.str(), MatchesRegex("[0-9a-f]{32}"));
  EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kToken), verdict.token);
  EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kAdmission), 1);
  EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kRunningVersion), "1.2");
}

TEST_F(Admission, FirstRegistrationWithAForeignToken_IssuesATokenOfItsOwn) {
  open();
  const Verdict verdict = judge(3, "ffffffffffffffffffffffffffffffff");
  EXPECT_TRUE(verdict.shouldRetry);
  EXPECT_NE(verdict.token, "ffffffffffffffffffffffffffffffff");
  EXPECT_FALSE(verdict.token.empty());
}

TEST_F(Admission, SlotWithAToken_JudgesByWhatTheBladeShows) {
  open();
  const base::String token = judge(3, "").token;
  std::string almost = token.str();
  almost.back() = almost.back() == '0' ? '1' : '0';
  std::string upper = token.str();
  for (char& digit : upper) {
    digit = static_cast<char>(std::toupper(digit));
  }
  const struct {
    const char* what;
    base::String shown;
    Verdict verdict;
    std::uint8_t admission;
  } kCases[] = {
      {"none", "", {false, "", token, true, false}, 2},
      {"its own", token, {false, "", token, true, false}, 2},
      {"another", "0123456789abcdef0123456789abcdef", {false, "", "", false, false}, 3},
      {"one digit off", almost, {false, "", "", false, false}, 3},
      {"its own and more", token + "0", {false, "", "", false, false}, 3},
      {"its own cut", token.view().substr(0, 31), {false, "", "", false, false}, 3},
      {"a blank", " ", {false, "", "", false, false}, 3},
      {"a NUL", std::string(1, '\0'), {false, "", "", false, false}, 3},
      {"one MiB", std::string(1048576, 'x'), {false, "", "", false, false}, 3},
      {"its own after a foreign one", token, {false, "", token, true, false}, 2},
  };
  for (const auto& each : kCases) {
    EXPECT_EQ(judge(3, each.shown), each.verdict) << each.what;
    EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kToken), token) << each.what;
    EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kAdmission), each.admission) << each.what;
  }
  EXPECT_EQ(chassis_->slot(3)->get(sd::SlotMo::kRegistrations), 11u);
}

TEST_F(Admission, TwoSlots_HaveTokensOfTheirOwn) {
  open();
  const base::String left = judge(1, "").token;
  const base::String right = judge(2, "").token;
  EXPECT_NE(left, right);
  EXPECT_FALSE(judge(1, right).isValid);
  EXPECT_TRUE(judge(2, right).isValid);
}

TEST_F(Admission, ImpossibleSlots_AreRefusedAndLeaveNothing) {
  open();
  const std::size_t before = store_->size();
  EXPECT_EQ(judge(0, ""), (Verdict{true, "slot 0 is not within 1 and 16384", "", false, false}));
  EXPECT_EQ(judge(16385, ""),
            (Verdict{true, "slot 16385 is not within 1 and 16384", "", false, false}));
  EXPECT_EQ(judge(4294967295U, ""),
            (Verdict{true, "slot 4294967295 is not within 1 and 16384", "", false, false}));
  EXPECT_EQ(store_->size(), before);
  EXPECT_TRUE(judge(16384, "").shouldRetry);
}

TEST_F(Admission, DescribedChassis_RefusesOtherSlots) {
  base::ChassisDescription description;
  description.slots = {{1, "left"}, {2, ""}};
  open(description);
  EXPECT_TRUE(judge(1, "").shouldRetry);
  EXPECT_EQ(judge(3, ""), (Verdict{true, "slot 3 is not part of the chassis", "", false, false}));
  EXPECT_EQ(chassis_->slot(3), nullptr);
  EXPECT_EQ(chassis_->slot(1)->get(sd::SlotMo::kLabel), "left");
}

TEST_F(Admission, Reopened_KeepsTokensAndTheDescription) {
  base::ChassisDescription description;
  description.slots = {{1, "left"}};
  open(description);
  const base::String token = judge(1, "").token;
  EXPECT_TRUE(judge(1, "").isValid);
  const std::uint64_t cluster = chassis_->clusterId();
  EXPECT_NE(cluster, 0u);
  EXPECT_EQ(chassis_->epoch(), 1u);
  close();
  base::ChassisDescription other;
  other.slots = {{7, "ignored"}};
  open(other);
  EXPECT_EQ(chassis_->clusterId(), cluster);
  EXPECT_EQ(chassis_->epoch(), 2u);
  EXPECT_EQ(chassis_->slot(1)->get(sd::SlotMo::kAdmission), 2);
  EXPECT_EQ(judge(1, token), (Verdict{false, "", token, true, false}));
  EXPECT_TRUE(judge(7, "").isRefused);
}

TEST_F(Admission, EndlessVersionText_IsRecordedBounded) {
  open();
  admission_->judge(1, std::string(1000, 'v'), "");
  EXPECT_EQ(chassis_->slot(1)->get(sd::SlotMo::kRunningVersion), std::string(255, 'v'));
}

}  // namespace
}  // namespace dme
