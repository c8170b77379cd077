#include "framework/msglyr/Link.h"

#include <poll.h>
#include <pthread.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <deque>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "framework/msglyr/CounterCells.h"
#include "framework/msglyr/FileDescriptor.h"
#include "framework/msglyr/LinkBatch.h"
#include "framework/msglyr/LinkOutbox.h"
#include "framework/msglyr/Socket.h"

namespace msglyr {
namespace {

// How long one-way messages are gathered while there are any.
constexpr int kGatherMs = 1;

// How often batches that nobody takes are looked at for their age.
constexpr int kExpiryMs = 500;

// A binding socket does not tell when a peer that was full takes more.
constexpr int kFullPeerMs = 5;

// Batches inside the transport, each way. They are up to a quarter of a megabyte.
constexpr int kTransportBatches = 16;

// A batch is closed once it has passed 256 KiB, which its last message may do by its whole length.
constexpr std::size_t kBatchMargin = 512 * 1024;

constexpr int kLingerMs = 1000;
constexpr int kReconnectMs = 50;
constexpr int kLongestReconnectMs = 1000;

// Batches received before queued ones are sent again.
constexpr int kMaxInTurn = 64;

// A new name for every link that connects: the binding side keeps its peers apart by it, also
// when one connects again before the loss of its former connection was noticed.
Link::PeerId randomPeer() {
  Link::PeerId peer = 0;
  while (peer == Link::kPeer || (peer & 0xff) == 0) {  // a leading zero is the transport's own
    if (getrandom(&peer, sizeof peer, 0) != static_cast<ssize_t>(sizeof peer)) {
      throw std::system_error(errno, std::generic_category(), "getrandom");
    }
  }
  return peer;
}

std::string toRouting(Link::PeerId peer) {
  std::string routing(sizeof peer, '\0');
  std::memcpy(routing.data(), &peer, sizeof peer);
  return routing;
}

Link::PeerId fromRouting(std::string_view routing) {
  Link::PeerId peer = Link::kPeer;
  if (routing.size() == sizeof peer) {
    std::memcpy(&peer, routing.data(), sizeof peer);
  }
  return peer;
}

Socket makeSocket(Link::Side side, const std::string& endPoint, const Link::Limits& limits) {
  Socket socket(side == Link::Side::Bind ? ZMQ_ROUTER : ZMQ_DEALER);
  applyBounds(socket, bounds());
  socket.setMaxFrameBytes(limits.maxMessageBytes + kBatchMargin);
  socket.set(ZMQ_LINGER, kLingerMs);
  socket.set(ZMQ_SNDHWM, kTransportBatches);
  socket.set(ZMQ_RCVHWM, kTransportBatches);
  if (side == Link::Side::Bind) {
    socket.set(ZMQ_ROUTER_MANDATORY, 1);
    socket.set(ZMQ_ROUTER_HANDOVER, 1);
    socket.bind(endPoint);
    return socket;
  }
  socket.set(ZMQ_ROUTING_ID, toRouting(randomPeer()));
  socket.set(ZMQ_PROBE_ROUTER, 1);  // announces this side at once, and again when it reconnects
  socket.set(ZMQ_IMMEDIATE, 1);
  socket.set(ZMQ_RECONNECT_IVL, kReconnectMs);
  socket.set(ZMQ_RECONNECT_IVL_MAX, kLongestReconnectMs);
  socket.connect(endPoint);
  return socket;
}

}  // namespace

class Link::Impl {
 public:
  Impl(Side side, const std::string& endPoint, Handler handler, const Limits& limits)
      : side_(side),
        limits_(limits),
        handler_(std::move(handler)),
        socket_(makeSocket(side, endPoint, limits)),
        endPoint_(side == Side::Bind ? socket_.lastEndPoint() : endPoint),
        outbox_(limits),
        thread_([this] { run(); }) {}

  ~Impl() { stop(); }

