#include "dme/Engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "framework/base/SvcConfigParams.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/DiskFileSystemMo.h"
#include "model/sm/MonitorMo.h"
#include "tests/dme/support/EngineClient.h"
#include "tests/dme/support/ServiceStandIn.h"
#include "tests/dme/support/TempDirectory.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"

namespace dme {
namespace {

using dme_test::ServiceStandIn;
using Client = dme_test::EngineClient;
using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateAppInstancesMe;
using serviceorchapi::ValidateBladeStateMe;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// How often blades are judged that beat once a second.
constexpr milliseconds kStep{250};

class EngineFixture : public testing::Test {
 protected:
  EngineConfig config(const std::string& name = "state") const {
    // The directory's name makes the end point this test's own.
    return {directory_.file(name),
            "",
            "ipc://" + directory_.file(name + ".ipc"),
            {seconds(1), 3, seconds(30)}};
  }
  static std::unique_ptr<Engine> started(const EngineConfig& config) {
    Result<std::unique_ptr<Engine>> engine = Engine::open(config);
    EXPECT_TRUE(engine) << engine.error().text;
    const Result<void> start = (*engine)->start();
    EXPECT_TRUE(start) << start.error().text;
    return std::move(*engine);
  }
  static std::string errorOf(const EngineConfig& config) {
    const Result<std::unique_ptr<Engine>> engine = Engine::open(config);
    return engine ? "opened" : engine.error().text;
  }

  /// Blades in the slots 1 and 2, which beat once.
  static void admitTwo(Client& client) {
    client.admit(1);
    client.admit(2);
    client.beat(1, 1);
    client.beat(2, 1);
    client.settle();
  }

  dme_test::TempDirectory directory_;
};

using EngineTest = EngineFixture;

TEST_F(EngineTest, Blade_IsAdmittedAndSeenInTheQueries) {
  const auto engine = started(config());
  Client client(engine->endPoint());
  const base::String token = client.admit(3);
  client.beat(3, 7);
  client.beat(3, 9);
  client.settle();

  const std::optional<SlotView> view = engine->slot(3);
  ASSERT_TRUE(view);
  EXPECT_EQ(view->slot, 3u);
  EXPECT_EQ(view->admission, sd::Admission::kValid);
  EXPECT_TRUE(view->hasToken);
  EXPECT_EQ(view->runningVersion, "1.2");
  EXPECT_EQ(view->registrations, 2u);
  EXPECT_EQ(view->state, BladeMonitor::State::kAlive);
  EXPECT_EQ(view->beats, 2u);
  EXPECT_EQ(view->missed, 1u);
  EXPECT_EQ(view->lastCount, 9u);
  EXPECT_TRUE(view->sinceLastBeat);
  EXPECT_EQ(engine->slots().size(), 1u);
  EXPECT_FALSE(engine->slot(4));
  EXPECT_FALSE(engine->slot(4294967295U));

  const EngineStatus status = engine->status();
  EXPECT_EQ(status.epoch, 1u);
  EXPECT_EQ(status.slots, 1u);
  EXPECT_EQ(status.alive, 1u);
  EXPECT_EQ(status.dropped, 0u);
  EXPECT_GE(status.commits.commits, 2u);
}

TEST_F(EngineTest, Restarted_KnowsItsBladesAndGivesThemGrace) {
  base::String token;
  std::uint64_t cluster = 0;
  {
    const auto engine = started(config());
    Client client(engine->endPoint());
    token = client.admit(3);
    client.call<ValidateBladeStateMe>({4, "1.2", ""});
    cluster = engine->status().clusterId;
  }
  const auto engine = started(config());
  EXPECT_EQ(engine->status().epoch, 2u);
  EXPECT_EQ(engine->status().clusterId, cluster);
  EXPECT_TRUE(engine->slot(3)->isWatched);
  EXPECT_EQ(engine->slot(3)->state, BladeMonitor::State::kUnknown);
  EXPECT_FALSE(engine->slot(4)->isWatched) << "never was valid";
  Client client(engine->endPoint());
  EXPECT_EQ(client.call<ValidateBladeStateMe>({3, "1.2", token}).me->out,
            std::make_tuple(token, true, false));
}

TEST_F(EngineTest, ProcessThatStoodStill_HearsBeforeItJudges) {
  test_support::ManualClock clock;
  const test_support::LogCapture log(5);
  const auto engine = started(config());
  Client client(engine->endPoint());
  admitTwo(client);
  ASSERT_TRUE(clock.waitForDeadline(kStep));
  clock.advance(seconds(40));
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(1500)));
  client.beat(1, 2);
  client.settle();
  EXPECT_EQ(engine->status().silent, 0u);
  clock.advance(milliseconds(1500));  // in which the other one has not been heard
  ASSERT_TRUE(clock.waitForDeadline(kStep));
  EXPECT_EQ(engine->status().alive, 1u);
  EXPECT_EQ(engine->status().silent, 1u);
  EXPECT_FALSE(engine->status().areActionsHeld);
}

