#pragma once

#include <cstdint>
#include <memory>
#include <set>

#include "framework/base/Buffer.h"
#include "framework/os/CriticalSection.h"
#include "framework/os/ReactiveQueue.h"
#include "framework/os/ThreadPool.h"
#include "framework/proc/Stimulus.h"

namespace meta {
class Autoconfig;
}
namespace net {
class ChannelBank;
}

namespace proc {

class DmeLink;

/// The base of a service: its identity, its link to the management engine, and the queue and pool
/// on which the callbacks of arriving stimuli run.
///
/// One service lives in a process. It is created at start-up and never destroyed before the
/// process ends.
class Svc {
 public:
  /// The process's service; null until regService().
  static Svc* instance;
  /// Guards start-up and the process-wide settings of the service. Re-entrant.
  static os::CriticalSection cs;
  /// Identifiers of the objects that the service configures by itself; guarded by cs, created on
  /// first use.
  static std::set<const meta::Autoconfig*>* AUTOCONFIG_SET;

  explicit Svc(std::uint32_t serviceId);
  virtual ~Svc();
  Svc(const Svc&) = delete;
  Svc& operator=(const Svc&) = delete;

  /// Handles one arriving stimulus on the calling thread.
  virtual void operator()(const unsigned char* bytes, std::size_t size);
  /// Delivers a stimulus to the management engine and takes it over. Never blocks. One that
  /// requires a response goes at once; others leave within about a millisecond, in order. When the
  /// link's queue is full the stimulus is dropped and counted.
  virtual void send(std::unique_ptr<Stimulus> stimulus);
  /// As send(); the seam for a service that sends when its transaction commits.
  virtual void txSend(std::unique_ptr<Stimulus> stimulus);
  virtual void procBeginCb();
  virtual void procEndCb();
  virtual void optionalPause();
  /// Called by the supervisor once start-up is through.
  virtual void initSvcCb();
  virtual void invokeCallHome();
  virtual void sendSyslogMessage();
  virtual void invokeSendSnmpNotification();

  std::uint32_t serviceId() const { return serviceId_; }

  /// Fills `cookie` with bytes that no other call of this process, or of an earlier run of it, got.
  /// Thread-safe.
  static void generateCookie(base::Buffer& cookie);

  /// Opens the link to the management engine at the configured end point. Stimuli sent before it
  /// wait in the link's queue.
  void initChannels();

  /// 0 created, 1 queue at work, 2 queue and pool at work.
  void setActivationState(int state) { activationState_ = state; }
  int activationState() const { return activationState_; }
  void setReactiveQueue(os::ReactiveQueue* queue) { queue_ = queue; }
  void setThreadPool(os::ThreadPool* pool) { pool_ = pool; }
  os::ReactiveQueue* reactiveQueue() const { return queue_; }
  os::ThreadPool* threadPool() const { return pool_; }

  /// Called when the channel to the engine comes up (true) or goes down (false).
  using ChannelActivityCb = void (*)(bool up);
  void setBootstrapCb(ChannelActivityCb callback) { bootstrapCb_ = callback; }
  ChannelActivityCb bootstrapCb() const { return bootstrapCb_; }

  DmeLink& link() { return *link_; }

 private:
  const std::uint32_t serviceId_;
  int activationState_ = 0;
  os::ReactiveQueue* queue_ = nullptr;  // owned by the derived service
  os::ThreadPool* pool_ = nullptr;      // owned by the derived service
  ChannelActivityCb bootstrapCb_ = nullptr;
  std::unique_ptr<DmeLink> link_;
};

}  // namespace proc
