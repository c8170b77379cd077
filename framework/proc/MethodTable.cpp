#include "framework/proc/MethodTable.h"

#include <exception>
#include <string>
#include <utility>

#include "framework/core_log/Log.h"
#include "framework/proc/Answer.h"

namespace proc {

namespace {

void failByException(Stimulus& method, const char* what) {
  core_log::logPrintf("run", core_log::serviceLevel(), 8, "method class %u : caught exception: %s",
                      method.classId(), what);
  method.reportFailure(kFrameworkBits, kExceptionCode, base::String("exception: ") + what);
}

}  // namespace

InboundCall::InboundCall(const unsigned char* bytes, std::size_t size, AnswerSink sink)
    : stream_(bytes, size), sink_(std::move(sink)) {}

bool InboundCall::open(Stimulus& method) {
  return method.deserialize(stream_) && method.type() == Stimulus::kTypeMethod;
}

void InboundCall::run(Stimulus& method, const std::function<void()>& callback) {
  try {
    callback();
  } catch (const std::exception& error) {
    failByException(method, error.what());
  } catch (const std::string& text) {
    failByException(method, text.c_str());
  } catch (const char* text) {
    failByException(method, text);
  } catch (...) {
    failByException(method, "of an unknown kind");
  }
}

void InboundCall::answer(const Stimulus& method,
                         const std::function<void(base::OBioStream&)>& results) {
  if (isAnswered_ || !method.isResponseRequired() || !sink_) {
    return;
  }
  isAnswered_ = true;
  base::OBioStream bytes;
  if (method.failure() != nullptr) {
    writeFailure(bytes, method, *method.failure());
  } else {
    writeSuccess(bytes, method);
    results(bytes);
  }
  sink_(std::move(bytes));
}

InboundAnswer::InboundAnswer(const unsigned char* bytes, std::size_t size) : stream_(bytes, size) {}

bool InboundAnswer::parse() {
  Outcome outcome = Outcome::kSuccess;
  const bool isAnswer = header_.deserialize(stream_) && header_.type() == Stimulus::kTypeAnswer &&
                        readOutcome(stream_, outcome, failure_);
  isFailure_ = outcome == Outcome::kFailure;
  return isAnswer;
}

MethodTable& MethodTable::instance() {
  static MethodTable& table = *new MethodTable;
  return table;
}

void MethodTable::install(std::uint32_t classId, std::unique_ptr<MethodHandler> handler) {
  handlers_[classId] = std::move(handler);
}

const MethodHandler* MethodTable::find(std::uint32_t classId) const {
  const auto found = handlers_.find(classId);
  return found == handlers_.end() ? nullptr : found->second.get();
}

}  // namespace proc
