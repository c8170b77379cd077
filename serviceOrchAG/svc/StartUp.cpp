#include <atomic>
#include <cstddef>
#include <memory>
#include <set>
#include <span>
#include <utility>

#include "framework/agboot/AgBootstrap.h"
#include "framework/base/String.h"
#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"
#include "framework/dmemem/Mit.h"
#include "framework/filter/Filter.h"
#include "framework/mo/Mit.h"
#include "framework/mo/StimuliHelper.h"
#include "framework/mo/Transactor.h"
#include "framework/mo/TreeInitializer.h"
#include "framework/net/ChannelBank.h"
#include "framework/os/CriticalSection.h"
#include "framework/proc/App.h"
#include "framework/proc/Doer.h"
#include "framework/proc/InitStimulus.h"
#include "framework/proc/QueueDeduplicatorImpl.h"
#include "framework/proc/StateRequest.h"
#include "framework/proc/Timer.h"
#include "framework/utils/TzTimer.h"
#include "model/Catalog.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Registration.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {
namespace {

using Guard = os::CriticalSection::Guard;

constexpr int kInformation = 5;
constexpr unsigned int kLogControlRefreshMs = 120000;
constexpr int kApplicationId = 1;
constexpr unsigned int kNoLimit = 4294967295U;

/// How often start-up came as far as the service being at work. Written under proc::Svc::cs, read
/// without it by a call that comes after.
std::atomic<unsigned int> startUps{0};

/// Asks for the log level now and then; null until the first interval is set. Guarded by
/// proc::Svc::cs; never freed, like everything that may tick while the process ends.
proc::Timer* logControlTimer = nullptr;

void prepareFramework() {
  core_log::init(nullptr, false);
  base::SvcConfigParams::getInstance(true);
  Svc::preInitCb();
  base::String::init();
}

template <class Row>
void load(void (*initialize)(const Row* table, std::size_t size), std::span<const Row> table) {
  initialize(table.data(), table.size());
}

void loadMetadata() {
  load(meta::Type::initializeTypeMeta, model::types());
  load(meta::Prop::initializePropMeta, model::props());
  load(meta::NameRef::initializeNameRefMeta, model::nameRefs());
  meta::NameRef::indexByProperty();
  load(meta::Class::initializeClassMeta, model::classes());
  load(meta::Result::init, model::results());
  load(meta::PropValidator::initializePropValMeta, model::propValidators());
  load(meta::Arg::initializeArgMeta, model::args());
  load(meta::Method::initializeMethodMeta, model::methods());
  load(meta::Svc::initializeSvcMeta, model::services());
  load(meta::AppDomain::initializeDomainMeta, model::domains());
}

void installObjectModel() {
  mo::StimuliHelper::INSTANCE = new mo::MoStimuliHelper;
  mo::TreeInitializer::INSTANCE = new mo::MoTreeInitializer;
  load(meta::FsmStateHandler::install, model::fsmStateHandlers());
  load(meta::FsmThrottle::install, model::fsmThrottles());
  meta::FsmThrottle::indexById();
}

}  // namespace

Svc::Svc()
    : proc::Svc(kServiceId),
      transactor_(std::make_unique<mo::Transactor>(0, 1)),
      doer_(std::make_unique<proc::Doer>(transactor_.get())),
      deduplicator_(std::make_unique<proc::QueueDeduplicatorImpl>(32)),
      queue_(std::make_unique<os::ReactiveQueue>(doer_.get(), deduplicator_.get(), false)),
      pool_(std::make_unique<os::ThreadPool>(8, 32, 8, false)),
      tree_(std::make_unique<dmemem::Mit>(transactor_.get())) {}

Svc::~Svc() = default;