TEST_F(EngineTest, BladesFallSilent_AreJudgedAsTimePassesAndHoldActions) {
  test_support::ManualClock clock;
  const test_support::LogCapture log(5);
  const auto engine = started(config());
  Client client(engine->endPoint());
  admitTwo(client);
  EXPECT_EQ(engine->status().alive, 2u);
  for (int step = 0; step < 16; ++step) {
    ASSERT_TRUE(clock.waitForDeadline(kStep));
    clock.advance(kStep);
  }
  EXPECT_TRUE(log.waitFor(8, "2 of 2 blades fell silent together: automatic actions are held"));
  EXPECT_EQ(engine->status().silent, 2u);
  EXPECT_TRUE(engine->status().areActionsHeld);
  EXPECT_EQ(engine->slot(1)->sinceLastBeat, milliseconds(4000));
}

TEST_F(EngineTest, TwoInOneProcess_HaveNothingInCommon) {
  const auto left = started(config("left"));
  const auto right = started(config("right"));
  Client leftClient(left->endPoint());
  Client rightClient(right->endPoint());
  const base::String leftToken = leftClient.admit(3);
  const base::String rightToken = rightClient.admit(3);
  EXPECT_NE(leftToken, rightToken);
  EXPECT_NE(left->status().clusterId, right->status().clusterId);
  leftClient.admit(4);
  EXPECT_FALSE(right->slot(4));
}

TEST_F(EngineTest, InProcessEndPoint_Works) {
  EngineConfig inProcess = config();
  inProcess.endPoint = "inproc://engine-test";
  const auto engine = started(inProcess);
  Client client("inproc://engine-test");
  client.admit(3);
  EXPECT_TRUE(engine->slot(3)->hasToken);
}

TEST_F(EngineTest, SecondOnOneDirectory_IsRefused) {
  const auto engine = started(config());
  EXPECT_EQ(errorOf(config()), directory_.file("state") + " is in use by process " +
                                   std::to_string(::getpid()) +
                                   ": stop it, or configure another state directory");
}

TEST_F(EngineTest, EndPointTaken_FailsWithOneLineNamingIt) {
  EngineConfig first = config();
  first.endPoint = "tcp://127.0.0.1:*";
  const auto engine = started(first);
  EngineConfig other = config("other");
  other.endPoint = engine->endPoint();
  Result<std::unique_ptr<Engine>> second = Engine::open(other);
  ASSERT_TRUE(second);
  const Result<void> start = (*second)->start();
  ASSERT_FALSE(start);
  EXPECT_NE(start.error().text.find(other.endPoint), std::string::npos) << start.error().text;
  EXPECT_NE(start.error().text.find("Address already in use"), std::string::npos)
      << start.error().text;
  EXPECT_EQ(start.error().text.find('\n'), std::string::npos);
}

