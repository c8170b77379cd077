#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <mutex>
#include <utility>

#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

/// The way of other threads to the server's thread. May outlive the server. Thread-safe.
class Mailbox {
 public:
  explicit Mailbox(boost::asio::io_context& context) : context_(&context) {}

  /// Has the step run on the server's thread; dropped when the server has ended.
  void post(Reply::Step step) {
    const std::lock_guard guard(mutex_);
    if (context_ != nullptr) {
      boost::asio::post(*context_, std::move(step));
    }
  }
  /// The server ends: the context is not used any more.
  void close() {
    const std::lock_guard guard(mutex_);
    context_ = nullptr;
  }

 private:
  std::mutex mutex_;
  boost::asio::io_context* context_;  // guarded by mutex_
};

}  // namespace supervisor::admin
