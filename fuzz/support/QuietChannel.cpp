#include "fuzz/support/QuietChannel.h"

#include <cstring>
#include <utility>

#include "framework/msglyr/AsyncRouterDealerChannel.h"
#include "fuzz/support/Refusal.h"

namespace fuzz {

QuietChannel& QuietChannel::instance() {
  // Never destroyed: the worker waits on it to the last.
  static QuietChannel& channel = *new QuietChannel;
  return channel;
}

void QuietChannel::refuseAddresses(bool refuse) {
  const std::lock_guard<std::mutex> guard(lock_);
  refusesAddresses_ = refuse;
}

void QuietChannel::answerClients(std::optional<msglyr::Message> answer) {
  const std::lock_guard<std::mutex> guard(lock_);
  answer_ = std::move(answer);
}

std::optional<msglyr::Message> QuietChannel::answer() const {
  const std::lock_guard<std::mutex> guard(lock_);
  return answer_;
}

void QuietChannel::command(const msglyr::Message& message) {
  const std::lock_guard<std::mutex> guard(lock_);
  commands_.push_back(message);
}

std::vector<msglyr::Message> QuietChannel::takeCommands() {
  const std::lock_guard<std::mutex> guard(lock_);
  return std::exchange(commands_, {});
}

std::size_t QuietChannel::clients() const {
  const std::lock_guard<std::mutex> guard(lock_);
  return clients_;
}

std::vector<msglyr::Message> QuietChannel::exchange(msglyr::Message request) {
  std::unique_lock<std::mutex> lock(lock_);
  changed_.wait(lock, [this] { return isWorkerIdle_; });
  isWorkerIdle_ = false;
  replies_.clear();
  request_ = std::move(request);
  changed_.notify_all();
  changed_.wait(lock, [this] { return isWorkerIdle_; });
  return std::exchange(replies_, {});
}

void QuietChannel::clientMade() {
  const std::lock_guard<std::mutex> guard(lock_);
  ++clients_;
}

void QuietChannel::clientGone() {
  const std::lock_guard<std::mutex> guard(lock_);
  --clients_;
}

void QuietChannel::throwIfRefused() const {
  const std::lock_guard<std::mutex> guard(lock_);
  if (refusesAddresses_) {
    throw Refusal();
  }
}

void QuietChannel::reply(const msglyr::Message& message) {
  const std::lock_guard<std::mutex> guard(lock_);
  replies_.push_back(message);
}

msglyr::Message QuietChannel::nextRequest() {
  std::unique_lock<std::mutex> lock(lock_);
  isWorkerIdle_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return request_.has_value(); });
  return *std::exchange(request_, std::nullopt);
}

}  // namespace fuzz

namespace msglyr {

using fuzz::QuietChannel;

class AsyncRouterDealerChannel::Impl {
 public:
  explicit Impl(role_t role) : isClient_(role == kRoleClient) {
    if (isClient_) {
      QuietChannel::instance().clientMade();
    }
  }
  ~Impl() {
    if (isClient_) {
      QuietChannel::instance().clientGone();
    }
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void setServerEndPoint() const {
    if (isClient_) {
      QuietChannel::instance().throwIfRefused();
    }
  }

  int send(const Message& message) const {
    if (isClient_) {
      QuietChannel::instance().command(message);
    } else {
      QuietChannel::instance().reply(message);
    }
    return static_cast<int>(message.getnumParts());
  }

  int receive(char* address, Message& message) const {
    if (address != nullptr) {
      std::memset(address, 0, kAddressBytes);
    }
    if (isClient_) {
      std::optional<Message> answer = QuietChannel::instance().answer();
      if (!answer) {
        return 0;
      }
      message = *std::move(answer);
    } else {
      message = QuietChannel::instance().nextRequest();
    }
    return static_cast<int>(message.getnumParts());
  }

 private:
  const bool isClient_;
};

AsyncRouterDealerChannel::AsyncRouterDealerChannel(std::string /*name*/, role_t role)
    : impl_(std::make_unique<Impl>(role)) {}

AsyncRouterDealerChannel::~AsyncRouterDealerChannel() = default;

void AsyncRouterDealerChannel::setServerEndPoint(std::string /*endPoint*/) {
  impl_->setServerEndPoint();
}

void AsyncRouterDealerChannel::setWorkerEndPoint(std::string /*endPoint*/) {}

int AsyncRouterDealerChannel::send(const char* /*address*/, Message* message) {
  return impl_->send(*message);
}

int AsyncRouterDealerChannel::receive(char* address, Message* message, long /*timeoutMs*/) {
  return impl_->receive(address, *message);
}

}  // namespace msglyr