TEST_F(EngineTest, ChassisFile_CountsOnTheFirstStartOnly) {
  EngineConfig described = config();
  described.chassisFile = directory_.file("chassis.toml");
  EXPECT_EQ(errorOf(described),
            directory_.file("chassis.toml") + ": cannot be read: No such file or directory");
  dme_test::writeBytes(described.chassisFile, "[[slot]]\nnumber = 1\nnumber = 2\n");
  EXPECT_TRUE(errorOf(described).starts_with(described.chassisFile + ":3: ")) << errorOf(described);
  dme_test::writeBytes(described.chassisFile, "[[slot]]\nnumber = 1\nname = \"left\"\n");
  {
    const auto engine = started(described);
    ASSERT_TRUE(engine->slot(1));
    EXPECT_EQ(engine->slot(1)->name, "left");
    Client client(engine->endPoint());
    EXPECT_EQ(client.call<ValidateBladeStateMe>({2, "1.2", ""}).failure->text,
              "slot 2 is not part of the chassis");
  }
  dme_test::writeBytes(described.chassisFile, "no TOML at all");
  const auto engine = started(described);
  EXPECT_EQ(engine->slots().size(), 1u);
}

TEST_F(EngineTest, StoppedUnderTraffic_EndsWithinTwoSecondsAndLosesNoToken) {
  base::String token;
  {
    const auto engine = started(config());
    Client client(engine->endPoint());
    token = client.admit(1);
    std::atomic<bool> isOver{false};
    std::thread traffic([&] {
      for (std::uint32_t i = 0; !isOver; ++i) {
        client.beat(1, i);
        client.send(ServiceStandIn::encode<ValidateBladeStateMe>({2 + i % 50, "1.2", ""}));
      }
    });
    client.settle();
    const auto before = std::chrono::steady_clock::now();
    engine->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - before, seconds(2));
    engine->stop();
    isOver = true;
    traffic.join();
  }
  const auto engine = started(config());
  Client client(engine->endPoint());
  EXPECT_EQ(client.call<ValidateBladeStateMe>({1, "1.2", ""}).me->out,
            std::make_tuple(token, true, false));
}

TEST_F(EngineTest, NeverStarted_Stops) {
  Result<std::unique_ptr<Engine>> engine = Engine::open(config());
  ASSERT_TRUE(engine);
  EXPECT_EQ((*engine)->endPoint(), "");
  (*engine)->stop();
}

TEST_F(EngineTest, QueriesWhileItWorks_AreConsistent) {
  const auto engine = started(config());
  Client client(engine->endPoint());
  client.admit(1);
  std::atomic<bool> isOver{false};
  std::thread observer([&] {
    std::uint64_t last = 0;
    while (!isOver) {
      const std::uint64_t beats = engine->slot(1)->beats;
      EXPECT_GE(beats, last);
      last = beats;
      EXPECT_EQ(engine->status().watched, 1u);
    }
  });
  for (std::uint32_t i = 0; i < 2000; ++i) {
    client.beat(1, i);
  }
  client.settle();
  isOver = true;
  observer.join();
  EXPECT_EQ(engine->slot(1)->beats, 2000u);
  EXPECT_EQ(engine->slot(1)->duplicates + engine->slot(1)->missed, 0u);
}

method::Config monitorReport(const base::String& version) {
  sm::MonitorMo monitor;
  monitor.set(sm::MonitorMo::kOsVersion, version);
  return monitor.toConfig();
}

