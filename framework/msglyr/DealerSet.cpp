#include "framework/msglyr/DealerSet.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "framework/msglyr/FileDescriptor.h"
#include "framework/msglyr/Socket.h"

namespace msglyr {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kReconnectMs = 100;
constexpr int kLongestReconnectMs = 5000;
constexpr int kMaxEvents = 256;

// Messages taken from one socket before the others get their turn.
constexpr unsigned kMaxInTurn = 64;

constexpr std::uint64_t kWakeUp = std::numeric_limits<std::uint64_t>::max();

int toMilliseconds(std::chrono::milliseconds timeout) {
  if (timeout < std::chrono::milliseconds::zero()) {
    return -1;
  }
  constexpr std::chrono::milliseconds kLongest{std::numeric_limits<int>::max()};
  return static_cast<int>(std::min(timeout, kLongest).count());
}

}  // namespace

class DealerSet::Impl {
 public:
  Impl() : limits_{bounds().maxMessageBytes, bounds().maxParts} {
    watch(wakeUp_.fd(), kWakeUp, EPOLLIN);
  }

  Index add(const std::string& endPoint) {
    Socket socket(ZMQ_DEALER);
    applyBounds(socket, bounds());
    socket.set(ZMQ_IMMEDIATE, 1);
    socket.set(ZMQ_RECONNECT_IVL, kReconnectMs);
    socket.set(ZMQ_RECONNECT_IVL_MAX, kLongestReconnectMs);
    socket.connect(endPoint);
    return take(std::move(socket), endPoint, false);
  }

  Index addListener(const std::string& endPoint) {
    Socket socket(ZMQ_ROUTER);
    applyBounds(socket, bounds());
    socket.set(ZMQ_ROUTER_MANDATORY, 1);
    socket.bind(endPoint);
    std::string bound = socket.lastEndPoint();
    return take(std::move(socket), std::move(bound), true);
  }

  const std::string& endPoint(Index index) const { return at(index).endPoint; }

