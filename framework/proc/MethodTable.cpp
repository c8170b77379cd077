#include "framework/proc/MethodTable.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "framework/core_log/Log.h"
#include "framework/proc/Answer.h"

namespace proc {

namespace {

std::optional<base::String> logged(std::uint32_t classId, const char* what) {
  core_log::logPrintf("runCallback", core_log::serviceLevel(), 8,
                      "method class %u : caught exception: %s", classId, what);
  return base::String(what);
}

}  // namespace

std::optional<base::String> runCallback(std::uint32_t classId,
                                        const std::function<void()>& callback) {
  try {
    callback();
    return std::nullopt;
  } catch (const std::exception& error) {
    return logged(classId, error.what());
  } catch (const std::string& text) {
    return logged(classId, text.c_str());
  } catch (const char* text) {
    return logged(classId, text);
  } catch (...) {
    return logged(classId, "of an unknown kind");
  }
}

InboundCall::InboundCall(const unsigned char* bytes, std::size_t size, AnswerSink sink)
    : stream_(bytes, size), sink_(std::move(sink)) {}

bool InboundCall::open(Stimulus& method) {
  return method.deserialize(stream_) && method.type() == Stimulus::kTypeMethod;
}

void InboundCall::run(Stimulus& method, const std::function<void()>& callback) {
  const std::optional<base::String> thrown = runCallback(method.classId(), callback);
  if (thrown.has_value()) {
    method.reportFailure(kFrameworkBits, kExceptionCode, base::String("exception: ") + *thrown);
  }
}

void InboundCall::answer(const Stimulus& method,
                         const std::function<void(base::OBioStream&)>& results) {
  hasFailed_ = hasFailed_ || method.failure() != nullptr;
  if (isAnswered_ || !method.isResponseRequired() || !sink_) {
    return;
  }
  base::OBioStream bytes;
  if (method.failure() != nullptr) {
    writeFailure(bytes, method, *method.failure());
  } else {
    writeSuccess(bytes, method);
    results(bytes);
  }
  isAnswered_ = true;
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
