#pragma once

#include <cstdint>

namespace dme_test {

/// What DurabilityChild writes for each registration that was answered; short enough for an
/// atomic write to a pipe.
struct Acknowledged {
  std::uint32_t slot;
  char token[32];
};

/// What ReportChild writes for each report that was answered.
struct AcknowledgedReport {
  std::uint32_t slot;
  std::uint32_t number;
  std::uint32_t isPlatform;  ///< else of application instances
};

/// What JobChild writes of a job.
struct JobRecord {
  enum Kind : std::uint32_t {
    kOrdered,      ///< the order was granted
    kGiven,        ///< the gateway was given the command
    kNotDelivered  ///< and is about to say that it sent nothing
  };
  Kind kind;
  std::uint32_t job;
};

}  // namespace dme_test
