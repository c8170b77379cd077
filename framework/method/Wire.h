#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

#include "framework/base/BioStream.h"
#include "framework/method/MethodObject.h"
#include "framework/proc/Answer.h"
#include "framework/proc/Stimulus.h"

// Typed reading and writing of stimuli for a program that takes calls by hand instead of
// registering callbacks: the management engine and the tests. Nothing here touches the process's
// proc::MethodTable, so engine and service can live in one process.
//
//     auto header = method::readHeader(bytes, size);          // what is it?
//     auto call = method::decodeCall<serviceorchapi::ValidateBladeStateMe>(bytes, size);
//     auto [slot, version, token] = call->in;
//     link.send(peer, method::encodeAnswer(*call, {newToken, true, false}), true);

namespace method {

/// The header of a stimulus, to dispatch on its classId() and type(). Null when the bytes are none.
inline std::unique_ptr<proc::StimulusHeader> readHeader(const unsigned char* bytes,
                                                        std::size_t size) {
  base::IBioStream stream(bytes, size);
  auto header = std::make_unique<proc::StimulusHeader>();
  return header->deserialize(stream) ? std::move(header) : nullptr;
}

/// A call of the method `Me` with its arguments in `in`. Null when the bytes are anything else.
template <class Me>
std::unique_ptr<Me> decodeCall(const unsigned char* bytes, std::size_t size) {
  base::IBioStream stream(bytes, size);
  auto me = std::make_unique<Me>();
  const bool isCall = me->deserialize(stream) && me->type() == proc::Stimulus::kTypeMethod &&
                      me->classId() == Me::kClassId && me->deserializeArgs(stream);
  return isCall ? std::move(me) : nullptr;
}

/// The bytes of a call: the header of `me` (cookie, address, priority, response required) and the
/// arguments in `me.in`.
template <class Me>
base::OBioStream encodeCall(const Me& me) {
  base::OBioStream stream;
  me.encode(stream);
  return stream;
}

/// The answer that says `call` succeeded with these results. To be sent only when the call
/// isResponseRequired().
template <class Me>
base::OBioStream encodeAnswer(const Me& call, const typename Me::OutTuple& results) {
  base::OBioStream stream;
  proc::writeSuccess(stream, call);
  writeArgs(stream, results);
  return stream;
}

/// The answer that says `call` failed; a header from readHeader() will do for the call. To be sent
/// only when the call isResponseRequired().
inline base::OBioStream encodeFailure(const proc::Stimulus& call,
                                      const proc::Stimulus::Failure& failure) {
  base::OBioStream stream;
  proc::writeFailure(stream, call, failure);
  return stream;
}

/// An answer to a call of the method `Me`.
template <class Me>
struct Answer {
  /// Carries the cookie, and the results in `out` when there is no failure.
  std::unique_ptr<Me> me;
  /// Why the method failed; nothing when it succeeded.
  std::optional<proc::Stimulus::Failure> failure;
};

/// Nothing when the bytes are no answer to `Me`.
template <class Me>
std::optional<Answer<Me>> decodeAnswer(const unsigned char* bytes, std::size_t size) {
  proc::InboundAnswer answer(bytes, size);
  if (!answer.parse() || answer.classId() != Me::kClassId) {
    return std::nullopt;
  }
  Answer<Me> read{std::make_unique<Me>(), std::nullopt};
  answer.open(*read.me);
  if (answer.isFailure()) {
    read.failure = answer.failure();
  } else if (!read.me->deserializeResults(answer.stream())) {
    return std::nullopt;
  }
  return read;
}

}  // namespace method
