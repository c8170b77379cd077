#include "framework/mo/Mo.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/filter/Filter.h"

namespace {

using method::Config;
using method::Value;
using method::ValueKind;
using mo::Dn;

constexpr mo::EnumText kColourTexts[] = {{0, "off"}, {7, "red"}};
constexpr mo::Enumeration kColours{kColourTexts, "odd"};

class LampMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x51;
  static constexpr std::string_view kName = "lamp";

  static constexpr mo::Property<base::String> kPlace{0x105, "place", mo::kDurable,
                                                     mo::kNamingGroup};
  static constexpr mo::Property<std::uint8_t> kColour{0x101, "colour", mo::kDurable,
                                                      mo::kStateGroup, &kColours};
  static constexpr mo::Property<std::uint32_t> kHours{0x103, "hours", mo::kVolatile};
  static constexpr mo::Property<std::uint64_t> kSeenAt{0x102, "seenAt", mo::kDurable,
                                                       mo::kEngineGroup};

  static constexpr auto kProperties = mo::describe(kPlace, kColour, kHours, kSeenAt);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit LampMo(const Dn& dn = {}) : Mo(kClass, dn) {}
};

class DoorMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x52;
  static constexpr auto kProperties = mo::describe();
  static constexpr mo::ClassInfo kClass{kClassId, "door", kProperties};

  explicit DoorMo(const Dn& dn = {}) : Mo(kClass, dn) {}
};

/// Of every group, the naming one set last.
LampMo litLamp() {
  LampMo lamp(Dn("house/lamp-1"));
  lamp.set(LampMo::kColour, 7);
  lamp.set(LampMo::kHours, 1000);
  lamp.set(LampMo::kSeenAt, 5);
  lamp.set(LampMo::kPlace, "hall");
  return lamp;
}

std::vector<std::uint32_t> idsOf(const Config& config) {
  std::vector<std::uint32_t> ids;
  for (const auto& [id, value] : config.values()) {
    ids.push_back(id);
  }
  return ids;
}

TEST(ClassInfo, Properties_AreFoundByIdAndByName) {
  const mo::ClassInfo& lamp = LampMo::kClass;
  EXPECT_EQ(lamp.id, 0x51U);
  EXPECT_EQ(lamp.name, "lamp");
  ASSERT_EQ(lamp.properties.size(), 4U);
  ASSERT_NE(lamp.find("hours"), nullptr);
  EXPECT_EQ(lamp.find("hours")->id, 0x103U);
  EXPECT_EQ(lamp.find("hours")->kind, ValueKind::kUint32);
  EXPECT_FALSE(lamp.find("hours")->isDurable());
  ASSERT_NE(lamp.find(0x105), nullptr);
  EXPECT_EQ(lamp.find(0x105)->name, "place");
  EXPECT_EQ(lamp.find(0x105)->kind, ValueKind::kText);
  EXPECT_TRUE(lamp.find(0x105)->isDurable());
  EXPECT_EQ(lamp.positionOf(0x105), 0U);
  EXPECT_EQ(lamp.positionOf(0x102), 3U);
}

TEST(ClassInfo, UnknownProperty_IsNotFound) {
  EXPECT_EQ(LampMo::kClass.find("Hours"), nullptr);
  EXPECT_EQ(LampMo::kClass.find(0x104), nullptr);
  EXPECT_EQ(LampMo::kClass.positionOf(0x104), 4U);
  EXPECT_EQ(DoorMo::kClass.find(0x101), nullptr);
}

TEST(Mo, NewObject_HasItsClassAndNothingElse) {
  const LampMo lamp(Dn("house/lamp-1"));
  EXPECT_EQ(lamp.classId(), 0x51U);
  EXPECT_EQ(lamp.classInfo(), &LampMo::kClass);
  EXPECT_EQ(lamp.dn(), Dn("house/lamp-1"));
  EXPECT_TRUE(lamp.values().empty());
  EXPECT_TRUE(lamp.changeFlags().empty());
  EXPECT_EQ(mo::Mo(0x51, Dn()).classInfo(), nullptr);
}

TEST(Mo, PropertyThatIsNotSet_ReadsAsNothing) {
  const LampMo lamp;
  EXPECT_EQ(lamp.get(LampMo::kPlace), base::String());
  EXPECT_EQ(lamp.get(LampMo::kHours), 0U);
  EXPECT_EQ(lamp.find(0x105), nullptr);
}

TEST(Mo, PropertyThatIsSet_ReadsBackAndIsMarked) {
  const LampMo lamp = litLamp();
  EXPECT_EQ(lamp.get(LampMo::kPlace), base::String("hall"));
  EXPECT_EQ(lamp.get(LampMo::kColour), 7);
  EXPECT_EQ(lamp.get(LampMo::kHours), 1000U);
  EXPECT_EQ(std::vector<std::uint32_t>(lamp.changeFlags().begin(), lamp.changeFlags().end()),
            (std::vector<std::uint32_t>{0x101, 0x102, 0x103, 0x105}));
}

