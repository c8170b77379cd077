#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

/// The answer that a request gets, at once or later, from any thread. A handle: copies speak for
/// the same request, and it may outlive the connection and the server.
class Reply {
 public:
  using Step = std::function<void()>;
  /// Runs a step on the interface's thread, later. Thread-safe. A step that is given after the
  /// interface's end is dropped.
  using Post = std::function<void(Step)>;

  class Exchange;
  explicit Reply(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}

  /// Answers the request. Only the first answer counts, and none once nobody waits any more.
  /// Thread-safe; never blocks.
  void operator()(Response response) const;
  /// Runs a step on the interface's thread, unless the request is over by then. What it throws
  /// answers the request as an internal problem. Thread-safe; never blocks.
  void post(Step step) const;

  // For the handler, while it runs on the interface's thread:

  /// After this time the answer is what `otherwise` gives, on the interface's thread. Not called,
  /// the request is answered with a problem after the server's bound.
  void within(std::chrono::milliseconds time, std::function<Response()> otherwise) const;
  /// Calls `end` on the interface's thread once the request is over: answered, or the client or
  /// the interface has gone. To be called once.
  void whenOver(Step end) const;

 private:
  std::shared_ptr<Exchange> exchange_;
};

/// What stands behind a reply: the server's side of one request. Used on the interface's thread,
/// except for what Reply says. Its owner calls end().
class Reply::Exchange {
 public:
  explicit Exchange(Post post) : post_(std::move(post)) {}
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  /// The answer if there is one. Else `answered` is called once there is, on any thread; then ask
  /// again.
  std::optional<Response> takeOr(Step answered);
  /// The request is over: later answers and steps come to nothing. Idempotent.
  void end();

  /// How long the handler wants to wait, if it says.
  std::optional<std::chrono::milliseconds> time() const { return time_; }
  /// The time is over: answers what the handler says for this case, or that there is no answer.
  void giveUp();

 private:
  friend class Reply;
  void answer(Response response);
  void run(const Step& step);

  const Post post_;
  std::optional<std::chrono::milliseconds> time_;
  std::function<Response()> otherwise_;
  Step end_;

  std::mutex mutex_;
  std::optional<Response> response_;  // guarded by mutex_, as what follows
  Step answered_;
  bool isOver_ = false;  // no answer is taken any more
};

}  // namespace supervisor::admin
