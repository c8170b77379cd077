#include "serviceOrchAG/bridge/ClientMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;
using test_support::RegistryCleaner;
using test_support::ScriptedChannel;
using testing::ElementsAre;
using testing::IsEmpty;

/// Whether the registry lock is free, seen from another thread.
bool lockIsFree() {
  bool isFree = false;
  std::thread other([&isFree] {
    Critical_section_lock.lock();
    isFree = true;
    Critical_section_lock.unlock();
  });
  other.join();
  return isFree;
}

class ClientMapTest : public testing::Test {
 protected:
  std::vector<std::string> slots() const {
    std::vector<std::string> keys;
    for (const auto& [slot, client] : ClientMap) {
      keys.push_back(slot);
    }
    return keys;
  }

  ScriptedChannel channels_;
  LogCapture log_;
  const RegistryCleaner cleaner_{};
};

TEST_F(ClientMapTest, NeverRegistered_HasNoStatusAndGetsNone) {
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_FALSE(getBladeStatus("3"));
  setBladeStatus("3", true);
  EXPECT_FALSE(getBladeStatus("3"));
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ClientMapTest, RemoveUnknown_IsFalseAndSilent) {
  EXPECT_FALSE(removeBladeMapEntry("3"));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ClientMapTest, Create_RegistersAndConnects) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_THAT(channels_.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 4", "server tcp://10.0.0.3:5560"));
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{1, "SMAClient", "Adding SMAClient in map for slot 3"},
                          LogLine{1, "setClientChannel",
                                  "Set server end point for slot 3 : tcp://10.0.0.3:5560"},
                          LogLine{5, "createSMAClient",
                                  "Registered SMAClient for slot 3 at "
                                  "10.0.0.3:5560"}));
}

TEST_F(ClientMapTest, CreateNotValid_IsRegisteredAndNotValid) {
  createSMAClient("3", "10.0.0.3", "5560", false);
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_FALSE(getBladeStatus("3"));
}

TEST_F(ClientMapTest, CreateAgainAtAnotherAddress_KeepsTheClientAndSetsTheStatus) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  const SMAClient* const first = ClientMap.at("3");
  const std::vector<std::string> events = channels_.events();
  log_.clear();
  createSMAClient("3", "10.9.9.9", "1", false);
  EXPECT_EQ(first, ClientMap.at("3"));
  EXPECT_FALSE(getBladeStatus("3"));
  EXPECT_EQ(events, channels_.events());
  EXPECT_THAT(log_.lines(), ElementsAre(LogLine{1, "createSMAClient",
                                                "SMAClient is already register for slot 3"}));
}

TEST_F(ClientMapTest, SetStatus_ChangesIt) {
  createSMAClient("3", "10.0.0.3", "5560", false);
  setBladeStatus("3", true);
  EXPECT_TRUE(getBladeStatus("3"));
  setBladeStatus("3", false);
  EXPECT_FALSE(getBladeStatus("3"));
}

TEST_F(ClientMapTest, Remove_DeletesTheClientAndItsEntry) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  log_.clear();
  EXPECT_TRUE(removeBladeMapEntry("3"));
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_FALSE(getBladeStatus("3"));
  EXPECT_EQ(0U, channels_.alive());
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{1, "~SMAClient", "deleting smaClient... for slot 3"},
                          LogLine{5, "~SMAClient", "deleting channel for slot 3"},
                          LogLine{5, "~SMAClient", "deleting registered slot 3 entry from map"}));
  EXPECT_FALSE(removeBladeMapEntry("3"));
}

TEST_F(ClientMapTest, RemoveAndCreate_TakesTheNewAddress) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  removeBladeMapEntry("3");
  createSMAClient("3", "10.9.9.9", "1", true);
  EXPECT_EQ("server tcp://10.9.9.9:1", channels_.events().back());
}

