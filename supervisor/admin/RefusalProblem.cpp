#include "supervisor/admin/RefusalProblem.h"

namespace supervisor::admin {
namespace {

struct Kind {
  unsigned status;
  const char* name;
  const char* title;
};

Kind kindOf(dme::Refusal::Reason reason) {
  using Reason = dme::Refusal::Reason;
  switch (reason) {
    case Reason::kUnknownSlot:
      return {404, "unknown-slot", "There is no slot of this number"};
    case Reason::kUnknownApp:
      return {404, "unknown-app", "There is no application instance of this identifier"};
    case Reason::kUnknownJob:
      return {404, "unknown-job", "There is no job of this number"};
    case Reason::kBadValue:
      return {400, "bad-value", "A value cannot be as it is"};
    case Reason::kAlreadyThere:
      return {409, "already-there", "What is to be made exists"};
    case Reason::kJobInTheWay:
      return {409, "job-in-the-way", "Another job is in the way"};
    case Reason::kWrongState:
      return {409, "wrong-state", "The state does not allow it"};
    case Reason::kTooMany:
      return {503, "too-many-jobs", "Too many jobs are open"};
    case Reason::kNotStored:
      return {503, "not-stored", "It cannot be stored"};
  }
  return {500, "internal", "The request failed within the supervisor"};
}

}  // namespace

Problem toProblem(const dme::Refusal& refusal) {
  const Kind kind = kindOf(refusal.reason);
  Problem problem{kind.status, kind.name, kind.title, refusal.detail, refusal.remedy, refusal.job};
  if (!refusal.field.empty()) {
    problem.field = refusal.field;
  }
  return problem;
}

}  // namespace supervisor::admin