void Svc::init(int, char**) {
  if (startUps.load(std::memory_order_acquire) != 0) {
    return;
  }
  const Guard guard(cs);
  if (startUps.load(std::memory_order_relaxed) != 0) {
    return;
  }
  prepareFramework();
  loadMetadata();
  installObjectModel();
  filter::Filter::initFactories();
  registerCallbacks();
  registerService().activate();
  proc::InitStimulus::issue();
  startUps.fetch_add(1, std::memory_order_release);
  initCb();
  postInitCb();
  initAutoconfigSet();
}

Svc& Svc::registerService() {
  auto app = std::make_unique<proc::App>(kApplicationId);
  auto svc = std::make_unique<Svc>();
  svc->setBootstrapCb(agboot::AgBootstrap::bootstrapCb);
  proc::regService(app.get(), svc.get(), base::SvcConfigParams::getInstance().getClusterName());
  svc->application_ = std::move(app);
  Svc& registered = *svc.release();
  mo::Mit::registerInstance(registered.tree_.get());
  return registered;
}

void Svc::activate() {
  setActivationState(1);
  setReactiveQueue(queue_.get());
  queue_->activate();
  setActivationState(2);
  setThreadPool(pool_.get());
  pool_->activate();
}

void Svc::preInitCb() {}

void Svc::initCb() {
  core_log::logPrintf("initCb", core_log::serviceLevel(), kInformation,
                      "serviceAG Starting TzTimer...\n");
  utils::TzTimer::getInstance().start();
  core_log::logPrintf("initCb", core_log::serviceLevel(), kInformation,
                      "serviceAG Timer started. Initializing MsgHandler...\n");
  MsgHandler::getInstance()->init();
  core_log::logPrintf("initCb", core_log::serviceLevel(), kInformation,
                      "serviceAG MsgHandler initialized.\n");
}

void Svc::dataInitCb() {}
void Svc::postInitCb() {}
void Svc::wkrInitCb() {
  proc::StateRequest::get().requestDme();
}

void Svc::mainCb() {
  core_log::logPrintf("mainCb", core_log::serviceLevel(), kInformation,
                      "Waiting for channel init...\n");
  proc::StateRequest::get().wait(kNoLimit);
  core_log::logPrintf("mainCb", core_log::serviceLevel(), kInformation,
                      ".... Channel initialized. \n");
}

void Svc::preShutdownCb() {}
void Svc::shutdownCb() {}
void Svc::postShutdownCb() {}

void Svc::procBeginCb() {}
void Svc::procEndCb() {}
void Svc::optionalPause() {}
void Svc::invokeCallHome() {}
void Svc::sendSyslogMessage() {}
void Svc::invokeSendSnmpNotification() {}

void Svc::initSvcCb() {
  dataInitCb();
  channels_ = std::make_unique<net::ChannelBank>();
  setChannelBank(channels_.get());
  initChannels();
  proc::Svc::initSvcCb();
  wkrInitCb();
  setLogControlRefreshInterval(kLogControlRefreshMs);
  agboot::AgBootstrap::get().submitBootstrapRequest();
}

void Svc::setLogControlRefreshInterval(unsigned int ms) {
  const Guard guard(cs);
  if (ms == 0) {
    return;
  }
  if (logControlTimer != nullptr) {
    logControlTimer->setInterval(ms);
    if (logControlTimer->handle() != -1) {
      logControlTimer->reset();
    }
    return;
  }
  auto timer = std::make_unique<proc::Timer>(ms);
  timer->markLogControlRefresh();
  timer->submit();
  logControlTimer = timer.release();
}

unsigned int Svc::getLogControlRefreshInterval() {
  const Guard guard(cs);
  return logControlTimer == nullptr ? 0 : logControlTimer->interval();
}

void Svc::initAutoconfigSet() {}

void Svc::addAutoconfig(const meta::Autoconfig* id) {
  const Guard guard(cs);
  if (AUTOCONFIG_SET == nullptr) {
    AUTOCONFIG_SET = new std::set<const meta::Autoconfig*>;
  }
  AUTOCONFIG_SET->insert(id);
}

}  // namespace zan_serviceOrchAG
