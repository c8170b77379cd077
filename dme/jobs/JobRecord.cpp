#include "dme/jobs/JobRecord.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace dme {

namespace {

using sd::JobMo;

// Which property keeps which part of a view. What is empty or zero is not set.
constexpr std::pair<mo::Property<base::String>, std::string JobView::*> kTexts[] = {
    {JobMo::kTarget, &JobView::target},
    {JobMo::kApp, &JobView::app},
    {JobMo::kArgument, &JobView::argument},
    {JobMo::kCause, &JobView::cause}};
constexpr std::pair<mo::Property<std::uint32_t>, std::uint32_t JobView::*> kNumbers[] = {
    {JobMo::kSlot, &JobView::slot},
    {JobMo::kCode, &JobView::code},
    {JobMo::kPercentage, &JobView::percentage},
    {JobMo::kAttempts, &JobView::attempts}};
constexpr std::pair<mo::Property<std::uint64_t>, std::uint64_t JobView::*> kTimes[] = {
    {JobMo::kId, &JobView::id},
    {JobMo::kAcceptedAt, &JobView::acceptedAt},
    {JobMo::kSentAt, &JobView::sentAt},
    {JobMo::kAcknowledgedAt, &JobView::acknowledgedAt},
    {JobMo::kFinishedAt, &JobView::finishedAt},
    {JobMo::kDeliverBy, &JobView::deliverBy},
    {JobMo::kFinishBy, &JobView::finishBy},
    {JobMo::kRevision, &JobView::revision}};

template <class T, class Value>
void setIfAny(JobMo& record, const mo::Property<T>& property, const Value& value) {
  if (value != Value()) {
    record.set(property, T(value));
  }
}

template <class Enum, std::size_t kSize>
std::optional<Enum> valueNamed(const std::array<std::string_view, kSize>& names,
                               const base::String& name) {
  const auto* const found = std::find(names.begin(), names.end(), name.view());
  return found == names.end() ? std::nullopt
                              : std::optional(static_cast<Enum>(found - names.begin()));
}

}  // namespace

JobMo recordOf(const Job& job) {
  JobMo record;
  for (const auto& [property, member] : kTexts) {
    setIfAny(record, property, job.view.*member);
  }
  for (const auto& [property, member] : kNumbers) {
    setIfAny(record, property, job.view.*member);
  }
  for (const auto& [property, member] : kTimes) {
    setIfAny(record, property, job.view.*member);
  }
  record.set(JobMo::kVerb, base::String(nameOf(job.view.verb)));
  record.set(JobMo::kState, base::String(nameOf(job.view.state)));
  setIfAny(record, JobMo::kReason, std::string(nameOf(job.view.reason)));
  setIfAny(record, JobMo::kVersion, job.version);
  setIfAny(record, JobMo::kFinishWithin, static_cast<std::uint64_t>(job.finishWithin.count()));
  if (isForApp(job.view.verb)) {
    record.set(JobMo::kPhaseBefore, base::String(nameOf(job.phaseBefore)));
  }
  return record;
}

std::optional<Job> jobOf(const Object& record) {
  const auto verb = valueNamed<JobVerb>(kJobVerbNames, record.get(JobMo::kVerb));
  const auto state = jobStateNamed(record.get(JobMo::kState).view());
  const auto reason = valueNamed<JobReason>(kJobReasonNames, record.get(JobMo::kReason));
  if (!verb || !state || !reason || record.get(JobMo::kId) == 0) {
    return std::nullopt;
  }
  Job job;
  for (const auto& [property, member] : kTexts) {
    job.view.*member = record.get(property).str();
  }
  for (const auto& [property, member] : kNumbers) {
    job.view.*member = record.get(property);
  }
  for (const auto& [property, member] : kTimes) {
    job.view.*member = record.get(property);
  }
  job.view.verb = *verb;
  job.view.state = *state;
  job.view.reason = *reason;
  job.version = record.get(JobMo::kVersion).str();
  job.finishWithin = std::chrono::milliseconds(record.get(JobMo::kFinishWithin));
  job.phaseBefore = valueNamed<AppPhase>(kAppPhaseNames, record.get(JobMo::kPhaseBefore))
                        .value_or(AppPhase::kAssumed);
  return job;
}

}  // namespace dme
