#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "framework/base/SvcConfigParams.h"
#include "framework/mo/Transactor.h"
#include "framework/os/ReactiveQueue.h"
#include "framework/os/ThreadPool.h"
#include "framework/proc/App.h"
#include "framework/proc/DmeLink.h"
#include "framework/proc/Doer.h"
#include "framework/proc/MethodTable.h"
#include "framework/proc/QueueDeduplicatorImpl.h"
#include "framework/proc/StateRequest.h"
#include "framework/proc/Svc.h"

namespace test_support {

/// A service as a gateway sets one up, with queue and pool at work, and its end.
class TestService {
 public:
  TestService() {
    proc::regService(&app, &svc, "test");
    svc.setActivationState(1);
    svc.setReactiveQueue(queue.get());
    queue->activate();
    svc.setActivationState(2);
    svc.setThreadPool(pool.get());
    pool->activate();
  }
  ~TestService() {
    svc.link().close();
    queue.reset();
    pool.reset();
    proc::Svc::instance = nullptr;
    proc::MethodTable::instance().clear();
    proc::StateRequest::get().reset();
    base::SvcConfigParams::getInstance().reset();
  }
  TestService(const TestService&) = delete;
  TestService& operator=(const TestService&) = delete;

  /// Opens the channels to the engine at this end point.
  void connect(const std::string& endPoint) {
    const auto loaded = base::SvcConfigParams::getInstance().loadText(
        "[supervisor]\nstate_dir = \"/var/lib/zedd\"\n[dme]\nendpoint = \"" + endPoint + "\"\n");
    if (!loaded) {
      throw std::runtime_error(loaded.error());
    }
    svc.initChannels();
  }

  proc::App app{1};
  mo::Transactor transactor{0, 1};
  proc::Svc svc{26};
  proc::Doer doer{&transactor};
  proc::QueueDeduplicatorImpl deduplicator{32};
  std::unique_ptr<os::ThreadPool> pool = std::make_unique<os::ThreadPool>(8, 32, 8, false);
  std::unique_ptr<os::ReactiveQueue> queue =
      std::make_unique<os::ReactiveQueue>(&doer, &deduplicator, false);
};

}  // namespace test_support
