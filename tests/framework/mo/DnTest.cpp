#include "framework/mo/Dn.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(Dn, ChildOfTheRoot_HasNoSeparator) {
  EXPECT_EQ(mo::Dn().child("sys").text(), "sys");
}

TEST(Dn, Child_IsOneStepBelow) {
  EXPECT_EQ(mo::Dn("sys/chassis-1").child("slot-3").text(), "sys/chassis-1/slot-3");
}

TEST(Dn, Parent_DropsTheLastStep) {
  EXPECT_EQ(mo::Dn("sys/chassis-1/slot-3").parent(), mo::Dn("sys/chassis-1"));
  EXPECT_EQ(mo::Dn("sys").parent(), mo::Dn());
  EXPECT_EQ(mo::Dn().parent(), mo::Dn());
}

TEST(Dn, Order_IsByBytesNotByLength) {
  const std::set<mo::Dn> names{mo::Dn("b"), mo::Dn("aa"), mo::Dn("a/z"), mo::Dn("a")};
  const std::vector<mo::Dn> expected{mo::Dn("a"), mo::Dn("a/z"), mo::Dn("aa"), mo::Dn("b")};
  EXPECT_TRUE(std::equal(names.begin(), names.end(), expected.begin(), expected.end()));
}

TEST(Dn, CutShort_IsRefused) {
  base::OBioStream out;
  mo::Dn("sys/slot-3").serialize(out);
  for (std::size_t size = 0; size < out.size(); ++size) {
    base::IBioStream in(out.data(), size);
    mo::Dn read;
    EXPECT_FALSE(read.deserialize(in)) << size;
  }
  base::IBioStream in(out.data(), out.size());
  mo::Dn read;
  EXPECT_TRUE(read.deserialize(in));
  EXPECT_EQ(read, mo::Dn("sys/slot-3"));
}

TEST(EscapeStep, PlainIdentifier_StaysAsItIs) {
  EXPECT_EQ(mo::escapeStep("sda1 (root)-\xc3\xa4"), "sda1 (root)-\xc3\xa4");
  EXPECT_EQ(mo::escapeStep(""), "");
}

TEST(EscapeStep, SlashPercentAndControlCharacters_AreEscaped) {
  EXPECT_EQ(mo::escapeStep("/dev/sda"), "%2Fdev%2Fsda");
  EXPECT_EQ(mo::escapeStep("50%2F"), "50%252F");
  EXPECT_EQ(mo::escapeStep(std::string_view("a\0b\n\x7f", 5)), "a%00b%0A%7F");
}

}  // namespace
