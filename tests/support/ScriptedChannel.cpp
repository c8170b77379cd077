#include "tests/support/ScriptedChannel.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "framework/msglyr/AsyncRouterDealerChannel.h"

namespace test_support {
namespace {

constexpr std::chrono::seconds kPatience{30};

}  // namespace

struct ScriptedChannel::State {
  /// What a new channel follows. Never destroyed: threads may make channels to the last.
  static std::shared_ptr<State>& current();

  void note(std::string event) {
    const std::lock_guard<std::mutex> guard(mutex);
    events.push_back(std::move(event));
  }

  /// The next action of a queue; nothing when it is used up.
  template <class Action>
  std::optional<Action> next(std::deque<Action>& queue) {
    const std::lock_guard<std::mutex> guard(mutex);
    if (queue.empty()) {
      return std::nullopt;
    }
    std::optional<Action> action = std::move(queue.front());
    queue.pop_front();
    return action;
  }

  template <class Action>
  void add(std::deque<Action>& queue, Action action) {
    const std::lock_guard<std::mutex> guard(mutex);
    queue.push_back(std::move(action));
    changed.notify_all();
  }

  template <class Predicate>
  bool waitFor(Predicate predicate) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, kPatience, predicate);
  }

  /// Blocks a worker until there is something to receive. False when the workers are to end.
  bool waitForWork() {
    std::unique_lock<std::mutex> lock(mutex);
    ++idleWorkers;
    changed.notify_all();
    changed.wait(lock, [this] { return workersEnd || !receives.empty(); });
    --idleWorkers;
    return !receives.empty();
  }

  std::mutex mutex;
  std::condition_variable changed;
  // All guarded by mutex.
  std::deque<std::function<void()>> creates;
  std::deque<std::function<void()>> serverEndPoints;
  std::deque<std::function<void()>> workerEndPoints;
  std::deque<std::function<int(const msglyr::Message&)>> sends;
  std::deque<std::function<int(msglyr::Message&)>> receives;
  std::vector<std::string> events;
  std::vector<Sent> sent;
  std::size_t alive = 0;
  std::size_t idleWorkers = 0;
  bool workersEnd = false;
};

std::shared_ptr<ScriptedChannel::State>& ScriptedChannel::State::current() {
  static auto& state = *new std::shared_ptr<State>(std::make_shared<State>());
  return state;
}

ScriptedChannel::ScriptedChannel() : state_(std::make_shared<State>()) {
  State::current() = state_;
}

ScriptedChannel::~ScriptedChannel() {
  State::current() = std::make_shared<State>();
}

void ScriptedChannel::onCreate(std::function<void()> action) {
  state_->add(state_->creates, std::move(action));
}

void ScriptedChannel::onServerEndPoint(std::function<void()> action) {
  state_->add(state_->serverEndPoints, std::move(action));
}

void ScriptedChannel::onWorkerEndPoint(std::function<void()> action) {
  state_->add(state_->workerEndPoints, std::move(action));
}

void ScriptedChannel::onSend(std::function<int(const msglyr::Message&)> action) {
  state_->add(state_->sends, std::move(action));
}

void ScriptedChannel::onReceive(std::function<int(msglyr::Message&)> action) {
  state_->add(state_->receives, std::move(action));
}

void ScriptedChannel::onReceive(Parts parts) {
  onReceive([parts = std::move(parts)](msglyr::Message& message) {
    message.parts() = parts;
    return static_cast<int>(parts.size());
  });
}

void ScriptedChannel::onReceive(int result) {
  onReceive([result](msglyr::Message& /*message*/) { return result; });
}

std::vector<std::string> ScriptedChannel::events() const {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  return state_->events;
}

std::vector<ScriptedChannel::Sent> ScriptedChannel::sent() const {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  return state_->sent;
}

std::size_t ScriptedChannel::alive() const {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  return state_->alive;
}

bool ScriptedChannel::waitForSent(std::size_t count) const {
  return state_->waitFor([this, count] { return state_->sent.size() >= count; });
}

bool ScriptedChannel::waitForIdleWorkers(std::size_t count) const {
  return state_->waitFor(
      [this, count] { return state_->idleWorkers >= count && state_->receives.empty(); });
}

void ScriptedChannel::endWorkers() {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  state_->workersEnd = true;
  state_->changed.notify_all();
}

}  // namespace test_support

namespace msglyr {

using State = test_support::ScriptedChannel::State;

class AsyncRouterDealerChannel::Impl {
 public:
  Impl(const std::string& name, role_t role) : state_(State::current()), role_(role) {
    state_->note("create " + name + " " + std::to_string(role));
    if (const auto action = state_->next(state_->creates)) {
      (*action)();
    }
    const std::lock_guard<std::mutex> guard(state_->mutex);
    ++state_->alive;
  }

  ~Impl() {
    state_->note("destroy");
    const std::lock_guard<std::mutex> guard(state_->mutex);
    --state_->alive;
  }

  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void setServerEndPoint(const std::string& endPoint) {
    state_->note("server " + endPoint);
    if (const auto action = state_->next(state_->serverEndPoints)) {
      (*action)();
    }
  }

  void setWorkerEndPoint(const std::string& endPoint) {
    state_->note("worker " + endPoint);
    if (const auto action = state_->next(state_->workerEndPoints)) {
      (*action)();
    }
  }

  int send(const char* address, const Message& message) {
    const auto action = state_->next(state_->sends);
    {
      const std::lock_guard<std::mutex> guard(state_->mutex);
      state_->events.push_back(std::string("send ") + address);
      state_->sent.push_back({address, message.parts()});
      state_->changed.notify_all();
    }
    return action ? (*action)(message) : static_cast<int>(message.getnumParts());
  }

  int receive(char* address, Message& message, long timeoutMs) {
    state_->note("receive " + std::to_string(timeoutMs));
    std::memset(address, 0, kAddressBytes);
    if (role_ == kRoleRequestWorker && !state_->waitForWork()) {
      pthread_exit(nullptr);
    }
    const auto action = state_->next(state_->receives);
    return action ? (*action)(message) : 0;
  }

 private:
  const std::shared_ptr<State> state_;
  const role_t role_;
};

AsyncRouterDealerChannel::AsyncRouterDealerChannel(std::string name, role_t role)
    : impl_(std::make_unique<Impl>(name, role)) {}

AsyncRouterDealerChannel::~AsyncRouterDealerChannel() = default;

void AsyncRouterDealerChannel::setServerEndPoint(std::string endPoint) {
  impl_->setServerEndPoint(endPoint);
}

void AsyncRouterDealerChannel::setWorkerEndPoint(std::string endPoint) {
  impl_->setWorkerEndPoint(endPoint);
}

int AsyncRouterDealerChannel::send(const char* address, Message* message) {
  return impl_->send(address, *message);
}

int AsyncRouterDealerChannel::receive(char* address, Message* message, long timeoutMs) {
  return impl_->receive(address, *message, timeoutMs);
}

}  // namespace msglyr
