#pragma once

#include <string_view>

#include "framework/core_log/Log.h"

namespace fuzz {

/// Fails unless the line can do no harm where it is shown or read by a program: UTF-8, no control
/// characters, no longer than a line may be.
void checkLogLine(std::string_view text);

/// Takes every line of the process, at every level, checks it and drops it, as long as it lives.
/// One at a time.
class LogChecks final : private core_log::LogProvider {
 public:
  LogChecks();
  ~LogChecks() override;
  LogChecks(const LogChecks&) = delete;
  LogChecks& operator=(const LogChecks&) = delete;

 private:
  void write(int level, std::string_view function, std::string_view text) override;

  const int previousLevel_;
};

}  // namespace fuzz
