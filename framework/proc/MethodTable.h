#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

#include "framework/base/BioStream.h"
#include "framework/proc/Stimulus.h"

namespace proc {

/// Takes an encoded answer towards the peer that made the call.
using AnswerSink = std::function<void(base::OBioStream&& bytes)>;

/// Runs a callback. What it throws is logged at level 8 under the method's class and returned as
/// text; nothing leaves this call.
std::optional<base::String> runCallback(std::uint32_t classId,
                                        const std::function<void()>& callback);

/// A method call that arrived: its bytes and the way back.
class InboundCall {
 public:
  /// `bytes` are borrowed for the life of the object; `sink` may be empty when nobody can be told.
  InboundCall(const unsigned char* bytes, std::size_t size, AnswerSink sink);

  /// Reads the header into `method` and leaves stream() at the arguments. False when the bytes
  /// are no call.
  bool open(Stimulus& method);
  base::IBioStream& stream() { return stream_; }
  /// Runs the callback as runCallback() does. An exception fails the method.
  void run(Stimulus& method, const std::function<void()>& callback);
  /// Sends the outcome of `method`, with `results` when it succeeded; nothing when the method
  /// requires no response. The first answer stands; later ones are ignored.
  void answer(const Stimulus& method, const std::function<void(base::OBioStream&)>& results);
  /// True when an outcome was given that is a failure, also one that nobody is told.
  bool hasFailed() const { return hasFailed_; }

 private:
  base::IBioStream stream_;
  AnswerSink sink_;
  bool isAnswered_ = false;
  bool hasFailed_ = false;
};

/// An answer that arrived to a call made here.
class InboundAnswer {
 public:
  /// `bytes` are borrowed for the life of the object.
  InboundAnswer(const unsigned char* bytes, std::size_t size);

  /// Reads the header and the outcome. False when the bytes are no answer.
  bool parse();
  std::uint32_t classId() const { return header_.classId(); }
  bool isFailure() const { return isFailure_; }
  const Stimulus::Failure& failure() const { return failure_; }
  /// Copies the header (cookie, address, priority) into `method`. Valid after parse().
  void open(Stimulus& method) const { method.copyHeader(header_); }
  /// At the results. Valid after parse().
  base::IBioStream& stream() { return stream_; }

 private:
  base::IBioStream stream_;
  StimulusHeader header_;
  bool isFailure_ = false;
  Stimulus::Failure failure_;
};

/// What is called for one method. An operation returns false when the bytes do not decode as this
/// method, or, for a call, when nothing is registered that carries it out; the dispatcher logs it.
/// An answer that nobody registered for is taken and forgotten.
class MethodHandler {
 public:
  virtual ~MethodHandler() = default;
  virtual std::string_view name() const = 0;
  /// True when there is a callback that carries the method out.
  virtual bool isExecutable() const = 0;
  /// Runs the callback and answers the call.
  virtual bool execute(InboundCall& call) const = 0;
  virtual bool succeeded(InboundAnswer& answer) const = 0;
  virtual bool failed(InboundAnswer& answer) const = 0;
};

/// The callbacks of this process's service, by method class id. Filled at start-up by the method
/// objects' registerCbs, read-only once the service is active, so reads take no lock.
class MethodTable {
 public:
  static MethodTable& instance();

  void install(std::uint32_t classId, std::unique_ptr<MethodHandler> handler);
  /// The handler, or null when none is registered.
  const MethodHandler* find(std::uint32_t classId) const;
  std::size_t size() const { return handlers_.size(); }
  /// For tests: forgets every registration.
  void clear() { handlers_.clear(); }

 private:
  std::map<std::uint32_t, std::unique_ptr<MethodHandler>> handlers_;
};

}  // namespace proc
