#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

/// Why a request was not served (RFC 9457), and what to do about it.
struct Problem {
  unsigned status;
  std::string kind;    ///< the last step of the problem's type, "/problems/KIND"; never changes
  std::string title;   ///< the same for all problems of the kind
  std::string detail;  ///< about this one
  std::string remedy;
  std::uint64_t job = 0;  ///< the job that it is about; 0 for none
  /// The value that it is about, e.g. "ldu.links[0].vlan"; a member's name may be empty.
  std::optional<std::string> field = {};
};

Response toResponse(const Problem& problem);

/// Thrown while a request is served: the problem is the answer.
class ProblemError : public std::runtime_error {
 public:
  explicit ProblemError(Problem problem)
      : std::runtime_error(problem.detail), problem_(std::move(problem)) {}
  const Problem& problem() const { return problem_; }

 private:
  Problem problem_;
};

/// A value in a query or a body that cannot be.
Problem badValue(const std::string& field, const std::string& detail, const std::string& remedy);
/// What the request threw is nobody's fault but ours.
Problem internalProblem(const std::exception& error);

}  // namespace supervisor::admin
