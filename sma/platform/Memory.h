#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "sma/platform/Platform.h"

namespace sma {

// --- what a blade does not forget when it dies

/// The token by which the gateway knows it.
struct TokenKept {
  std::string token;
};
/// It began to carry out a command; noted before the reply.
struct CommandBegun {
  std::string command;
  std::string app;  ///< the instance it named, or empty
  std::string messageId;
};
struct AppChanged {
  AppChange change;
};
/// All instances are gone, and it holds the token that came with the command.
struct DiskFormatted {
  std::string token;
};
struct SettingsKept {
  std::string logLevel;
  std::string timeZone;
};
struct LogsCleared {
  std::string app;  ///< or empty: the system's
};

using Memory =
    std::variant<TokenKept, CommandBegun, AppChanged, DiskFormatted, SettingsKept, LogsCleared>;

/// Takes a memory to where it outlasts the process. When it returns, it does.
using Journal = std::function<void(const Memory&)>;

}  // namespace sma