TEST_F(ClientMapTest, SlotTexts_AreComparedAsBytes) {
  createSMAClient("01", "10.0.0.1", "1", true);
  EXPECT_FALSE(is_bladeRegistered("1"));
  createSMAClient("1", "10.0.0.1", "2", false);
  createSMAClient("10", "10.0.0.1", "3", true);
  createSMAClient("2", "10.0.0.1", "4", true);
  createSMAClient("", "10.0.0.1", "5", true);
  EXPECT_THAT(slots(), ElementsAre("", "01", "1", "10", "2"));
  EXPECT_TRUE(getBladeStatus("01"));
  EXPECT_FALSE(getBladeStatus("1"));
}

struct PortText {
  const char* text;
  const char* endPoint;
};

class PortTexts : public ClientMapTest, public testing::WithParamInterface<PortText> {};

TEST_P(PortTexts, Create_ConnectsToTheLowBitsOfTheNumber) {
  createSMAClient("3", "h", GetParam().text, true);
  EXPECT_EQ(std::string("server ") + GetParam().endPoint, channels_.events().back());
  EXPECT_TRUE(
      log_.contains(5, std::string("Registered SMAClient for slot 3 at h:") + GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    All, PortTexts,
    testing::Values(PortText{"5560", "tcp://h:5560"}, PortText{"abc", "tcp://h:0"},
                    PortText{"", "tcp://h:0"}, PortText{"5560x", "tcp://h:5560"},
                    PortText{"010", "tcp://h:10"}, PortText{"0x10", "tcp://h:0"},
                    PortText{" 7", "tcp://h:7"}, PortText{"70000", "tcp://h:70000"},
                    PortText{"-1", "tcp://h:4294967295"}, PortText{"4294967297", "tcp://h:1"},
                    PortText{"99999999999999999999", "tcp://h:4294967295"}));

TEST_F(ClientMapTest, NullEntry_CountsAsAbsent) {
  ClientMap["3"] = nullptr;
  EXPECT_FALSE(is_bladeRegistered("3"));
  EXPECT_FALSE(getBladeStatus("3"));
  setBladeStatus("3", true);
  EXPECT_FALSE(getBladeStatus("3"));
  EXPECT_FALSE(removeBladeMapEntry("3"));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ClientMapTest, CreateOverANullEntry_TakesItsPlace) {
  ClientMap["3"] = nullptr;
  createSMAClient("3", "10.0.0.3", "5560", true);
  EXPECT_TRUE(is_bladeRegistered("3"));
  EXPECT_TRUE(log_.contains(5, "Deleted SMAClient from map for slot 3"));
}

TEST_F(ClientMapTest, HostileTexts_AreTextOnly) {
  createSMAClient("%s%n\n", "%d", "%s", true);
  EXPECT_TRUE(is_bladeRegistered("%s%n\n"));
  EXPECT_TRUE(log_.contains(5, "Registered SMAClient for slot %s%n\\x0A at %d:%s"));
  const std::string longest(255, 's');
  createSMAClient(longest, "h", "1", true);
  EXPECT_TRUE(removeBladeMapEntry(longest));
}

TEST_F(ClientMapTest, EndPointIsRefused_LeavesNoClientAndNoLock) {
  channels_.onServerEndPoint(test_support::throws(std::runtime_error("no such host")));
  EXPECT_THROW(createSMAClient("3", "garbage host", "1", true), std::runtime_error);
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{1, "SMAClient", "Adding SMAClient in map for slot 3"}));
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_EQ(0U, channels_.alive());
  EXPECT_TRUE(lockIsFree());
  createSMAClient("3", "10.0.0.3", "1", true);
  EXPECT_TRUE(is_bladeRegistered("3"));
}

TEST_F(ClientMapTest, ChannelCannotBeMade_LeavesNoClientAndNoLock) {
  channels_.onCreate(test_support::throws(std::bad_alloc()));
  EXPECT_THROW(createSMAClient("3", "10.0.0.3", "1", true), std::bad_alloc);
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_TRUE(lockIsFree());
}

