#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "framework/core_log/Log.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::RegistryCleaner;
using test_support::ScriptedChannel;
using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::Pair;

// Slot 3 has a client, slot 4 has none.

struct Operation {
  const char* name;
  void (*run)();
};

void makeClient() {
  std::string slot = "4";
  std::string ip = "10.0.0.4";
  new SMAClient(slot, ip, 1, true);
}

void pointClient() {
  std::string slot = "3";
  std::string ip = "10.0.0.3";
  ClientMap.at("3")->setClientChannel(slot, ip, 1);
}

constexpr Operation kOperations[] = {
    {"is_bladeRegistered",
     [] {
       is_bladeRegistered("3");
     }},
    {"getBladeStatus",
     [] {
       getBladeStatus("3");
     }},
    {"setBladeStatus",
     [] {
       setBladeStatus("3", false);
     }},
    {"removeBladeMapEntry",
     [] {
       removeBladeMapEntry("3");
     }},
    {"createSMAClient",
     [] {
       createSMAClient("4", "10.0.0.4", "1", true);
     }},
    {"sendMsg",
     [] {
       sendMsg("3", "<a/>", "stopApp");
     }},
    {"SMAClient", makeClient},
    {"setClientChannel", pointClient},
    {"resetClientChannel",
     [] {
       ClientMap.at("3")->resetClientChannel();
     }},
    {"deletion",
     [] {
       delete ClientMap.at("3");
     }},
};

void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.name;
}

class RegistryLock : public testing::TestWithParam<Operation> {
 protected:
  RegistryLock() { createSMAClient("3", "10.0.0.3", "1", true); }

  ScriptedChannel channels_;
  const RegistryCleaner cleaner_{};
};
INSTANTIATE_TEST_SUITE_P(All, RegistryLock, testing::ValuesIn(kOperations),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(RegistryLock, HeldByAnother_TheOperationWaitsAndChangesNothing) {
  channels_.onReceive(ScriptedChannel::Parts{"a", "b", "c", "d", "e"});
  const std::size_t eventCount = channels_.events().size();
  std::optional<os::CriticalSection::Guard> held(Critical_section_lock);
  std::future<void> done = std::async(std::launch::async, GetParam().run);
  while (Critical_section_lock.waiterCount() == 0) {
    ASSERT_EQ(done.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    std::this_thread::yield();
  }
  EXPECT_EQ(ClientMap.size(), 1U);
  EXPECT_TRUE(getBladeStatus("3"));
  EXPECT_EQ(channels_.events().size(), eventCount);
  held.reset();
  done.get();
  EXPECT_FALSE(Critical_section_lock.isHeldByCaller());
  EXPECT_EQ(Critical_section_lock.waiterCount(), 0U);
}

// ----- What is done under it ------------------------------------------------------------------

/// The lines that are written while it lives, with whether something was so in that moment: that
/// their thread held the lock, unless it is asked for something else.
class LockedLines final : private core_log::Observer {
 public:
  explicit LockedLines(std::function<bool()> isSo =
                           [] { return Critical_section_lock.isHeldByCaller(); })
      : levelBefore_(core_log::serviceLevel().get()), isSo_(std::move(isSo)) {
    core_log::setObserver(this);
    core_log::setLevel(0);
  }
  ~LockedLines() override {
    core_log::setLevel(levelBefore_);
    core_log::setObserver(nullptr);
  }
  LockedLines(const LockedLines&) = delete;
  LockedLines& operator=(const LockedLines&) = delete;

  const std::vector<std::pair<std::string, bool>>& lines() const { return lines_; }

 private:
  void onLine(int /*level*/, std::string_view /*function*/, std::string_view text) override {
    lines_.emplace_back(text, isSo_());
  }

  const int levelBefore_;
  const std::function<bool()> isSo_;
  std::vector<std::pair<std::string, bool>> lines_;
};

class RegistryLockLines : public testing::Test {
 protected:
  RegistryLockLines() { createSMAClient("3", "10.0.0.3", "1", true); }

  ScriptedChannel channels_;
  const RegistryCleaner cleaner_{};
};

TEST_F(RegistryLockLines, Deletion_ClosesTheChannelAndErasesTheEntry) {
  const LockedLines lines;
  delete ClientMap.at("3");
  EXPECT_THAT(lines.lines(), ElementsAre(Pair("deleting smaClient... for slot 3", false),
                                         Pair("deleting channel for slot 3", true),
                                         Pair("deleting registered slot 3 entry from map", true)));
}

TEST_F(RegistryLockLines, Deletion_ClosesTheChannelFirst) {
  const LockedLines lines([this] { return channels_.alive() == 0; });
  delete ClientMap.at("3");
  EXPECT_THAT(lines.lines(), ElementsAre(Pair("deleting smaClient... for slot 3", false),
                                         Pair("deleting channel for slot 3", false),
                                         Pair("deleting registered slot 3 entry from map", true)));
}

TEST_F(RegistryLockLines, Removal_FindsAndDeletesTheClient) {
  const LockedLines lines;
  EXPECT_TRUE(removeBladeMapEntry("3"));
  EXPECT_EQ(3U, lines.lines().size());
  EXPECT_THAT(lines.lines(), Each(Pair(_, true)));
}

TEST_F(RegistryLockLines, Reset_MakesTheChannel) {
  const LockedLines lines;
  ClientMap.at("3")->resetClientChannel();
  EXPECT_THAT(
      lines.lines(),
      ElementsAre(Pair("resetting smaClient channel... for slot 3", false),
                  Pair("Set server end point for slot 3 : tcp://10.0.0.3:1", true),
                  Pair("SMAClient::resetClientChannel() for slot 3 end point: 10.0.0.3:1", false)));
}

TEST_F(RegistryLockLines, Making_EntersTheClient) {
  const LockedLines lines;
  createSMAClient("4", "10.0.0.4", "1", true);
  EXPECT_THAT(lines.lines(),
              ElementsAre(Pair("Adding SMAClient in map for slot 4", true),
                          Pair("Set server end point for slot 4 : tcp://10.0.0.4:1", true),
                          Pair("Registered SMAClient for slot 4 at 10.0.0.4:1", false)));
}

TEST_F(RegistryLockLines, Command_IsSentAndItsChannelReplaced) {
  channels_.onReceive(0);
  const LockedLines lines;
  EXPECT_EQ(578U, sendMsg("3", "<a/>", "stopApp"));
  EXPECT_EQ(7U, lines.lines().size());
  EXPECT_THAT(lines.lines(), Each(Pair(_, true)));
}

}  // namespace
}  // namespace zan_serviceOrchAG