TEST(Mo, SetTwice_HoldsTheLaterValue) {
  LampMo lamp;
  lamp.set(LampMo::kColour, 3);
  lamp.set(LampMo::kColour, 7);
  EXPECT_EQ(lamp.get(LampMo::kColour), 7);
  EXPECT_EQ(lamp.values().size(), 1U);
  EXPECT_EQ(lamp.changeFlags().size(), 1U);
}

TEST(Mo, ValueOfAnotherKind_ReadsAsNothing) {
  LampMo lamp;
  lamp.set(0x103, base::String("many"));
  EXPECT_EQ(lamp.get(LampMo::kHours), 0U);
}

TEST(Mo, ResetChangeFlags_OnlyLaterChangesAreMarked) {
  LampMo lamp = litLamp();
  lamp.resetChangeFlags();
  EXPECT_TRUE(lamp.changeFlags().empty());
  lamp.set(LampMo::kHours, 1000);
  EXPECT_TRUE(lamp.changeFlags().contains(0x103));
  EXPECT_FALSE(lamp.changeFlags().contains(0x101));
}

TEST(Mo, Cleared_IsUnsetAndMarked) {
  LampMo lamp = litLamp();
  lamp.resetChangeFlags();
  lamp.clear(LampMo::kHours);
  EXPECT_EQ(lamp.find(0x103), nullptr);
  EXPECT_TRUE(lamp.changeFlags().contains(0x103));
}

TEST(Mo, ClearedWithoutAValue_IsNoChange) {
  LampMo lamp;
  lamp.clear(LampMo::kHours);
  EXPECT_TRUE(lamp.changeFlags().empty());
}

TEST(ToConfig, WithoutArguments_HasEverything) {
  const Config config = litLamp().toConfig();
  EXPECT_EQ(config.classId(), 0x51U);
  EXPECT_EQ(config.dn(), Dn("house/lamp-1"));
  EXPECT_EQ(config.flags(), 0U);
  EXPECT_TRUE(config.children().empty());
  EXPECT_EQ(idsOf(config), (std::vector<std::uint32_t>{0x101, 0x102, 0x103, 0x105}));
  EXPECT_EQ(*config.find(0x105), Value(base::String("hall")));
}

TEST(ToConfig, Group3_HasWhatAServiceReportsAndTheFlags) {
  const LampMo lamp = litLamp();
  const Config config = lamp.toConfig(3, &lamp.changeFlags(), 0, 0x2000);
  EXPECT_EQ(idsOf(config), (std::vector<std::uint32_t>{0x101, 0x103, 0x105}));
  EXPECT_EQ(config.flags(), 0x2000U);
}

TEST(ToConfig, OneGroup_HasItsPropertiesOnly) {
  EXPECT_EQ(idsOf(litLamp().toConfig(1)), (std::vector<std::uint32_t>{0x105}));
  EXPECT_EQ(idsOf(litLamp().toConfig(4)), (std::vector<std::uint32_t>{0x102}));
  EXPECT_TRUE(litLamp().toConfig(0).values().empty());
}

TEST(ToConfig, OnlyChanged_LeavesTheOthersOut) {
  LampMo lamp = litLamp();
  lamp.resetChangeFlags();
  lamp.set(LampMo::kColour, 3);
  EXPECT_EQ(idsOf(lamp.toConfig(3, &lamp.changeFlags())), (std::vector<std::uint32_t>{0x101}));
}

TEST(ToConfig, ClearedProperty_TravelsWithoutAValue) {
  LampMo lamp = litLamp();
  lamp.resetChangeFlags();
  lamp.clear(LampMo::kHours);
  const Config config = lamp.toConfig(3, &lamp.changeFlags());
  EXPECT_EQ(idsOf(config), (std::vector<std::uint32_t>{0x103}));
  EXPECT_EQ(*config.find(0x103), Value());
}

TEST(ToConfig, ObjectThatIsDoneWith_GivesItsValuesAway) {
  LampMo lamp = litLamp();
  const Config kept = lamp.toConfig(3, &lamp.changeFlags(), 0, 0x2000);
  const mo::ChangeFlags* const changed = &lamp.changeFlags();
  const Config given = std::move(lamp).toConfig(3, changed, 0, 0x2000);
  EXPECT_EQ(given, kept);
  EXPECT_EQ(idsOf(given), (std::vector<std::uint32_t>{0x101, 0x103, 0x105}));
  EXPECT_TRUE(lamp.values().empty());
}

