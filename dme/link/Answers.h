#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "dme/base/Result.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/BioStream.h"
#include "framework/base/String.h"
#include "framework/method/ArgCodec.h"
#include "framework/method/Wire.h"
#include "framework/proc/Stimulus.h"

namespace dme {

/// A method that a service called, as its function gets it.
struct MethodCall {
  std::uint64_t peer;
  const proc::StimulusHeader& header;
  base::IBioStream& stream;  ///< at the arguments
  BladeMonitor::TimePoint now;
};

/// False when the arguments do not decode, or more follows.
template <class Me>
bool readArguments(const MethodCall& call, typename Me::InTuple& arguments) {
  return method::readArgs(call.stream, arguments) && call.stream.remaining() == 0;
}

/// Answers the calls that want an answer: at once, or when what the engine holds is durable.
///
/// Functions are for one thread at a time. Answers are sent on the calling thread or on the
/// store's.
class Answers {
 public:
  using PeerId = std::uint64_t;
  /// Hands one stimulus over for a peer. Called from any thread; must not block, nor call back.
  using Send = std::function<bool(PeerId peer, const base::OBioStream& bytes, bool urgent)>;

  /// The call itself is at fault.
  static constexpr std::uint32_t kInvalidCode = 1003;
  static constexpr std::uint32_t kNotStoredCode = 1005;

  /// The store outlives this, or is closed before this goes.
  Answers(ObjectStore& store, Send send) : store_(store), send_(std::move(send)) {}

  void fail(const MethodCall& call, std::uint32_t code, const base::String& reason) const;
  template <class Me>
  void succeed(const MethodCall& call, const typename Me::OutTuple& results) const;

  /// Makes everything durable that is staged. Then the call succeeds; it fails with the reason
  /// `ifNot` if that could not be stored.
  template <class Me>
  void succeedWhenStored(const MethodCall& call, typename Me::OutTuple results, const char* ifNot);
  /// The same, with the bytes that encode(call, isStored) makes, on the store's thread.
  template <class Me, class Encode>
  void answerWhenStored(const MethodCall& call, Encode encode);

  /// Sends what is no answer.
  void send(PeerId peer, const base::OBioStream& bytes) const { send_(peer, bytes, true); }

  /// Changes that were not stored when they should have been.
  std::uint64_t notDurable() const { return notDurable_.load(std::memory_order_relaxed); }

 private:
  /// The call as an object of its own, for an answer that is sent later.
  template <class Me>
  static std::shared_ptr<const Me> keep(const proc::StimulusHeader& header);

  ObjectStore& store_;
  const Send send_;
  std::atomic<std::uint64_t> notDurable_{0};  // counted on the store's thread
};

template <class Me>
std::shared_ptr<const Me> Answers::keep(const proc::StimulusHeader& header) {
  auto me = std::make_shared<Me>();
  me->copyHeader(header);
  return me;
}

template <class Me>
void Answers::succeed(const MethodCall& call, const typename Me::OutTuple& results) const {
  if (call.header.isResponseRequired()) {
    send_(call.peer, method::encodeAnswer(*keep<Me>(call.header), results), true);
  }
}

template <class Me>
void Answers::succeedWhenStored(const MethodCall& call, typename Me::OutTuple results,
                                const char* ifNot) {
  answerWhenStored<Me>(call, [results = std::move(results), ifNot](const Me& me, bool isStored) {
    return isStored ? method::encodeAnswer(me, results)
                    : method::encodeFailure(me, {proc::kFrameworkBits, kNotStoredCode, ifNot});
  });
}

template <class Me, class Encode>
void Answers::answerWhenStored(const MethodCall& call, Encode encode) {
  const std::shared_ptr<const Me> kept = keep<Me>(call.header);
  store_.commit(
      [this, kept, peer = call.peer, encode = std::move(encode)](const Result<void>& stored) {
        notDurable_.fetch_add(stored ? 0 : 1, std::memory_order_relaxed);
        if (kept->isResponseRequired()) {
          send_(peer, encode(*kept, stored.has_value()), true);
        }
      });
}

}  // namespace dme
