#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <tuple>

#include "framework/method/ArgCodec.h"
#include "framework/proc/MethodTable.h"
#include "framework/proc/Stimulus.h"

namespace method {

/// The types of a method's arguments, in the order in which they travel.
template <class... T>
struct In {};

/// The types of the results that a successful answer carries, in the order in which they travel.
template <class... T>
struct Out {};

/// The base of every method object. `Me` names the method by constants:
///
///     static constexpr std::uint32_t kClassId;     // unique among all methods
///     static constexpr std::string_view kName;     // "serviceorchapi::ValidateBladeState"
///     static constexpr std::uint32_t kIntent;      // usually Stimulus::kIntentNone
///     static constexpr std::uint32_t kBulk;        // kBulkSet or kNoBulk
///
/// The object is the stimulus of its call: it carries the cookie, and a failure is reported on it.
template <class Me, class InTypes, class OutTypes>
class MethodObject;

template <class Me, class... I, class... O>
class MethodObject<Me, In<I...>, Out<O...>> : public proc::Stimulus {
 public:
  using InTuple = std::tuple<I...>;
  using OutTuple = std::tuple<O...>;
  /// Carries the method out. A normal return is success unless a failure was reported.
  using ExecuteCb = void (*)(Me&, const I&...);
  using SuccessRspCb = void (*)(Me&, const O&...);
  using FailedRspCb = void (*)(Me&, unsigned int code, const base::String& text);
  /// Called after the execution and before the answer is encoded.
  using FormatRspCb = void (*)(Me&);

  MethodObject()
      : Stimulus(Me::kClassId, kTypeMethod, Me::kIntent, Me::kBulk, Priority::kDefault,
                 kResponseRequired, 0) {
    setDataBit(0, true);
  }

  /// Arguments of the call.
  InTuple in;
  /// Results of a successful call.
  OutTuple out;

  /// Registers what is called when this method arrives here (execute and the format callbacks) or
  /// when its answer does (success, failure). Null stands for none. A second registration replaces
  /// the first. Called at start-up, before the service is active.
  static void registerCbs(ExecuteCb execute, SuccessRspCb success, FailedRspCb failure,
                          FormatRspCb formatSuccess, FormatRspCb formatFailure);

  void serializeArgs(base::OBioStream& stream) const { writeArgs(stream, in); }
  /// False when the bytes end early or go on after the last value, as for deserializeResults().
  bool deserializeArgs(base::IBioStream& stream) {
    return readArgs(stream, in) && stream.remaining() == 0;
  }
  void serializeResults(base::OBioStream& stream) const { writeArgs(stream, out); }
  bool deserializeResults(base::IBioStream& stream) {
    return readArgs(stream, out) && stream.remaining() == 0;
  }

  void encode(base::OBioStream& stream) const override {
    serialize(stream);
    serializeArgs(stream);
  }

 private:
  struct Callbacks {
    ExecuteCb execute = nullptr;
    SuccessRspCb success = nullptr;
    FailedRspCb failure = nullptr;
    FormatRspCb formatSuccess = nullptr;
    FormatRspCb formatFailure = nullptr;
  };

  /// What the dispatcher calls, with the types of this method put back.
  class Handler : public proc::MethodHandler {
   public:
    explicit Handler(const Callbacks& callbacks) : callbacks_(callbacks) {}
    std::string_view name() const override { return Me::kName; }
    bool isExecutable() const override { return callbacks_.execute != nullptr; }
    bool execute(proc::InboundCall& call) const override;
    bool succeeded(proc::InboundAnswer& answer) const override;
    bool failed(proc::InboundAnswer& answer) const override;

   private:
    Callbacks callbacks_;
  };
};

template <class Me, class... I, class... O>
void MethodObject<Me, In<I...>, Out<O...>>::registerCbs(ExecuteCb execute, SuccessRspCb success,
                                                        FailedRspCb failure,
                                                        FormatRspCb formatSuccess,
                                                        FormatRspCb formatFailure) {
  const Callbacks callbacks{execute, success, failure, formatSuccess, formatFailure};
  proc::MethodTable::instance().install(Me::kClassId, std::make_unique<Handler>(callbacks));
}

template <class Me, class... I, class... O>
bool MethodObject<Me, In<I...>, Out<O...>>::Handler::execute(proc::InboundCall& call) const {
  Me me;
  if (callbacks_.execute == nullptr || !call.open(me) || !me.deserializeArgs(call.stream())) {
    return false;
  }
  call.run(me,
           [&] { std::apply([&](const I&... args) { callbacks_.execute(me, args...); }, me.in); });
  const bool hasFailed = me.failure() != nullptr;
  const FormatRspCb format = hasFailed ? callbacks_.formatFailure : callbacks_.formatSuccess;
  if (format != nullptr) {
    call.run(me, [&] { format(me); });
  }
  call.answer(me, [&](base::OBioStream& stream) { me.serializeResults(stream); });
  return true;
}

template <class Me, class... I, class... O>
bool MethodObject<Me, In<I...>, Out<O...>>::Handler::succeeded(proc::InboundAnswer& answer) const {
  Me me;
  if (callbacks_.success == nullptr) {
    return true;
  }
  answer.open(me);
  if (!me.deserializeResults(answer.stream())) {
    return false;
  }
  std::apply([&](const O&... results) { callbacks_.success(me, results...); }, me.out);
  return true;
}

template <class Me, class... I, class... O>
bool MethodObject<Me, In<I...>, Out<O...>>::Handler::failed(proc::InboundAnswer& answer) const {
  Me me;
  if (callbacks_.failure == nullptr) {
    return true;
  }
  answer.open(me);
  callbacks_.failure(me, answer.failure().code, answer.failure().text);
  return true;
}

}  // namespace method
