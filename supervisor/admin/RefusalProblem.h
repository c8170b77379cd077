#pragma once

#include <utility>

#include "dme/base/Refusal.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {

/// Why the engine does not do what is wanted, as a problem.
Problem toProblem(const dme::Refusal& refusal);

/// What `answer` makes of what the engine granted, or the refusal's problem.
template <class T, class Answer>
Response answerOf(const dme::Granted<T>& granted, const Answer& answer) {
  return granted ? answer(*granted) : toResponse(toProblem(granted.error()));
}

}  // namespace supervisor::admin
