#include "supervisor/admin/Reply.h"

#include <exception>
#include <utility>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

Response noAnswer() {
  return toResponse({504, "no-answer", "There is no answer in time",
                     "the request was not answered within the bound",
                     "see what became of it, e.g. at /api/v1/jobs, before you repeat it"});
}

}  // namespace

void Reply::operator()(Response response) const {
  exchange_->answer(std::move(response));
}

void Reply::post(Step step) const {
  exchange_->post_([exchange = exchange_, step = std::move(step)] { exchange->run(step); });
}

void Reply::within(std::chrono::milliseconds time, std::function<Response()> otherwise) const {
  exchange_->time_ = time;
  exchange_->otherwise_ = std::move(otherwise);
}

void Reply::whenOver(Step end) const {
  exchange_->end_ = std::move(end);
}

std::optional<Response> Reply::Exchange::takeOr(Step answered) {
  const std::lock_guard guard(mutex_);
  if (!response_) {
    answered_ = std::move(answered);
  }
  return std::exchange(response_, std::nullopt);
}

void Reply::Exchange::end() {
  {
    const std::lock_guard guard(mutex_);
    isOver_ = true;
    answered_ = nullptr;
  }
  otherwise_ = nullptr;
  if (const Step end = std::exchange(end_, nullptr)) {
    end();
  }
}

void Reply::Exchange::giveUp() {
  run([this] { answer(otherwise_ ? otherwise_() : noAnswer()); });
}

void Reply::Exchange::answer(Response response) {
  Step answered;
  {
    const std::lock_guard guard(mutex_);
    if (std::exchange(isOver_, true)) {
      return;
    }
    response_ = std::move(response);
    answered = std::exchange(answered_, nullptr);
  }
  if (answered) {
    answered();
  }
}

void Reply::Exchange::run(const Step& step) {
  {
    const std::lock_guard guard(mutex_);
    if (isOver_) {
      return;
    }
  }
  try {
    step();
  } catch (const ProblemError& error) {
    answer(toResponse(error.problem()));
  } catch (const std::exception& error) {
    answer(toResponse(internalProblem(error)));
  }
}

}  // namespace supervisor::admin
