#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "framework/msglyr/FileDescriptor.h"
#include "framework/msglyr/Message.h"
#include "framework/msglyr/Socket.h"
#include "framework/os/WaitObserver.h"

namespace msglyr {

// Hands the requests of one ROUTER to the workers that share it, without a hop between threads.
//
// Socket operations are short and happen under one lock. One worker, the leader, takes all
// requests: it receives, handles, answers and comes back, and while it does so the others stay
// away from the lock. Handling a request is usually quicker than waking a thread. A handler that is
// about to wait for an event steps down first, and one of the others, the deputy, becomes the
// leader. When a handler blocks in another way, the leader makes no progress; the deputy looks for
// that twice in a millisecond while there is traffic. A request therefore waits about a millisecond
// at most as long as one of the workers is free. When traffic stops, nothing ticks: the leader
// waits in poll and the others on condition variables.
class RequestDispatcher : public os::WaitObserver,
                          public std::enable_shared_from_this<RequestDispatcher> {
 public:
  using Clock = std::chrono::steady_clock;
  using Deadline = std::optional<Clock::time_point>;  // none: no limit

  // The dispatcher of these three texts; the first to ask binds. It lives as long as somebody
  // holds it. Throws TransportError if the end point cannot be bound. Any thread.
  static std::shared_ptr<RequestDispatcher> join(const std::string& name,
                                                 const std::string& serverEndPoint,
                                                 const std::string& workerEndPoint);

  // Time between two looks of the deputy while there is traffic.
  static constexpr std::chrono::microseconds kDeputyTick{500};

  explicit RequestDispatcher(const std::string& serverEndPoint,
                             std::chrono::microseconds deputyTick = kDeputyTick);
  RequestDispatcher(const RequestDispatcher&) = delete;
  RequestDispatcher& operator=(const RequestDispatcher&) = delete;

  // As MsgLyrChannel::receive. `peer` takes the sender, to be given to send. Any thread. After
  // an error it pauses, longer each time up to a second, before it returns -1.
  int receive(std::string& peer, Message& message, Deadline deadline);

  // As MsgLyrChannel::send. Any thread; never blocks on the peer.
  int send(const std::string& peer, const Message& message);

  // The calling worker does not come back for a while.
  void onWait() noexcept override;

  // The bound end point, with the port that the system chose if "*" was asked for.
  std::string endPoint();

 private:
  // What the leader is at; None when there is no leader.
  enum class Leader { None, Works, Polls };
  using Lock = std::unique_lock<std::mutex>;

  bool leads() const;
  void lead();
  void onTaken();
  void pollSocket(Lock& lock, Deadline deadline);
  void stepDown();
  void alertDeputy();
  void standBy(Lock& lock, Deadline deadline);
  void beDeputy(Lock& lock, Deadline deadline);
  void wakeLeaderIfReadable();
  int fail(Lock& lock);

  // Constant after construction.
  const MessageLimits limits_;
  const std::chrono::microseconds deputyTick_;
  int socketFd_;
  WakeUp wakeUp_;  // of the leader that polls

  std::mutex mutex_;
  // Everything below is guarded by mutex_.
  Socket socket_;
  Frame frame_;
  std::string sender_;
  Leader leader_ = Leader::None;
  std::thread::id leaderThread_;
  std::uint64_t progress_ = 0;  // calls of receive and requests taken
  unsigned errors_ = 0;         // consecutive failures of the transport
  bool hasDeputy_ = false;
  bool deputyTicks_ = false;
  unsigned parked_ = 0;  // on bench_
  std::condition_variable deputyWake_;
  std::condition_variable bench_;
};

}  // namespace msglyr
