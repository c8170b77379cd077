#include "framework/proc/Doer.h"

#include <utility>

#include "framework/mo/Transactor.h"
#include "framework/os/ThreadPool.h"
#include "framework/proc/InboundItem.h"
#include "framework/proc/Svc.h"

namespace proc {

class Doer::PoolTask final : public os::Task {
 public:
  PoolTask(const Doer& doer, os::TaskPtr item) : doer_(doer), item_(std::move(item)) {}
  void run() override { doer_.runItem(*item_); }

 private:
  const Doer& doer_;
  const os::TaskPtr item_;
};

class Doer::LaneTask final : public os::Task {
 public:
  explicit LaneTask(Doer& doer) : doer_(doer) {}
  void run() override { doer_.drain(); }

 private:
  Doer& doer_;
};

Doer::Doer(mo::Transactor* transactor) : transactor_(transactor) {}

void Doer::operator()(os::TaskPtr item) {
  Svc* const svc = Svc::instance;
  if (svc != nullptr) {
    svc->optionalPause();
  }
  os::ThreadPool* const pool =
      svc != nullptr && svc->activationState() == 2 ? svc->threadPool() : nullptr;
  const auto* const inbound = dynamic_cast<const InboundItem*>(item.get());
  if (pool == nullptr) {
    runItem(*item);
  } else if (inbound != nullptr && inbound->isOrdered()) {
    enqueue(std::move(item), *pool);
  } else {
    pool->submit(new PoolTask(*this, std::move(item)));
  }
}

void Doer::enqueue(os::TaskPtr item, os::ThreadPool& pool) {
  {
    const std::lock_guard guard(lock_);
    lane_.push_back(std::move(item));
    if (std::exchange(isDraining_, true)) {
      return;
    }
  }
  if (pool.submit(new LaneTask(*this)) == -1) {
    const std::lock_guard guard(lock_);
    isDraining_ = false;
  }
}

void Doer::drain() {
  for (;;) {
    os::TaskPtr item;
    {
      const std::lock_guard guard(lock_);
      if (lane_.empty()) {
        isDraining_ = false;
        return;
      }
      item = std::move(lane_.front());
      lane_.pop_front();
    }
    runItem(*item);
  }
}

void Doer::runItem(os::Task& item) const {
  mo::Transactor::Scope transaction(*transactor_);
  os::runTask(item);
  const auto* const inbound = dynamic_cast<const InboundItem*>(&item);
  if (inbound == nullptr || inbound->hasSucceeded()) {
    transaction.commit();
  }
}

}  // namespace proc
