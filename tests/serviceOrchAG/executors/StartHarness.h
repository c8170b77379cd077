#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "framework/method/Config.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {

/// The executor's name in the log.
inline constexpr const char* kStartFunction =
    "executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb";

/// The first element of this name in a document, from its first character to its last; empty when
/// there is none.
std::string elementOf(const std::string& document, const std::string& name);

std::size_t countOf(const std::string& text, const std::string& part);

// Changes to give to changeChildren and changeLinks.
template <auto kProperty, class T>
auto setting(T value) {
  return [value](method::Config& config) {
    config.set(kProperty->id, method::Value(value));
  };
}
template <auto kProperty>
void unset(method::Config& config) {
  config.set(kProperty->id, method::Value());
}

/// The lines of this level that a run of "start" wrote.
std::vector<test_support::LogLine> linesOf(const method::Config& target, int level);

}  // namespace zan_serviceOrchAG
