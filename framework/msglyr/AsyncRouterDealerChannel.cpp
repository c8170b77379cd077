#include "framework/msglyr/AsyncRouterDealerChannel.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <variant>

#include "framework/msglyr/ClientEnd.h"
#include "framework/msglyr/RequestDispatcher.h"

namespace msglyr {
namespace {

// A worker's place at the dispatcher that it shares with the others.
struct WorkerEnd {
  std::string serverEndPoint;
  std::string workerEndPoint;
  std::shared_ptr<RequestDispatcher> dispatcher;  // shared by the workers of one end point
  std::string peer;                               // whose request was received last

  RequestDispatcher& joined() const {
    if (!dispatcher) {
      throw std::logic_error("the channel has no server or no worker end point");
    }
    return *dispatcher;
  }
};

std::variant<ClientEnd, WorkerEnd> makeEnd(role_t role) {
  switch (role) {
    case kRoleClient:
      return std::variant<ClientEnd, WorkerEnd>(std::in_place_type<ClientEnd>);
    case kRoleRequestWorker:
      return std::variant<ClientEnd, WorkerEnd>(std::in_place_type<WorkerEnd>);
    default:
      throw std::invalid_argument("no such channel role: " + std::to_string(role));
  }
}

void writeAddress(char* address, std::string_view text) {
  if (address != nullptr) {
    const std::size_t size = std::min(text.size(), kAddressBytes - 1);
    std::memcpy(address, text.data(), size);
    address[size] = '\0';
  }
}

// A peer's routing identity is binary.
void writePeer(char* address, std::string_view peer) {
  if (address != nullptr) {
    static constexpr char kDigits[] = "0123456789abcdef";
    char* out = address;
    for (const char c : peer.substr(0, (kAddressBytes - 1) / 2)) {
      const auto byte = static_cast<unsigned char>(c);
      *out++ = kDigits[byte >> 4];
      *out++ = kDigits[byte & 15];
    }
    *out = '\0';
  }
}

}  // namespace

class AsyncRouterDealerChannel::Impl {
 public:
  Impl(std::string name, role_t role) : name_(std::move(name)), end_(makeEnd(role)) {}

  ClientEnd* client() { return std::get_if<ClientEnd>(&end_); }
  WorkerEnd& worker() { return std::get<WorkerEnd>(end_); }

  void join() {
    WorkerEnd& end = worker();
    end.dispatcher.reset();
    end.peer.clear();
    if (!end.serverEndPoint.empty() && !end.workerEndPoint.empty()) {
      end.dispatcher = RequestDispatcher::join(name_, end.serverEndPoint, end.workerEndPoint);
    }
  }

 private:
  const std::string name_;
  std::variant<ClientEnd, WorkerEnd> end_;
};

AsyncRouterDealerChannel::AsyncRouterDealerChannel(std::string name, role_t role)
    : impl_(std::make_unique<Impl>(std::move(name), role)) {}

AsyncRouterDealerChannel::~AsyncRouterDealerChannel() = default;

void AsyncRouterDealerChannel::setServerEndPoint(std::string endPoint) {
  if (ClientEnd* client = impl_->client()) {
    client->connect(endPoint);
    return;
  }
  impl_->worker().serverEndPoint = std::move(endPoint);
  impl_->join();
}

void AsyncRouterDealerChannel::setWorkerEndPoint(std::string endPoint) {
  if (impl_->client() == nullptr) {
    impl_->worker().workerEndPoint = std::move(endPoint);
    impl_->join();
  }
}

int AsyncRouterDealerChannel::send(const char* /*address*/, Message* message) {
  if (ClientEnd* client = impl_->client()) {
    return client->send(*message);
  }
  const WorkerEnd& end = impl_->worker();
  return end.peer.empty() ? -1 : end.joined().send(end.peer, *message);
}

int AsyncRouterDealerChannel::receive(char* address, Message* message, long timeoutMs) {
  std::optional<std::chrono::milliseconds> timeout;
  if (timeoutMs >= 0) {
    timeout = std::chrono::milliseconds(timeoutMs);
  }
  if (ClientEnd* client = impl_->client()) {
    const int parts = client->receive(*message, timeout);
    if (parts > 0) {
      writeAddress(address, client->endPoint());
    }
    return parts;
  }
  WorkerEnd& end = impl_->worker();
  RequestDispatcher::Deadline deadline;
  if (timeout) {
    deadline = RequestDispatcher::Clock::now() + *timeout;
  }
  const int parts = end.joined().receive(end.peer, *message, deadline);
  if (parts > 0) {
    writePeer(address, end.peer);
  }
  return parts;
}

}  // namespace msglyr