  void remove(Index index) {
    epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, at(index).socket.fd(), nullptr);
    slots_[index].reset();
    free_.push_back(index);
  }

  std::size_t size() const { return slots_.size() - free_.size(); }

  bool send(Index index, const std::string* routing, const Message& message) {
    Entry& entry = at(index);
    if (entry.listens != (routing != nullptr)) {
      throw std::out_of_range("message layer: the socket is of the other kind");
    }
    const Io outcome = sendMessage(entry.socket, routing, message.parts());
    recheck(index, entry);
    return outcome == Io::Done;
  }

  std::size_t poll(std::chrono::milliseconds timeout, const Handler& handler) {
    const bool limited = timeout >= std::chrono::milliseconds::zero();
    const Clock::time_point deadline = Clock::now() + (limited ? timeout : timeout.zero());
    while (true) {
      const bool woken = waitForEvents(unchecked_.empty() ? timeout : timeout.zero());
      const std::size_t count = drainUnchecked(handler);
      if (count > 0 || woken) {
        return count;
      }
      // A descriptor may also have announced news of the transport's own, such as a connection.
      if (limited) {
        timeout = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (timeout <= timeout.zero()) {
          return 0;
        }
      }
    }
  }

  void wake() { wakeUp_.signal(); }

 private:
  struct Entry {
    Socket socket;
    std::string endPoint;
    bool listens;
    bool unchecked = false;  // is on unchecked_
    std::uint64_t serial;    // tells it from a later user of the index
  };

  void watch(int fd, std::uint64_t data, std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.u64 = data;
    if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0) {
      throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }
  }

  Index take(Socket socket, std::string endPoint, bool listens) {
    Index index = slots_.size();
    if (free_.empty()) {
      slots_.emplace_back();
    } else {
      index = free_.back();
      free_.pop_back();
    }
    try {
      // The descriptor only says "look again", and an operation on the socket may take the hint
      // away. Edge-triggered, and looked at after every operation (see recheck), that is enough.
      watch(socket.fd(), index, EPOLLIN | EPOLLET);
    } catch (...) {
      free_.push_back(index);
      throw;
    }
    slots_[index].emplace(
        Entry{std::move(socket), std::move(endPoint), listens, false, ++lastSerial_});
    recheck(index, *slots_[index]);
    return index;
  }

  Entry& at(Index index) {
    if (index >= slots_.size() || !slots_[index]) {
      throw std::out_of_range("message layer: no such socket");
    }
    return *slots_[index];
  }
  const Entry& at(Index index) const { return const_cast<Impl*>(this)->at(index); }

  // Has the next poll look at the socket whatever its descriptor says.
  void recheck(Index index, Entry& entry) {
    if (!std::exchange(entry.unchecked, true)) {
      unchecked_.push_back(index);
    }
  }

  // True if wake was called.
  bool waitForEvents(std::chrono::milliseconds timeout) {
    std::array<epoll_event, kMaxEvents> events;
    const int ready = epoll_wait(epoll_.get(), events.data(), kMaxEvents, toMilliseconds(timeout));
    bool woken = false;
    for (int i = 0; i < ready; ++i) {
      const std::uint64_t index = events[static_cast<std::size_t>(i)].data.u64;
      if (index == kWakeUp) {
        wakeUp_.clear();
        woken = true;
      } else if (index < slots_.size() && slots_[index]) {
        recheck(index, *slots_[index]);
      }
    }
    return woken;
  }

  std::size_t drainUnchecked(const Handler& handler) {
    std::size_t count = 0;
    turn_.swap(unchecked_);
    for (const Index index : turn_) {
      count += drain(index, handler);
    }
    turn_.clear();
    return count;
  }

  std::size_t drain(Index index, const Handler& handler) {
    if (!slots_[index]) {
      return 0;
    }
    slots_[index]->unchecked = false;
    const std::uint64_t serial = slots_[index]->serial;
    std::size_t handled = 0;
    for (unsigned count = 0; count < kMaxInTurn; ++count) {
      Entry& entry = *slots_[index];
      std::string* routing = entry.listens ? &routing_ : nullptr;
      const Io outcome =
          receiveMessage(entry.socket, frame_, limits_, routing, message_.parts()).outcome;
      if (outcome == Io::Refused) {
        continue;
      }
      if (outcome != Io::Done) {
        return handled;
      }
      ++handled;
      handler(index, entry.listens ? routing_ : noRouting_, message_);
      if (!slots_[index] || slots_[index]->serial != serial) {
        return handled;
      }
    }
    recheck(index, *slots_[index]);
    return handled;
  }

  const MessageLimits limits_;
  const std::string noRouting_;
  FileDescriptor epoll_{epoll_create1(EPOLL_CLOEXEC), "epoll_create1"};
  WakeUp wakeUp_;
  std::vector<std::optional<Entry>> slots_;
  std::vector<Index> free_;
  std::vector<Index> unchecked_;  // sockets to look at in the next poll
  std::vector<Index> turn_;       // those of the poll under way
  std::uint64_t lastSerial_ = 0;
  Frame frame_;
  std::string routing_;
  Message message_;
};

DealerSet::DealerSet() : impl_(std::make_unique<Impl>()) {}
DealerSet::~DealerSet() = default;

DealerSet::Index DealerSet::add(const std::string& endPoint) {
  return impl_->add(endPoint);
}

DealerSet::Index DealerSet::addListener(const std::string& endPoint) {
  return impl_->addListener(endPoint);
}

const std::string& DealerSet::endPoint(Index index) const {
  return impl_->endPoint(index);
}

void DealerSet::remove(Index index) {
  impl_->remove(index);
}

std::size_t DealerSet::size() const {
  return impl_->size();
}

bool DealerSet::send(Index index, const Message& message) {
  return impl_->send(index, nullptr, message);
}

bool DealerSet::reply(Index index, const std::string& routing, const Message& message) {
  return impl_->send(index, &routing, message);
}

std::size_t DealerSet::poll(std::chrono::milliseconds timeout, const Handler& handler) {
  return impl_->poll(timeout, handler);
}

void DealerSet::wake() {
  impl_->wake();
}

}  // namespace msglyr
