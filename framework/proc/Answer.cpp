#include "framework/proc/Answer.h"

namespace proc {

void writeSuccess(base::OBioStream& stream, const Stimulus& call) {
  call.serializeAnswer(stream);
  stream.write(static_cast<std::uint8_t>(Outcome::kSuccess));
}

void writeFailure(base::OBioStream& stream, const Stimulus& call,
                  const Stimulus::Failure& failure) {
  call.serializeAnswer(stream);
  stream.write(static_cast<std::uint8_t>(Outcome::kFailure));
  stream.write(failure.bits);
  stream.write(failure.code);
  stream.write(failure.text);
}

bool readOutcome(base::IBioStream& stream, Outcome& outcome, Stimulus::Failure& failure) {
  std::uint8_t byte = 0;
  if (!stream.read(byte)) {
    return false;
  }
  switch (static_cast<Outcome>(byte)) {
    case Outcome::kSuccess:
      outcome = Outcome::kSuccess;
      return true;
    case Outcome::kFailure:
      outcome = Outcome::kFailure;
      return stream.read(failure.bits) && stream.read(failure.code) && stream.read(failure.text) &&
             stream.remaining() == 0;
  }
  return false;
}

}  // namespace proc