TEST(ToConfig, PlainObject_BelongsToTheStateGroup) {
  mo::Mo object(9, Dn("x"));
  object.set(0x103, true);
  EXPECT_EQ(object.toConfig(2).values().size(), 1U);
  EXPECT_EQ(object.toConfig(1).values().size(), 0U);
}

TEST(FromConfig, WhatToConfigMade_ComesBackThroughTheBytes) {
  const LampMo sent = litLamp();
  base::OBioStream out;
  sent.toConfig(3, &sent.changeFlags(), 0, 0x2000).serialize(out);
  base::IBioStream in(out.data(), out.size());
  Config config;
  ASSERT_TRUE(config.deserialize(in));
  LampMo received(Dn("elsewhere"));
  received.set(LampMo::kSeenAt, 9);
  EXPECT_EQ(mo::fromConfig(config, received), 0U);
  EXPECT_EQ(received.get(LampMo::kPlace), base::String("hall"));
  EXPECT_EQ(received.get(LampMo::kColour), 7);
  EXPECT_EQ(received.get(LampMo::kHours), 1000U);
  EXPECT_EQ(received.get(LampMo::kSeenAt), 9U);
  EXPECT_EQ(received.dn(), Dn("elsewhere"));
}

TEST(FromConfig, UnknownPropertyOrWrongKind_IsLeftAndCounted) {
  Config config(0x51, Dn());
  config.set(0x101, std::uint32_t{7});          // a number of another width
  config.set(0x103, base::String("thousand"));  // no number
  config.set(0x105, base::String("hall"));
  config.set(0x999, true);
  LampMo lamp;
  EXPECT_EQ(mo::fromConfig(config, lamp), 3U);
  EXPECT_EQ(lamp.values().size(), 1U);
  EXPECT_EQ(lamp.get(LampMo::kPlace), base::String("hall"));
}

TEST(FromConfig, WithoutAValue_Clears) {
  Config config(0x51, Dn());
  config.set(0x103, Value());
  LampMo lamp = litLamp();
  EXPECT_EQ(mo::fromConfig(config, lamp), 0U);
  EXPECT_EQ(lamp.find(0x103), nullptr);
  EXPECT_NE(lamp.find(0x105), nullptr);
}

TEST(FromConfig, PropertyOutsideTheGroups_IsLeftAndCounted) {
  Config config(0x51, Dn());
  config.set(0x101, std::uint8_t{7});
  config.set(0x102, std::uint64_t{12345});
  LampMo lamp;
  EXPECT_EQ(mo::fromConfig(config, lamp, mo::kReportGroups), 1U);
  EXPECT_EQ(lamp.get(LampMo::kColour), 7);
  EXPECT_EQ(lamp.find(0x102), nullptr);
}

TEST(FromConfig, AnotherClass_TakesNothing) {
  Config config(0x52, Dn());
  config.set(0x101, std::uint8_t{7});
  config.set(0x105, base::String("hall"));
  LampMo lamp;
  EXPECT_EQ(mo::fromConfig(config, lamp), 2U);
  EXPECT_TRUE(lamp.values().empty());
  mo::Mo plain(0x52, Dn());
  EXPECT_EQ(mo::fromConfig(config, plain), 2U);
}

// Whatever arrives, only properties of the class with values of their kinds get in.
TEST(FromConfig, EveryByteFlipped_TakesOnlyWhatFitsTheClass) {
  base::OBioStream out;
  litLamp().toConfig().serialize(out);
  const std::vector<unsigned char> whole(out.data(), out.data() + out.size());
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned mask : {0x01U, 0x02U, 0x80U, 0xffU}) {
      std::vector<unsigned char> bytes = whole;
      bytes[at] = static_cast<unsigned char>(bytes[at] ^ mask);
      base::IBioStream in(bytes.data(), bytes.size());
      Config config;
      LampMo lamp;
      const std::size_t left = config.deserialize(in) ? mo::fromConfig(config, lamp) : 0;
      EXPECT_LE(lamp.values().size() + left, config.values().size());
      for (const auto& [id, value] : lamp.values()) {
        ASSERT_NE(LampMo::kClass.find(id), nullptr);
        EXPECT_EQ(method::kindOf(value), LampMo::kClass.find(id)->kind);
      }
    }
  }
}

TEST(CheckCast, OwnClass_IsTheObject) {
  LampMo lamp;
  EXPECT_EQ(mo::checkCast<LampMo>(static_cast<mo::Mo*>(&lamp)), &lamp);
  EXPECT_EQ(mo::checkCast<LampMo>(static_cast<const mo::Mo*>(&lamp)), &lamp);
}

