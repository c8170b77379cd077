#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "framework/agboot/AgBootstrap.h"
#include "framework/filter/Filter.h"
#include "framework/meta/Autoconfig.h"
#include "framework/meta/Class.h"
#include "framework/meta/Method.h"
#include "framework/mo/Mit.h"
#include "framework/mo/StimuliHelper.h"
#include "framework/mo/TreeInitializer.h"
#include "framework/proc/InitStimulus.h"
#include "framework/proc/MethodTable.h"
#include "framework/proc/StateRequest.h"
#include "framework/utils/TzTimer.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/ScriptedChannel.h"
#include "tests/support/WaitWatch.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::ScriptedChannel;

#if defined(__x86_64__)
/// The place of a virtual operation in its class's table: a pointer to one is its offset, plus one.
template <class Operation>
std::size_t placeOf(Operation operation) {
  std::uintptr_t word = 0;
  static_assert(sizeof(operation) >= sizeof(word));
  std::memcpy(&word, &operation, sizeof(word));
  return (word - 1) / sizeof(void*);
}

TEST(Svc, VirtualOperations_HaveTheirPlaces) {
  EXPECT_EQ(placeOf(&proc::Svc::operator()), 0U);
  // The two destructors are 1 and 2.
  EXPECT_EQ(placeOf(&proc::Svc::send), 3U);
  EXPECT_EQ(placeOf(&proc::Svc::txSend), 4U);
  EXPECT_EQ(placeOf(&Svc::procBeginCb), 5U);
  EXPECT_EQ(placeOf(&Svc::procEndCb), 6U);
  EXPECT_EQ(placeOf(&Svc::optionalPause), 7U);
  EXPECT_EQ(placeOf(&Svc::initSvcCb), 8U);
  EXPECT_EQ(placeOf(&Svc::invokeCallHome), 9U);
  EXPECT_EQ(placeOf(&Svc::sendSyslogMessage), 10U);
  EXPECT_EQ(placeOf(&Svc::invokeSendSnmpNotification), 11U);
}
#endif

// Start-up happens once in a process, so what follows from it is looked at in one test.
TEST(SvcInit, CalledTwiceAtOnceAndOnceMore_StartsTheServiceOnce) {
  const ScriptedChannel channels;
  const Configured configured({});
  proc::MethodTable::instance().clear();
  LogCapture log(5);
  // Both are past the first look, at the counter without the lock, before either goes on.
  proc::Svc::cs.lock();
  std::thread first([] { Svc::init(0, nullptr); });
  std::thread second([] { Svc::init(0, nullptr); });
  while (proc::Svc::cs.waiterCount() < 2) {
    std::this_thread::yield();
  }
  proc::Svc::cs.unlock();
  first.join();
  second.join();

  ASSERT_NE(proc::Svc::instance, nullptr);
  proc::Svc* const service = proc::Svc::instance;
  EXPECT_EQ(service->serviceId(), 26U);
  EXPECT_EQ(service->activationState(), 2);
  EXPECT_NE(service->reactiveQueue(), nullptr);
  EXPECT_NE(service->threadPool(), nullptr);
  EXPECT_EQ(service->bootstrapCb(), &agboot::AgBootstrap::bootstrapCb);
  EXPECT_NE(mo::Mit::instance(), nullptr);
  EXPECT_NE(mo::StimuliHelper::INSTANCE, nullptr);
  EXPECT_NE(mo::TreeInitializer::INSTANCE, nullptr);
  EXPECT_NE(filter::Filter::create("set", 1, {}), nullptr);
  EXPECT_NE(utils::TzTimer::getInstance().zone(), "");
  EXPECT_EQ(meta::Method::all().size(), 27U);
  EXPECT_FALSE(meta::Class::all().empty());
  EXPECT_EQ(proc::MethodTable::instance().size(), 27U);
  EXPECT_EQ(proc::InitStimulus::processed().wait(30000), 0U);
  EXPECT_TRUE(channels.waitForIdleWorkers(5));

  proc::MethodTable::instance().clear();
  Svc::init(0, nullptr);
  EXPECT_EQ(proc::Svc::instance, service);
  EXPECT_EQ(proc::MethodTable::instance().size(), 0U) << "registered a second time";

  EXPECT_EQ(channels.alive(), 5U) << "started the request server a second time";
  const std::vector<LogLine> expected = {
      {5, "initCb", "serviceAG Starting TzTimer..."},
      {5, "initCb", "serviceAG Timer started. Initializing MsgHandler..."},
      {5, "initCb", "serviceAG MsgHandler initialized."},
  };
  EXPECT_EQ(log.linesOf("initCb"), expected);
  EXPECT_EQ(log.count(5, "serviceAG MsgHandler callbacks registered"), 1U);
}

