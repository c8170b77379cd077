#pragma once

#include "dme/chassis/Chassis.h"
#include "dme/chassis/TimeSetting.h"
#include "dme/jobs/JobTable.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/BioStream.h"
#include "framework/base/Buffer.h"
#include "framework/proc/Stimulus.h"

namespace dme {

/// Makes the calls that ask the gateway to give a blade a command, from what the store holds in
/// that moment. Not thread-safe.
class StageCall {
 public:
  /// Everything outlives this.
  StageCall(ObjectStore& store, const Chassis& chassis, const TimeSetting& time)
      : store_(store), chassis_(chassis), time_(time) {}

  /// The bytes of the call that carries the job out. Its target is there. `cookie` joins the answer
  /// to it.
  base::OBioStream encode(const Job& job, const proc::Address& gateway,
                          const base::Buffer& cookie) const;

 private:
  method::Config instance(const Job& job) const;
  method::Config slot(const Job& job) const;

  ObjectStore& store_;
  const Chassis& chassis_;
  const TimeSetting& time_;
};

/// Whether the blade is done with a command of this verb when it has acknowledged it. It reports
/// the end of the others.
constexpr bool isDoneWithReply(JobVerb verb) {
  return verb == JobVerb::kClearAppLogs ||
         (verb >= JobVerb::kLogLevel && verb != JobVerb::kFormatDisk);
}

/// Whether the gateway tells a command of this verb that it did not send from one whose answer it
/// did not get. Else one that the gateway cannot send yet is better kept back.
constexpr bool isUnsentToldApart(JobVerb verb) {
  return verb != JobVerb::kClearAppLogs && verb != JobVerb::kClearSystemLogs;
}

}  // namespace dme