TEST_F(ClientMapTest, NoExceptionType_LeavesAnEntryBehind) {
  channels_.onServerEndPoint(test_support::throws(std::string("text")));
  EXPECT_THROW(createSMAClient("3", "10.0.0.3", "1", true), std::string);
  channels_.onServerEndPoint(test_support::throws(7));
  EXPECT_THROW(createSMAClient("3", "10.0.0.3", "1", true), int);
  EXPECT_THAT(ClientMap, IsEmpty());
  EXPECT_EQ(0U, channels_.alive());
}

TEST_F(ClientMapTest, TheLocksHolder_MayCallEverything) {
  const os::CriticalSection::Guard guard(Critical_section_lock);
  createSMAClient("3", "10.0.0.3", "1", false);
  setBladeStatus("3", true);
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_TRUE(removeBladeMapEntry("3"));
}

TEST_F(ClientMapTest, RegistrationsOfOneSlotRace_OneClientIsLeft) {
  for (int round = 0; round < 50; ++round) {
    std::vector<std::thread> registrations;
    for (int number = 0; number < 4; ++number) {
      registrations.emplace_back(
          [number] { createSMAClient("3", "10.0.0." + std::to_string(number), "1", true); });
    }
    for (std::thread& registration : registrations) {
      registration.join();
    }
    EXPECT_EQ(1U, ClientMap.size());
    EXPECT_EQ(1U, channels_.alive());
    EXPECT_TRUE(getBladeStatus("3"));
    EXPECT_TRUE(removeBladeMapEntry("3"));
    EXPECT_EQ(0U, channels_.alive());
  }
}

TEST_F(ClientMapTest, RegisterAndRemoveRace_TheMapStaysWhole) {
  std::thread registrations([] {
    for (int round = 0; round < 200; ++round) {
      createSMAClient("3", "10.0.0.3", "1", round % 2 == 0);
    }
  });
  std::thread removals([] {
    for (int round = 0; round < 200; ++round) {
      removeBladeMapEntry("3");
    }
  });
  for (int round = 0; round < 200; ++round) {
    getBladeStatus("3");
    setBladeStatus("3", true);
  }
  registrations.join();
  removals.join();
  EXPECT_EQ(ClientMap.size(), channels_.alive());
}

TEST_F(ClientMapTest, TextsWithoutMeasure_AreNotRegistered) {
  const std::string longest(255, '7');
  createSMAClient(longest, "127.0.0.1", "1", true);
  createSMAClient(longest + "7", "127.0.0.1", "1", true);
  createSMAClient("3", std::string(256, 'a'), "1", true);
  createSMAClient("4", "127.0.0.1", std::string(256, '1'), true);
  EXPECT_THAT(slots(), ElementsAre(longest));
  EXPECT_EQ(log_.count(6,
                       "No SMAClient is made: slot, address or port has more than 255 bytes, or "
                       "there are 1024 names already that no slot has"),
            3u);
}

TEST_F(ClientMapTest, NamesThatNoSlotHas_AreBoundedAndTakeNobodysPlace) {
  for (int i = 0; i < 1500; ++i) {
    createSMAClient("3odd" + std::to_string(i), "127.0.0.1", "1", true);
  }
  EXPECT_EQ(ClientMap.size(), 1024u);
  for (const char* odd : {"", "0", "03", "+3", "-1", " 3", "16385", "99999999999"}) {
    createSMAClient(odd, "127.0.0.1", "1", false);
    EXPECT_FALSE(is_bladeRegistered(odd)) << odd;
  }
  for (const char* slot : {"1", "3", "16384"}) {
    createSMAClient(slot, "127.0.0.1", "1", true);
    EXPECT_TRUE(getBladeStatus(slot)) << slot;
  }
  EXPECT_TRUE(removeBladeMapEntry("3odd7"));
  createSMAClient("03", "127.0.0.1", "1", true);
  EXPECT_TRUE(is_bladeRegistered("03"));
}

}  // namespace
}  // namespace zan_serviceOrchAG