TEST(SvcMain, ChannelsComeUp_ReturnsAndLogsBothLines) {
  proc::StateRequest::get().reset();
  LogCapture log(5);
  test_support::WaitWatch watch;
  std::thread waiting([&watch] {
    watch.watchThisThread();
    Svc::mainCb();
  });
  EXPECT_TRUE(watch.waitUntilWaiting());
  EXPECT_EQ(log.linesOf("mainCb").size(), 1U) << "did not wait";
  proc::StateRequest::get().processStateResponse(1, 1, 1);
  waiting.join();
  const std::vector<LogLine> expected = {
      {5, "mainCb", "Waiting for channel init..."},
      {5, "mainCb", ".... Channel initialized. "},
  };
  EXPECT_EQ(log.linesOf("mainCb"), expected);
}

// The timer, once there, stays for the life of the process.
TEST(LogControlRefresh, Interval_IsKeptUnlessItIsZeroAndAppliesAtOnce) {
  using std::chrono::milliseconds;
  const test_support::RecordingSvc service;
  test_support::ManualClock clock;
  Svc::setLogControlRefreshInterval(0);
  EXPECT_EQ(Svc::getLogControlRefreshInterval(), 0U);
  Svc::setLogControlRefreshInterval(120000);
  EXPECT_EQ(Svc::getLogControlRefreshInterval(), 120000U);
  EXPECT_TRUE(clock.waitForDeadline(milliseconds(120000)));
  Svc::setLogControlRefreshInterval(0);
  EXPECT_EQ(Svc::getLogControlRefreshInterval(), 120000U);
  Svc::setLogControlRefreshInterval(90000);
  EXPECT_EQ(Svc::getLogControlRefreshInterval(), 90000U);
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(90000)));
  EXPECT_TRUE(service.sent().empty());
  clock.advance(milliseconds(90000));
  EXPECT_TRUE(service.waitForSent(1));
  EXPECT_EQ(service.sent(502).size(), 1U);
  // The next tick is ten minutes off: none may come once the two stand-ins are gone.
  Svc::setLogControlRefreshInterval(600000);
  EXPECT_TRUE(clock.waitForDeadline(milliseconds(600000)));
}

TEST(Autoconfig, IdentifierThatIsInTheSet_LeavesItAsItIs) {
  static constexpr meta::Autoconfig kFirst(1, "first");
  static constexpr meta::Autoconfig kSecond(2, "second");
  Svc::addAutoconfig(&kFirst);
  ASSERT_NE(proc::Svc::AUTOCONFIG_SET, nullptr);
  const std::size_t size = proc::Svc::AUTOCONFIG_SET->size();
  Svc::addAutoconfig(&kFirst);
  EXPECT_EQ(proc::Svc::AUTOCONFIG_SET->size(), size);
  Svc::addAutoconfig(&kSecond);
  EXPECT_EQ(proc::Svc::AUTOCONFIG_SET->size(), size + 1);
}

TEST(Autoconfig, InitAutoconfigSet_AddsNothing) {
  const auto* const before = proc::Svc::AUTOCONFIG_SET;
  const std::size_t size = before == nullptr ? 0 : before->size();
  Svc::initAutoconfigSet();
  EXPECT_EQ(proc::Svc::AUTOCONFIG_SET, before);
  EXPECT_EQ(before == nullptr ? 0 : before->size(), size);
}

}  // namespace
}  // namespace zan_serviceOrchAG