TEST_F(EngineTest, Reports_AreSeenInTheModelWithoutTokensAndSurvive) {
  dme_test::writeBytes(directory_.file("chassis.toml"),
                       "[[slot]]\nnumber = 3\napps = [{id = \"a1\", state = \"stopped\"}]\n");
  EngineConfig described = config();
  described.chassisFile = directory_.file("chassis.toml");
  described.wallClock = [] {
    return std::uint64_t{1700000000000};
  };
  std::vector<ObjectView> seen;
  {
    const auto engine = started(described);
    Client client(engine->endPoint());
    const base::String token = client.admit(3);
    EXPECT_FALSE(client.call<UpdatePlatformInfoMe>({3, monitorReport("1.2"), {}}).failure);
    EXPECT_FALSE(client.call<ValidateAppInstancesMe>({3, {}}).failure);
    EXPECT_TRUE(client.call<ValidateAppInstancesMe>({4, {}}).failure);
    seen = engine->model(mo::Dn("sys/chassis-1/slot-3"));
    EXPECT_EQ(engine->status().methods.reports.refused, 1u);
    for (const ObjectView& view : seen) {
      for (const auto& [name, value] : view.values) {
        EXPECT_NE(value, method::Value(token)) << name;
      }
    }
  }
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[0].className, "slot");
  EXPECT_EQ(seen[1].dn, "sys/chassis-1/slot-3/app-a1");
  EXPECT_EQ(seen[2].dn, "sys/chassis-1/slot-3/app-a1/fault-missing");
  EXPECT_EQ(seen[3], (ObjectView{"sys/chassis-1/slot-3/monitor",
                                 "monitor",
                                 {{"osVersion", base::String("1.2")},
                                  {"observedAt", method::Value(std::uint64_t{1700000000000})}}}));
  const auto restarted = started(config());
  const auto after = restarted->model(mo::Dn("sys/chassis-1/slot-3"));
  EXPECT_TRUE(std::equal(seen.begin() + 1, seen.end(), after.begin() + 1, after.end()));
}

TEST_F(EngineTest, ModelReadWhileReportsArrive_ShowsWholeReports) {
  const auto engine = started(config());
  Client client(engine->endPoint());
  client.admit(1);
  client.call<UpdatePlatformInfoMe>({1, monitorReport("0"), {}});
  std::atomic<bool> isOver{false};
  std::thread observer([&] {
    while (!isOver) {
      const auto views = engine->model(mo::Dn("sys/chassis-1/slot-1/monitor"));
      ASSERT_FALSE(views.empty());
      const method::Value version = views[0].values[0].second;
      EXPECT_EQ(views.size() - 1, std::stoul(std::get<base::String>(version).str()) % 5);
      for (std::size_t i = 1; i < views.size(); ++i) {
        EXPECT_EQ(views[i].values[0].second, version);
      }
    }
  });
  for (unsigned i = 1; i <= 500; ++i) {
    sm::DiskFileSystemMo disk;
    disk.set(sm::DiskFileSystemMo::kDiskName, std::to_string(i));
    method::ConfigSet disks;
    for (unsigned j = 0; j < i % 5; ++j) {
      disks.append(disk.toConfig());
    }
    client.send(ServiceStandIn::encode<UpdatePlatformInfoMe>(
        {1, monitorReport(std::to_string(i)), disks}, "c", false));
  }
  client.settle();
  isOver = true;
  observer.join();
  EXPECT_EQ(engine->model(mo::Dn("sys/chassis-1/slot-1/monitor"))[0].values[0].second,
            method::Value(base::String("500")));
}

TEST_F(EngineTest, Configuration_ComesFromTheSupervisors) {
  base::SvcConfigParams& params = base::SvcConfigParams::getInstance();
  const auto loaded = params.loadText(
      "[supervisor]\nstate_dir = \"/var/lib/x\"\n[dme]\nendpoint = \"inproc://y\"\n"
      "chassis = \"/etc/z.toml\"\nheartbeat_interval = 7\nheartbeat_misses = 5\ngrace = 90\n");
  ASSERT_TRUE(loaded) << loaded.error();
  const EngineConfig config = EngineConfig::from(params);
  params.reset();
  EXPECT_EQ(config.stateDir, "/var/lib/x");
  EXPECT_EQ(config.endPoint, "inproc://y");
  EXPECT_EQ(config.chassisFile, "/etc/z.toml");
  EXPECT_EQ(config.monitor.interval, seconds(7));
  EXPECT_EQ(config.monitor.misses, 5u);
  EXPECT_EQ(config.monitor.grace, seconds(90));
}

}  // namespace
}  // namespace dme
