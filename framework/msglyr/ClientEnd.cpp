#include "framework/msglyr/ClientEnd.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "framework/msglyr/CounterCells.h"

namespace msglyr {
namespace {

using std::chrono::milliseconds;

constexpr const char* kNoEndPoint = "the channel has no server end point";

constexpr int kConnectTimeoutMs = 2000;
constexpr int kReconnectMs = 100;
constexpr int kLongestReconnectMs = 1000;

// How long a request may still arrive after it was handed to the kernel, if nothing sets a limit.
constexpr milliseconds kLongestLife{8000};
// The kernel counts how long it has repeated a request from its first repetition on, which comes
// so long after the request.
constexpr milliseconds kFirstRepetition{250};
// No request goes out in the last moments before its deadline: they are too short for the kernel
// to repeat it even once and give it up.
constexpr milliseconds kLastMoments{1000};
constexpr milliseconds kShortest{1};

Socket makeDealer(milliseconds life) {
  const milliseconds repeats = std::max(life - std::min(kFirstRepetition, life / 3), kShortest);
  Socket socket(ZMQ_DEALER);
  applyBounds(socket, bounds());
  socket.set(ZMQ_IMMEDIATE, 1);
  socket.set(ZMQ_CONNECT_TIMEOUT, kConnectTimeoutMs);
  socket.set(ZMQ_RECONNECT_IVL, kReconnectMs);
  socket.set(ZMQ_RECONNECT_IVL_MAX, kLongestReconnectMs);
  socket.set(ZMQ_TCP_MAXRT, static_cast<int>(repeats.count()));
  return socket;
}

bool isAlphanumeric(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool isHostStart(char c) {
  return isAlphanumeric(c) || c == '[' || c == ':';
}

bool isHostCharacter(char c) {
  return isAlphanumeric(c) || std::string_view(".-:%;[]_*").find(c) != std::string_view::npos;
}

// Refuses what the transport itself would refuse when it is told to connect: characters that no
// address has, and a port that is none. Ports out of range and hosts that nobody knows pass there
// too; requests to them time out.
void checkTcpEndPoint(const std::string& endPoint) {
  constexpr std::string_view kScheme = "tcp://";
  const std::string_view text = endPoint;
  const std::string_view address = text.substr(std::min(kScheme.size(), text.size()));
  const std::size_t colon = address.rfind(':');
  const bool isSound = text.starts_with(kScheme) && colon != std::string_view::npos &&
                       colon + 1 < address.size() && std::isdigit(address[colon + 1]) != 0 &&
                       isHostStart(address.front()) &&
                       std::all_of(address.begin(), address.end(), isHostCharacter);
  if (!isSound) {
    throw TransportError("cannot connect to", endPoint, EINVAL);
  }
}

MessageLimits limits() {
  const Bounds now = bounds();
  return {now.maxMessageBytes, now.maxParts};
}

}  // namespace

void ClientEnd::connect(const std::string& endPoint) {
  giveUp();
  sendBegan_.reset();
  endPoint_.clear();
  checkTcpEndPoint(endPoint);
  endPoint_ = endPoint;
}

int ClientEnd::send(const Message& message) {
  if (endPoint_.empty()) {
    throw std::logic_error(kNoEndPoint);
  }
  sendBegan_ = Clock::now();
  waiting_ = message.parts();
  return static_cast<int>(message.getnumParts());
}

int ClientEnd::receive(Message& message, std::optional<milliseconds> timeout) {
  if (endPoint_.empty()) {
    throw std::logic_error(kNoEndPoint);
  }
  const Clock::time_point begin = std::exchange(sendBegan_, std::nullopt).value_or(Clock::now());
  std::optional<Deadline> deadline;
  if (timeout) {
    deadline = {begin + *timeout, begin + *timeout - std::min(kLastMoments, *timeout / 2)};
  }
  if (waiting_ && line_ && hasArrived()) {
    line_.reset();  // and with it what else its server may still say
  }
  try {
    const int count = await(message, deadline);
    if (count <= 0) {
      giveUp();
    }
    return count;
  } catch (...) {
    giveUp();
    throw;
  }
}

void ClientEnd::giveUp() {
  waiting_.reset();
  line_.reset();
}

int ClientEnd::await(Message& message, const std::optional<Deadline>& deadline) {
  std::vector<std::string> parts;
  do {
    if (!prepareLine(deadline)) {
      return 0;
    }
    if (!sendWaiting()) {
      return -1;
    }
    if (waiting_) {
      continue;
    }
    const Received received = receiveMessage(line_->socket, frame_, limits(), nullptr, parts);
    switch (received.outcome) {
      case Io::Done:
        message.parts() = std::move(parts);
        return static_cast<int>(message.getnumParts());
      case Io::Refused:
        (received.tooManyParts ? counterCells().refusedParts : counterCells().refusedBytes).add();
        return -1;
      case Io::Failed:
        counterCells().receiveErrors.add();
        return -1;
      case Io::WouldBlock:
        break;
    }
  } while (waitUntil(deadline));
  return 0;
}

// Sees to a line that a waiting request may use now. False when it is too late for it to go out.
bool ClientEnd::prepareLine(const std::optional<Deadline>& deadline) {
  const Clock::time_point now = Clock::now();
  if (line_ && (!waiting_ || !deadline || now + line_->life <= deadline->end)) {
    return true;
  }
  if (waiting_ && deadline && now >= deadline->lastMoments) {
    return false;
  }
  milliseconds life = kLongestLife;
  if (deadline) {
    // The fourth part that is left is the time to connect.
    const auto left = std::chrono::floor<milliseconds>(deadline->end - now);
    life = std::clamp(left * 3 / 4, kShortest, kLongestLife);
  }
  Socket socket = makeDealer(life);
  socket.connect(endPoint_);
  line_.emplace(Line{std::move(socket), life});
  return true;
}

// False if the transport has failed.
bool ClientEnd::sendWaiting() {
  if (!waiting_) {
    return true;
  }
  const Io outcome = sendMessage(line_->socket, nullptr, *waiting_);
  if (outcome != Io::WouldBlock) {
    waiting_.reset();
  }
  if (outcome == Io::Failed) {
    counterCells().sendFailed.add();
    return false;
  }
  return true;
}

// Takes a message from the line if there is one.
bool ClientEnd::hasArrived() {
  std::vector<std::string> parts;
  return receiveMessage(line_->socket, frame_, limits(), nullptr, parts).outcome != Io::WouldBlock;
}

// Waits until there may be something to do; false if the deadline has passed.
bool ClientEnd::waitUntil(const std::optional<Deadline>& deadline) const {
  long limit = -1;
  if (deadline) {
    // Rounded down: rather a fraction of a millisecond early than late.
    const Clock::time_point now = Clock::now();
    const Clock::time_point end = waiting_ ? deadline->end - line_->life : deadline->end;
    const auto left = std::chrono::floor<milliseconds>(end - now);
    if (deadline->end - now < kShortest) {
      return false;
    }
    limit = std::clamp<long>(left.count(), waiting_ ? 1 : 0, std::numeric_limits<int>::max());
  }
  const short events = waiting_ ? ZMQ_POLLOUT : ZMQ_POLLIN;
  zmq_pollitem_t item{line_->socket.handle(), 0, events, 0};
  return zmq_poll(&item, 1, limit) >= 0 || errno == EINTR;
}

}  // namespace msglyr
