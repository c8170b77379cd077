#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/agboot/AgBootstrap.h"
#include "framework/method/Wire.h"
#include "framework/net/ChannelBank.h"
#include "framework/proc/EngineLink.h"
#include "framework/proc/StateRequest.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "serviceOrchAG/svc/Registration.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/Configured.h"
#include "tests/support/ScriptedChannel.h"

// The service's start with an engine beside it. It leaves a timer and a link for the life of the
// process, which is this test's own for that reason.

namespace zan_serviceOrchAG {
namespace {

using test_support::Configured;
using test_support::ScriptedChannel;

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

}  // namespace
}  // namespace zan_serviceOrchAG
