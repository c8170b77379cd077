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

constexpr int kConnectTimeoutMs = 2000;
constexpr int kReconnectMs = 100;
constexpr int kLongestReconnectMs = 1000;

// The kernel gives up data that the peer has not acknowledged for so long. It is shorter than the
// ten seconds that a command may take, so that a command sent into a cut link is not delivered
// when the link comes back after the command was reported as failed.
constexpr int kRetransmitMs = 8000;

Socket makeDealer() {
  Socket socket(ZMQ_DEALER);
  applyBounds(socket, bounds());
  socket.set(ZMQ_IMMEDIATE, 1);
  socket.set(ZMQ_CONNECT_TIMEOUT, kConnectTimeoutMs);
  socket.set(ZMQ_RECONNECT_IVL, kReconnectMs);
  socket.set(ZMQ_RECONNECT_IVL_MAX, kLongestReconnectMs);
  socket.set(ZMQ_TCP_MAXRT, kRetransmitMs);
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
  waiting_.reset();
  sendBegan_.reset();
  socket_.reset();
  endPoint_.clear();
  checkTcpEndPoint(endPoint);
  endPoint_ = endPoint;
}

int ClientEnd::send(const Message& message) {
  const Socket& socket = connected();
  sendBegan_ = Clock::now();
  waiting_.reset();
  dropArrived();
  switch (sendMessage(socket, nullptr, message.parts())) {
    case Io::Done:
      break;
    case Io::WouldBlock:
      waiting_ = message.parts();
      break;
    default:
      counterCells().sendFailed.add();
      return -1;
  }
  return static_cast<int>(message.getnumParts());
}

int ClientEnd::receive(Message& message, std::optional<std::chrono::milliseconds> timeout) {
  const Clock::time_point begin = std::exchange(sendBegan_, std::nullopt).value_or(Clock::now());
  std::optional<Clock::time_point> deadline;
  if (timeout) {
    deadline = begin + *timeout;
  }
  const int count = await(message, deadline);
  if (count <= 0) {
    waiting_.reset();
    socket_.reset();
  }
  return count;
}

int ClientEnd::await(Message& message, std::optional<Clock::time_point> deadline) {
  const Socket& socket = connected();
  std::vector<std::string> parts;
  do {
    if (!sendWaiting()) {
      return -1;
    }
    const Received received = receiveMessage(socket, frame_, limits(), nullptr, parts);
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

const Socket& ClientEnd::connected() {
  if (endPoint_.empty()) {
    throw std::logic_error("the channel has no server end point");
  }
  if (!socket_) {
    Socket socket = makeDealer();
    socket.connect(endPoint_);
    socket_.emplace(std::move(socket));
  }
  return *socket_;
}

void ClientEnd::dropArrived() {
  std::vector<std::string> parts;
  Io outcome = Io::Done;
  while (outcome == Io::Done || outcome == Io::Refused) {
    outcome = receiveMessage(*socket_, frame_, limits(), nullptr, parts).outcome;
  }
}

// False if the transport has failed.
bool ClientEnd::sendWaiting() {
  if (!waiting_) {
    return true;
  }
  const Io outcome = sendMessage(*socket_, nullptr, *waiting_);
  if (outcome != Io::WouldBlock) {
    waiting_.reset();
  }
  if (outcome == Io::Failed) {
    counterCells().sendFailed.add();
    return false;
  }
  return true;
}

// Waits until there may be something to do; false if the deadline has passed.
bool ClientEnd::waitUntil(std::optional<Clock::time_point> deadline) const {
  long limit = -1;
  if (deadline) {
    // Rounded down: rather a fraction of a millisecond early than late.
    const auto left = std::chrono::floor<std::chrono::milliseconds>(*deadline - Clock::now());
    if (left.count() <= 0) {
      return false;
    }
    limit = std::min<long>(left.count(), std::numeric_limits<int>::max());
  }
  const short events = static_cast<short>(ZMQ_POLLIN | (waiting_ ? ZMQ_POLLOUT : 0));
  zmq_pollitem_t item{socket_->handle(), 0, events, 0};
  return zmq_poll(&item, 1, limit) >= 0 || errno == EINTR;
}

}  // namespace msglyr
