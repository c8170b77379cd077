#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "framework/agboot/AgBootstrap.h"
#include "framework/filter/Filter.h"
#include "framework/meta/Autoconfig.h"
#include "framework/meta/Class.h"
#include "framework/meta/Method.h"
#include "framework/method/Wire.h"
#include "framework/mo/Mit.h"
#include "framework/mo/StimuliHelper.h"
#include "framework/mo/TreeInitializer.h"
#include "framework/net/ChannelBank.h"
#include "framework/proc/EngineLink.h"
#include "framework/proc/InitStimulus.h"
#include "framework/proc/MethodTable.h"
#include "framework/proc/StateRequest.h"
#include "framework/utils/TzTimer.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "serviceOrchAG/svc/Registration.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::Configured;
using test_support::LogCapture;
using test_support::ScriptedChannel;

/// The lines of one function, in order.
std::vector<std::string> linesOf(const LogCapture& log, const std::string& function) {
  std::vector<std::string> texts;
  for (const test_support::LogLine& line : log.lines()) {
    if (line.function == function) {
      texts.push_back(std::to_string(line.level) + " " + line.text);
    }
  }
  return texts;
}

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
  const std::vector<std::string> expected = {
      "5 serviceAG Starting TzTimer...",
      "5 serviceAG Timer started. Initializing MsgHandler...",
      "5 serviceAG MsgHandler initialized.",
  };
  EXPECT_EQ(linesOf(log, "initCb"), expected);
  EXPECT_EQ(log.count(5, "serviceAG MsgHandler callbacks registered"), 1U);
}

TEST(SvcMain, ChannelsComeUp_ReturnsAndLogsBothLines) {
  proc::StateRequest::get().reset();
  LogCapture log(5);
  std::thread waiting([] { Svc::mainCb(); });
  EXPECT_TRUE(log.waitFor(5, "Waiting for channel init..."));
  for (int i = 0; i < 1000; ++i) {
    std::this_thread::yield();
  }
  EXPECT_EQ(linesOf(log, "mainCb").size(), 1U) << "did not wait";
  proc::StateRequest::get().processStateResponse(1, 1, 1);
  waiting.join();
  const std::vector<std::string> expected = {
      "5 Waiting for channel init...",
      "5 .... Channel initialized. ",
  };
  EXPECT_EQ(linesOf(log, "mainCb"), expected);
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

/// The other end of the service's link: keeps what arrives and answers when it is told to.
class Engine {
 public:
  explicit Engine(const std::string& endPoint) : link_(endPoint) {
    link_.start([this](auto, const unsigned char* bytes, std::size_t size) {
      const std::lock_guard guard(lock_);
      received_.emplace_back(bytes, bytes + size);
      arrived_.notify_all();
    });
  }

  /// The first call of this method, waited for; null after 30 seconds.
  template <class Me>
  std::unique_ptr<Me> firstCall() {
    std::unique_lock lock(lock_);
    std::unique_ptr<Me> call;
    const auto isThere = [&] {
      for (std::size_t i = 0; i < received_.size() && call == nullptr; ++i) {
        call = method::decodeCall<Me>(received_[i].data(), received_[i].size());
      }
      return call != nullptr;
    };
    arrived_.wait_for(lock, std::chrono::seconds(30), isThere);
    return call;
  }

  /// The class of the call that arrived first; 0 before.
  std::uint32_t firstClass() {
    const std::lock_guard guard(lock_);
    if (received_.empty()) {
      return 0;
    }
    const auto header = method::readHeader(received_[0].data(), received_[0].size());
    return header == nullptr ? 0 : header->classId();
  }

  void send(const base::OBioStream& bytes) {
    link_.send(proc::EngineLink::kLatestPeer, bytes, true);
  }

 private:
  std::mutex lock_;
  std::condition_variable arrived_;
  std::vector<std::vector<unsigned char>> received_;  // guarded by lock_
  proc::EngineLink link_;                             // last: its thread uses the rest
};

TEST(SvcInitSvc, EngineIsThere_IsAskedForTheStateAndThenForTheBootstrap) {
  const ScriptedChannel channels;
  const Configured configured({"dme.endpoint=inproc://engine-of-start-up-test"});
  Svc::init(0, nullptr);
  registerCallbacks();
  proc::StateRequest::get().reset();
  agboot::AgBootstrap::get().reset();
  Engine engine("inproc://engine-of-start-up-test");
  proc::Svc::instance->initSvcCb();

  const auto state = engine.firstCall<dmeapi::ClusterStateRequestMe>();
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(engine.firstClass(), 446U);
  EXPECT_EQ(state->address().sender, 4U);
  const auto bootstrap = engine.firstCall<agboot::BootstrapMe>();
  ASSERT_NE(bootstrap, nullptr);
  EXPECT_EQ(bootstrap->intent(), 0x10U);
  EXPECT_EQ(Svc::getLogControlRefreshInterval(), 120000U);

  dmeapi::ClusterStateMe up;
  up.setResponseRequired(false);
  up.in = {7, 1, 3};
  engine.send(method::encodeCall(up));
  Svc::mainCb();
  EXPECT_EQ(proc::StateRequest::get().state().clusterId, 7U);
  ASSERT_NE(proc::Svc::instance->channelBank(), nullptr);
  const auto channel = proc::Svc::instance->channelBank()->find("dme");
  ASSERT_TRUE(channel.has_value());
  EXPECT_EQ(channel->endPoint, "inproc://engine-of-start-up-test");
  engine.send(method::encodeAnswer(*bootstrap, {}));
  EXPECT_NE(engine.firstCall<agboot::BootstrapDoneMe>(), nullptr);
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
