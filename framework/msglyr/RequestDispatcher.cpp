#include "framework/msglyr/RequestDispatcher.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <thread>
#include <tuple>

#include "framework/msglyr/CounterCells.h"

namespace msglyr {
namespace {

constexpr std::chrono::milliseconds kFirstPause{10};
constexpr std::chrono::milliseconds kLongestPause{1000};

}  // namespace

std::shared_ptr<RequestDispatcher> RequestDispatcher::join(const std::string& name,
                                                           const std::string& serverEndPoint,
                                                           const std::string& workerEndPoint) {
  using Key = std::tuple<std::string, std::string, std::string>;
  static std::mutex mutex;
  static std::map<Key, std::weak_ptr<RequestDispatcher>> dispatchers;  // guarded by mutex

  const std::lock_guard guard(mutex);
  auto& known = dispatchers[Key(name, serverEndPoint, workerEndPoint)];
  std::shared_ptr<RequestDispatcher> dispatcher = known.lock();
  if (!dispatcher) {
    dispatcher = std::make_shared<RequestDispatcher>(serverEndPoint);
    known = dispatcher;
  }
  return dispatcher;
}

RequestDispatcher::RequestDispatcher(const std::string& serverEndPoint,
                                     std::chrono::microseconds deputyTick)
    : limits_{bounds().maxMessageBytes, bounds().maxParts},
      deputyTick_(deputyTick),
      socket_(ZMQ_ROUTER) {
  applyBounds(socket_, bounds());
  socket_.set(ZMQ_ROUTER_MANDATORY, 1);
  socket_.bind(serverEndPoint);
  counterCells().bound.add();
  socketFd_ = socket_.fd();
}

std::string RequestDispatcher::endPoint() {
  const std::lock_guard guard(mutex_);
  return socket_.lastEndPoint();
}

int RequestDispatcher::send(const std::string& peer, const Message& message) {
  const std::lock_guard guard(mutex_);
  const Io outcome = sendMessage(socket_, &peer, message.parts());
  wakeLeaderIfReadable();
  if (outcome != Io::Done) {
    counterCells().sendFailed.add();
    return -1;
  }
  counterCells().sent.add();
  return static_cast<int>(message.getnumParts());
}

int RequestDispatcher::receive(std::string& peer, Message& message, Deadline deadline) {
  Lock lock(mutex_);
  ++progress_;
  std::vector<std::string> parts;
  parts.reserve(8);
  while (true) {
    const bool isLate = deadline && Clock::now() >= *deadline;
    if (!leads()) {
      if (isLate) {
        return 0;
      }
      standBy(lock, deadline);
      continue;
    }
    lead();
    const Received received = receiveMessage(socket_, frame_, limits_, &sender_, parts);
    switch (received.outcome) {
      case Io::Done:
        onTaken();
        peer = sender_;
        lock.unlock();
        message.parts() = std::move(parts);
        return static_cast<int>(message.getnumParts());
      case Io::Refused:
        (received.tooManyParts ? counterCells().refusedParts : counterCells().refusedBytes).add();
        continue;
      case Io::Failed:
        return fail(lock);
      case Io::WouldBlock:
        break;
    }
    if (isLate) {
      stepDown();
      return 0;
    }
    pollSocket(lock, deadline);
  }
}

// True also when nobody does, so that the caller may.
bool RequestDispatcher::leads() const {
  return leader_ == Leader::None || leaderThread_ == std::this_thread::get_id();
}

void RequestDispatcher::lead() {
  if (leader_ == Leader::None) {
    leaderThread_ = std::this_thread::get_id();
    observeThisThread(weak_from_this());
  }
  leader_ = Leader::Works;
}

void RequestDispatcher::onWait() noexcept {
  const std::lock_guard guard(mutex_);
  if (leader_ == Leader::Works && leaderThread_ == std::this_thread::get_id()) {
    stepDown();
  }
}

void RequestDispatcher::onTaken() {
  counterCells().received.add();
  errors_ = 0;
  ++progress_;
  alertDeputy();
}

// The leader may not come back for long: somebody has to look whether it does.
void RequestDispatcher::alertDeputy() {
  if (!hasDeputy_) {
    if (parked_ > 0) {
      bench_.notify_one();
    }
  } else if (!deputyTicks_) {
    deputyWake_.notify_one();
  }
}

void RequestDispatcher::stepDown() {
  leader_ = Leader::None;
  if (hasDeputy_) {
    deputyWake_.notify_one();
  } else if (parked_ > 0) {
    bench_.notify_one();
  }
}

// A sender may have taken the edge of the socket's descriptor that the leader waits for.
void RequestDispatcher::wakeLeaderIfReadable() {
  if (leader_ == Leader::Polls && (socket_.events() & ZMQ_POLLIN) != 0) {
    wakeUp_.signal();
  }
}

void RequestDispatcher::pollSocket(Lock& lock, Deadline deadline) {
  timespec limit{};
  if (deadline) {
    const auto left = std::max(*deadline - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    limit.tv_sec = seconds.count();
    limit.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
  }
  std::array<pollfd, 2> fds{{{socketFd_, POLLIN, 0}, {wakeUp_.fd(), POLLIN, 0}}};
  leader_ = Leader::Polls;
  lock.unlock();
  ppoll(fds.data(), fds.size(), deadline ? &limit : nullptr, nullptr);
  if (fds[1].revents != 0) {
    wakeUp_.clear();
  }
  lock.lock();
  leader_ = Leader::Works;
}

void RequestDispatcher::standBy(Lock& lock, Deadline deadline) {
  if (!hasDeputy_) {
    beDeputy(lock, deadline);
    return;
  }
  ++parked_;
  const auto canMoveUp = [this] {
    return !hasDeputy_;
  };
  if (deadline) {
    bench_.wait_until(lock, *deadline, canMoveUp);
  } else {
    bench_.wait(lock, canMoveUp);
  }
  --parked_;
}

void RequestDispatcher::beDeputy(Lock& lock, Deadline deadline) {
  hasDeputy_ = true;
  std::uint64_t seen = progress_;
  while (leader_ != Leader::None && (!deadline || Clock::now() < *deadline)) {
    deputyTicks_ = leader_ != Leader::Polls;
    if (deputyTicks_) {
      deputyWake_.wait_for(lock, deputyTick_);
    } else if (deadline) {
      deputyWake_.wait_until(lock, *deadline);
    } else {
      deputyWake_.wait(lock);
    }
    if (leader_ == Leader::Works && progress_ == seen) {
      leader_ = Leader::None;  // its handler blocks
    }
    seen = progress_;
  }
  hasDeputy_ = false;
  deputyTicks_ = false;
  if (parked_ > 0) {
    bench_.notify_one();
  }
}

int RequestDispatcher::fail(Lock& lock) {
  counterCells().receiveErrors.add();
  stepDown();
  const auto pause = std::min(kLongestPause, kFirstPause * (1 << std::min(errors_, 7U)));
  ++errors_;
  lock.unlock();
  std::this_thread::sleep_for(pause);
  return -1;
}

}  // namespace msglyr
