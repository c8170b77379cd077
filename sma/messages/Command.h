#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/msglyr/Message.h"

namespace sma {

/// The agents' status codes for a command, in the reply and in reports of progress.
namespace code {
inline constexpr unsigned kOk = 100;
inline constexpr unsigned kInvalidCommand = 500;
inline constexpr unsigned kInvalidContentType = 501;
inline constexpr unsigned kInvalidContentVersion = 502;
inline constexpr unsigned kUnreadable = 503;       ///< the document
inline constexpr unsigned kUnknownInstance = 504;  ///< the blade has no such instance
inline constexpr unsigned kWrongValue = 505;       ///< or an element is missing or there twice
inline constexpr unsigned kBusy = 507;             ///< a command is under way
inline constexpr unsigned kFailed = 508;           ///< or cannot be done in this state
inline constexpr unsigned kForeignSlot = 511;      ///< the command is for another blade
}  // namespace code

/// Why a command is not carried out.
struct Refusal {
  unsigned code = 0;
  std::string text;
};

/// A command of the gateway, its document checked. What the command does not carry is empty.
struct Command {
  std::string name;          ///< as the subject has it, e.g. "platformLogLevel.set"
  std::string documentName;  ///< as documents have it, e.g. "platformLogLevelSet"
  std::string messageId;
  std::string app;
  std::string package;  ///< path of the file to install or upgrade to
  std::string token;
  std::string logLevel;
  std::string timeZone;
};

/// The version of a package by its file's name: what stands between the last "-" and the last ".",
/// as in "fw-1.2.pkg"; "1.0" where there is nothing.
std::string packageVersion(std::string_view path);

/// The names of the commands that blades know, as subjects have them.
std::vector<std::string> commandNames();

/// A command as far as it could be read, and what is wrong with it.
struct CommandRead {
  Command command;  ///< nameless unless it is a known command for this blade
  std::optional<Refusal> refusal;
};

/// Reads a command to the blade in `slot`. The message has five parts.
CommandRead readCommand(const msglyr::Message& message, std::uint32_t slot);

/// The five-part answer to a command, whether it could be read or not.
msglyr::Message makeCommandReply(const msglyr::Message& command, unsigned status,
                                 std::string_view text);

}  // namespace sma
