#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

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
  static os::CriticalSection& cs;
  /// Identifiers of the objects that the service configures by itself; guarded by cs, created on
  /// first use.
  static std::set<const meta::Autoconfig*>* AUTOCONFIG_SET;

  /// What arrived and came to nothing, since the process started.
  struct Refused {
    std::uint64_t undecodable = 0;  ///< no stimulus, or arguments that do not decode
    std::uint64_t unhandled = 0;    ///< of a class that nothing is registered for
    std::uint64_t overflow = 0;     ///< not taken by the queue: seen already, or shutting down
  };

  explicit Svc(std::uint32_t serviceId);
  Svc(const Svc&) = delete;
  Svc& operator=(const Svc&) = delete;

  // The virtual operations keep their order: a service library that was built apart calls and
  // overrides them by their places in the table.

  /// Takes one arriving stimulus, copying it, and queues it for handle(); handles it on the calling
  /// thread while there is no queue. Called on the link's thread; does not block then.
  virtual void operator()(const unsigned char* bytes, std::size_t size);
  virtual ~Svc();
  /// Delivers a stimulus to the management engine and takes it over. Never blocks. One that
  /// requires a response goes at once; others leave within about a millisecond, in order. When the
  /// link's queue is full the stimulus is dropped and counted.
  virtual void send(std::unique_ptr<Stimulus> stimulus);
  /// As send(); the seam for a service that sends when its transaction commits.
  virtual void txSend(std::unique_ptr<Stimulus> stimulus);
  /// Around the callbacks of each stimulus, on the thread that runs them. Do nothing here.
  virtual void procBeginCb();
  virtual void procEndCb();
  /// On the queue's thread, before an item leaves for the pool: a place to hold the queue back.
  /// Does nothing here.
  virtual void optionalPause();
  /// Called by the supervisor once start-up is through. Here: begins to ask the engine every five
  /// seconds whether it is there. Needs initChannels().
  virtual void initSvcCb();
  /// The service's ways to raise a notice outside of the chassis. Do nothing here.
  virtual void invokeCallHome();
  virtual void sendSyslogMessage();
  virtual void invokeSendSnmpNotification();

  /// Calls the callbacks of one stimulus on the calling thread. False when the stimulus was refused
  /// or its method failed. A call that requires a response is answered whatever happens: a class
  /// without a handler, arguments that do not decode and an exception are answered as failures,
  /// logged and counted. What callbacks throw does not leave it.
  bool handle(const unsigned char* bytes, std::size_t size);
  Refused refused() const;

  std::uint32_t serviceId() const { return serviceId_; }

  /// Fills `cookie` with bytes that no other call of this process, or of an earlier run of it, got.
  /// Thread-safe.
  static void generateCookie(base::Buffer& cookie);

  /// Opens the link to the management engine at the configured end point. Stimuli sent before it
  /// wait in the link's queue. Throws std::runtime_error naming the end point and the cause.
  void initChannels();
  /// Where the channel to the engine is entered, under kEngineChannel; null for nowhere. Borrowed;
  /// to be set before initChannels().
  void setChannelBank(net::ChannelBank* bank) { bank_ = bank; }
  net::ChannelBank* channelBank() const { return bank_; }
  static constexpr const char* kEngineChannel = "dme";

  /// 0 created, 1 queue at work, 2 queue and pool at work.
  void setActivationState(int state) { activationState_ = state; }
  int activationState() const { return activationState_; }
  void setReactiveQueue(os::ReactiveQueue* queue) { queue_ = queue; }
  void setThreadPool(os::ThreadPool* pool) { pool_ = pool; }
  os::ReactiveQueue* reactiveQueue() const { return queue_; }
  os::ThreadPool* threadPool() const { return pool_; }

  /// Called when the engine is there (true) or goes away (false), on the link's thread or the timer
  /// thread; must not block. To be set before initChannels().
  using ChannelActivityCb = void (*)(bool up);
  void setBootstrapCb(ChannelActivityCb callback) { bootstrapCb_ = callback; }
  ChannelActivityCb bootstrapCb() const { return bootstrapCb_; }

  DmeLink& link() { return *link_; }

 private:
  class ProbeTimer;

  bool handleCall(StimulusHeader& header, const unsigned char* bytes, std::size_t size);
  bool handleAnswer(const unsigned char* bytes, std::size_t size);
  void channelActivity(bool up);

  const std::uint32_t serviceId_;
  std::atomic<int> activationState_{0};
  std::atomic<os::ReactiveQueue*> queue_{nullptr};  // owned by the derived service
  std::atomic<os::ThreadPool*> pool_{nullptr};      // owned by the derived service
  ChannelActivityCb bootstrapCb_ = nullptr;
  net::ChannelBank* bank_ = nullptr;  // owned by the derived service
  std::string endPoint_;              // constant once the channels are open

  std::atomic<std::uint64_t> undecodable_{0};
  std::atomic<std::uint64_t> unhandled_{0};
  std::atomic<std::uint64_t> overflow_{0};

  std::unique_ptr<DmeLink> link_;
  std::unique_ptr<ProbeTimer> probeTimer_;  // uses the link
};

}  // namespace proc