TEST(CheckCast, AnotherClassPlainOrNull_IsNull) {
  DoorMo door;
  mo::Mo plain(0x51, Dn());
  EXPECT_EQ(mo::checkCast<LampMo>(static_cast<mo::Mo*>(&door)), nullptr);
  EXPECT_EQ(mo::checkCast<LampMo>(&plain), nullptr);
  EXPECT_EQ(mo::checkCast<LampMo>(static_cast<mo::Mo*>(nullptr)), nullptr);
}

TEST(Attached, ChildrenOfAClass_ComeInTheirOrder) {
  LampMo parent;
  mo::Mo* const first = parent.attach(std::make_unique<DoorMo>(Dn("a")));
  parent.attach(std::make_unique<LampMo>(Dn("b")));
  mo::Mo* const second = parent.attach(std::make_unique<DoorMo>(Dn("c")));
  EXPECT_EQ(parent.findChild(DoorMo::kClassId), (std::vector<mo::Mo*>{first, second}));
  EXPECT_TRUE(parent.findChild(0x99).empty());
  EXPECT_EQ(parent.resolve<DoorMo>(), first);
}

TEST(Attached, Filter_LeavesOthersOut) {
  filter::Filter::initFactories();
  mo::Mo parent(0x51, Dn());
  mo::Mo* const wanted = parent.attach(std::make_unique<mo::Mo>(0x52, Dn("a")));
  wanted->set(1, method::Value(std::uint32_t{7}));
  parent.attach(std::make_unique<mo::Mo>(0x52, Dn("b")))->set(1, method::Value(std::uint32_t{8}));
  const auto isSeven = filter::Filter::create("eq", 1, method::Value(std::uint32_t{7}));
  ASSERT_NE(isSeven, nullptr);
  EXPECT_EQ(parent.findChild(0x52, isSeven.get()), std::vector<mo::Mo*>{wanted});
}

TEST(Attached, NothingOfTheClass_ResolvesToNull) {
  LampMo lamp;
  EXPECT_EQ(lamp.resolve<DoorMo>(), nullptr);
  EXPECT_EQ(lamp.attach(nullptr), nullptr);
  lamp.attach(std::make_unique<mo::Mo>(DoorMo::kClassId, Dn()));  // plain: not the model's class
  EXPECT_EQ(lamp.resolve<DoorMo>(), nullptr);
}

TEST(Attached, Copy_LeavesThemBehind) {
  LampMo lamp;
  lamp.attach(std::make_unique<DoorMo>());
  const LampMo copy(lamp);
  EXPECT_EQ(copy.resolve<DoorMo>(), nullptr);
  EXPECT_NE(lamp.resolve<DoorMo>(), nullptr);
}

TEST(Attached, ToConfig_TakesAsManyLevelsAsAsked) {
  LampMo lamp;
  lamp.attach(std::make_unique<DoorMo>(Dn("d")))->attach(std::make_unique<LampMo>(Dn("e")));
  EXPECT_TRUE(lamp.toConfig().children().empty());
  const Config one = lamp.toConfig(mo::kAllGroups, nullptr, 1);
  ASSERT_EQ(one.children().size(), 1U);
  EXPECT_TRUE(one.children()[0].children().empty());
  const Config two = lamp.toConfig(mo::kAllGroups, nullptr, 2);
  EXPECT_EQ(two.children()[0].children()[0].dn(), Dn("e"));
}

TEST(Stringify, EnumeratedValues_HaveTheirTexts) {
  LampMo lamp;
  EXPECT_EQ(lamp.stringify(LampMo::kColour), "odd");  // not set
  lamp.set(LampMo::kColour, 0);
  EXPECT_EQ(lamp.stringify(LampMo::kColour), "off");
  lamp.set(LampMo::kColour, 7);
  EXPECT_EQ(lamp.stringify(0x101), "red");
  lamp.set(LampMo::kColour, 8);
  EXPECT_EQ(lamp.stringify(LampMo::kColour), "odd");
  lamp.set(0x101, Value(std::uint32_t{7}));  // another kind
  EXPECT_EQ(lamp.stringify(LampMo::kColour), "odd");
}

TEST(Stringify, PropertyWithoutTexts_IsEmpty) {
  const LampMo lamp = litLamp();
  EXPECT_EQ(lamp.stringify(LampMo::kHours), "");
  EXPECT_EQ(lamp.stringify(0x999), "");
  mo::Mo plain(0x51, Dn("x"));
  plain.set(LampMo::kColour, 7);
  EXPECT_EQ(plain.stringify(LampMo::kColour), "");
}

TEST(Describe, Enumeration_StandsBesideTheProperty) {
  EXPECT_EQ(LampMo::kClass.find("colour")->enumeration, &kColours);
  EXPECT_EQ(LampMo::kClass.find("place")->enumeration, nullptr);
}

}  // namespace