  bool send(PeerId to, std::string_view bytes, Urgency urgency) {
    {
      const std::lock_guard guard(mutex_);
      if (stopping_ || !outbox_.add(to, bytes)) {
        dropped_.add();
        return false;
      }
      hurry_ = hurry_ || urgency == Urgency::AtOnce;
      const bool looksByItself = (!hurry_ && !idle_) || running == this;
      if (looksByItself || signalled_) {
        return true;
      }
      signalled_ = true;
    }
    wakeUp_.signal();
    return true;
  }

  void stop() {
    {
      const std::lock_guard guard(mutex_);
      stopping_ = true;
    }
    wakeUp_.signal();
    const std::lock_guard guard(joining_);
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  Counters counters() const {
    Counters now;
    now.sent = sent_.load();
    now.received = received_.load();
    now.dropped = dropped_.load();
    now.batches = batches_.load();
    now.refused = refused_.load();
    return now;
  }

  const std::string& endPoint() const { return endPoint_; }

 private:
  void run() {
    pthread_setname_np(pthread_self(), "link");
    running = this;
    while (true) {
      bool traffic = false;
      bool stopping = false;
      {
        const std::lock_guard guard(mutex_);
        stopping = stopping_;
        signalled_ = false;
        hurry_ = false;
        traffic = !outbox_.empty();
        for (LinkOutbox::Batch& batch : outbox_.takeAll()) {
          unsent_.push_back(std::move(batch));
        }
      }
      sendBatches();
      if (stopping) {
        dropUnsent();
        return;
      }
      const bool more = receiveBatches();
      const int calm = unsent_.empty() ? -1 : retryMs_;
      wait(more ? 0 : traffic && calm != 0 ? kGatherMs : calm);
    }
  }

  // Milliseconds, or -1 for no limit. While the wait has a short limit, senders of one-way
  // messages need not wake this thread.
  void wait(int limit) {
    {
      const std::lock_guard guard(mutex_);
      idle_ = limit < 0 || limit > kGatherMs;
      if (hurry_ || (idle_ && !outbox_.empty())) {
        return;  // came since the last look, and relies on the next one
      }
    }
    std::array<pollfd, 2> fds{{{socket_.fd(), POLLIN, 0}, {wakeUp_.fd(), POLLIN, 0}}};
    if (isReady()) {
      limit = 0;
    }
    poll(fds.data(), fds.size(), limit);
    if (fds[1].revents != 0) {
      wakeUp_.clear();
    }
  }

  // The descriptor may have lost its edge to the operations before, or loses it to this one.
  bool isReady() {
    const int events = socket_.events();
    const bool maySend = side_ == Side::Connect && !unsent_.empty();
    return (events & (maySend ? ZMQ_POLLIN | ZMQ_POLLOUT : ZMQ_POLLIN)) != 0;
  }

  void sendBatches() {
    if (unsent_.empty()) {
      return;
    }
    retryMs_ = kExpiryMs;
    const auto now = LinkOutbox::Clock::now();
    std::set<PeerId> behind;  // peers with a batch that has to wait: later ones wait behind it
    std::deque<LinkOutbox::Batch> kept;
    for (LinkOutbox::Batch& batch : unsent_) {
      const Io outcome = behind.contains(batch.to) ? Io::WouldBlock : sendBatch(batch);
      if (outcome == Io::WouldBlock && now - batch.since <= limits_.maxWait) {
        behind.insert(batch.to);
        kept.push_back(std::move(batch));
        continue;
      }
      if (outcome == Io::Done) {
        sent_.add(batch.messages);
        batches_.add();
      } else {
        dropped_.add(batch.messages);
      }
      const std::lock_guard guard(mutex_);
      outbox_.release(std::move(batch));
    }
    unsent_ = std::move(kept);
  }

  Io sendBatch(LinkOutbox::Batch& batch) {
    frames_[0].swap(batch.bytes);
    const Io outcome =
        side_ == Side::Connect ? sendMessage(socket_, nullptr, frames_) : sendFramesTo(batch.to);
    frames_[0].swap(batch.bytes);
    return outcome;
  }

  Io sendFramesTo(PeerId to) {
    const PeerId peer = to == kPeer ? latestPeer_ : to;
    if (peer == kPeer) {
      return Io::WouldBlock;  // nobody has connected yet
    }
    const std::string routing = toRouting(peer);
    const Io outcome = sendMessage(socket_, &routing, frames_);
    if (outcome == Io::WouldBlock) {
      retryMs_ = kFullPeerMs;
    }
    if (outcome == Io::Failed && to == kPeer) {
      latestPeer_ = kPeer;  // gone; the service may connect again
      return Io::WouldBlock;
    }
    return outcome;
  }

  void dropUnsent() {
    for (const LinkOutbox::Batch& batch : unsent_) {
      dropped_.add(batch.messages);
    }
    unsent_.clear();
  }

  // True if there is more to receive.
  bool receiveBatches() {
    const MessageLimits limits{limits_.maxMessageBytes + kBatchMargin, 1};
    std::string* routing = side_ == Side::Bind ? &routing_ : nullptr;
    for (int i = 0; i < kMaxInTurn; ++i) {
      switch (receiveMessage(socket_, frame_, limits, routing, inbound_).outcome) {
        case Io::Done:
          handOver();
          break;
        case Io::Refused:
          refused_.add();
          break;
        default:
          return false;
      }
    }
    return true;
  }

  void handOver() {
    PeerId from = kPeer;
    if (side_ == Side::Bind) {
      from = fromRouting(routing_);
      if (from == kPeer) {
        refused_.add();
        return;
      }
    }
    if (!splitBatch(inbound_.front(), views_)) {
      refused_.add();
      return;
    }
    if (views_.empty()) {
      latestPeer_ = from;
      retryMs_ = 0;
      return;
    }
    received_.add(views_.size());
    handler_(from, views_);
  }

  // The link whose thread this is, if it is one's.
  static thread_local const Impl* running;

  // Constant after construction.
  const Side side_;
  const Limits limits_;
  const Handler handler_;

  // Used by the link's thread only.
  Socket socket_;
  Frame frame_;
  std::string routing_;
  std::vector<std::string> inbound_;
  std::vector<std::string_view> views_;
  std::vector<std::string> frames_{1};
  std::deque<LinkOutbox::Batch> unsent_;
  int retryMs_ = kExpiryMs;
  PeerId latestPeer_ = kPeer;  // the service that connected last

  const std::string endPoint_;
  CounterCell sent_;
  CounterCell received_;
  CounterCell dropped_;
  CounterCell batches_;
  CounterCell refused_;
  WakeUp wakeUp_;

  std::mutex mutex_;
  // Guarded by mutex_.
  LinkOutbox outbox_;
  bool hurry_ = false;      // something in the outbox is to leave at once
  bool idle_ = false;       // the thread waits until it is woken
  bool signalled_ = false;  // and has been, since it looked last
  bool stopping_ = false;

  std::mutex joining_;
  std::thread thread_;  // guarded by joining_ once it runs
};

thread_local const Link::Impl* Link::Impl::running = nullptr;

Link::Link(Side side, const std::string& endPoint, Handler handler)
    : Link(side, endPoint, std::move(handler), Limits{}) {}

Link::Link(Side side, const std::string& endPoint, Handler handler, Limits limits)
    : impl_(std::make_unique<Impl>(side, endPoint, std::move(handler), limits)) {}

Link::~Link() = default;

bool Link::sendTo(PeerId to, std::string_view bytes, Urgency urgency) {
  return impl_->send(to, bytes, urgency);
}

void Link::stop() {
  impl_->stop();
}

Link::Counters Link::counters() const {
  return impl_->counters();
}

const std::string& Link::endPoint() const {
  return impl_->endPoint();
}

}  // namespace msglyr
