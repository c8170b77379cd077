#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "supervisor/admin/Json.h"
#include "supervisor/admin/Reply.h"
#include "supervisor/admin/Router.h"

namespace supervisor::admin {

/// One request whose answer a test looks at. Stands in for the connection: steps run when the test
/// says so.
class Asking {
 public:
  Asking() = default;
  ~Asking() { exchange_->end(); }
  Asking(const Asking&) = delete;
  Asking& operator=(const Asking&) = delete;

  Reply reply() const { return Reply(exchange_); }
  /// Runs the steps that were posted.
  void run() {
    while (const auto step = next()) {
      step();
    }
  }
  /// The time that the handler gave itself is over.
  void giveUp() { exchange_->giveUp(); }
  /// The client has gone.
  void leave() { exchange_->end(); }
  std::optional<std::chrono::milliseconds> time() const { return exchange_->time(); }
  /// The answer, if it is there: then the request is over.
  std::optional<Response> response() {
    auto response = exchange_->takeOr(nullptr);
    if (response) {
      exchange_->end();
    }
    return response;
  }

 private:
  struct Steps {
    std::mutex mutex;
    std::deque<Reply::Step> waiting;
  };

  Reply::Step next() {
    const std::lock_guard guard(steps_->mutex);
    if (steps_->waiting.empty()) {
      return nullptr;
    }
    Reply::Step step = std::move(steps_->waiting.front());
    steps_->waiting.pop_front();
    return step;
  }

  const std::shared_ptr<Steps> steps_ = std::make_shared<Steps>();
  const std::shared_ptr<Reply::Exchange> exchange_ =
      std::make_shared<Reply::Exchange>([steps = steps_](Reply::Step step) {
        const std::lock_guard guard(steps->mutex);
        steps->waiting.push_back(std::move(step));
      });
};

/// Asks the router and expects the answer at once.
inline Response ask(const Router& router, const std::string& method, const std::string& target,
                    const std::string& body = "",
                    const std::string& contentType = "application/json") {
  Asking asking;
  router.answer({method, target, {}, {}, contentType, body}, asking.reply());
  asking.run();
  auto response = asking.response();
  EXPECT_TRUE(response) << method << " " << target << ": no answer";
  return response.value_or(Response{});
}

/// The same where a problem is expected.
inline Json askInVain(const Router& router, const std::string& method, const std::string& target,
                      const std::string& body = "") {
  const Response response = ask(router, method, target, body);
  EXPECT_EQ(response.contentType, "application/problem+json") << response.body;
  Json json = Json::parse(response.body);
  EXPECT_EQ(json["status"], response.status);
  for (const char* member : {"type", "title", "detail", "remedy"}) {
    EXPECT_NE(json.value(member, ""), "") << member << ": " << response.body;
  }
  return json;
}

}  // namespace supervisor::admin
