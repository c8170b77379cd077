#pragma once

#include <cstdint>

#include "framework/base/BioStream.h"
#include "framework/proc/Stimulus.h"

namespace proc {

/// The byte that follows an answer's header. Results follow kSuccess; result bits, code and text
/// follow kFailure.
enum class Outcome : std::uint8_t { kSuccess = 0, kFailure = 1 };

/// How the framework itself reports the failure of a method that no callback judged.
inline constexpr Stimulus::ResultBits kFrameworkBits = 1;
inline constexpr std::uint32_t kNoHandlerCode = 1;
inline constexpr std::uint32_t kUndecodableCode = 2;
inline constexpr std::uint32_t kExceptionCode = 3;

/// Appends the answer to `call` that says it succeeded; the caller appends the results.
void writeSuccess(base::OBioStream& stream, const Stimulus& call);
/// Appends the answer to `call` that says it failed, whole.
void writeFailure(base::OBioStream& stream, const Stimulus& call, const Stimulus::Failure& failure);
/// Reads what follows the header of an answer, leaving `stream` at the results of a success. False
/// when the bytes are no outcome.
bool readOutcome(base::IBioStream& stream, Outcome& outcome, Stimulus::Failure& failure);

}  // namespace proc
