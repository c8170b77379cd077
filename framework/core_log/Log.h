#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "framework/core_log/FormatString.h"
#include "framework/core_log/LevelCell.h"

namespace core_log {

/// Bound of one line's text in bytes as emitted, that is after escaping and without the time, level
/// and function in front of it. A longer text is cut between two characters and ends in
/// "...[cut, N bytes]", where N is its length before escaping; the marker counts into the bound.
inline constexpr std::size_t kMaxLineBytes = 65536;

/// Takes the lines in place of the log file or stderr.
class LogProvider {
 public:
  virtual ~LogProvider() = default;

  /// One line without its LF, escaped and bounded. Called on the logging thread, one line at a
  /// time; meanwhile no other line gets out. Must neither log nor call the functions below. What it
  /// throws is swallowed and counted as a lost line. The views end with the call.
  virtual void write(int level, std::string_view function, std::string_view text) = 0;
};

/// Sees every emitted line, in addition to where the line goes. For tests.
class Observer {
 public:
  virtual ~Observer() = default;

  /// As `LogProvider::write`.
  virtual void onLine(int level, std::string_view function, std::string_view text) = 0;
};

/// Sets where lines go. `provider` is borrowed until a later `init` replaces it; null keeps the
/// file of `setFile`, or stderr. With `syslog` true each line also goes to syslog(3). May be called
/// again. Does not touch the level. On return no thread is inside the previous provider.
void init(LogProvider* provider, bool syslog);

/// Appends lines to the file at `path` from now on, one write(2) a line, nothing buffered. An empty
/// path goes back to stderr. The file is created with mode 0600, and an existing one is set to it:
/// lines can hold secrets. Calling it again with the same path reopens the file, which is what log
/// rotation needs.
/// Returns the error of opening it, in which case lines go where they went before; a path that is a
/// symbolic link or no regular file is such an error. Thread-safe.
[[nodiscard]] std::error_code setFile(const std::string& path);

/// Sets the service's threshold, 0 to 8. False, and nothing changes, for another number.
/// Thread-safe; takes effect on the next lines of every thread.
bool setLevel(int level);

/// Borrows `observer` until it is replaced; null removes it. On return no thread is inside the
/// previous one, so that it can be destroyed.
void setObserver(Observer* observer);

/// How many lines could not be written since the process began.
[[nodiscard]] std::uint64_t lostLines();

namespace detail {

/// Formats, escapes and delivers one line. Never throws, keeps errno.
void emit(const char* function, int level, const char* format, ...) noexcept;

template <typename T>
inline T printable(T value) {
  return value;
}
inline const char* printable(const char* text) {
  return text != nullptr ? text : "(null)";
}
inline const char* printable(char* text) {
  return text != nullptr ? text : "(null)";
}

}  // namespace detail

/// Logs one line: time, level, function and the printf-formatted text, if `cell` admits `level`.
/// Otherwise it costs one relaxed load beyond the evaluation of the arguments.
///
/// `function` is the caller's short name and is not copied. A null text prints "(null)".
/// The line is completed with one LF unless the format ends in it. Control characters that an
/// argument brings in (LF and CR among them), DEL, C1 characters and bytes that are not UTF-8 are
/// written as \xNN, so that a blade cannot forge a line or drive a terminal. Texts beyond
/// `kMaxLineBytes` are cut.
///
/// Thread-safe, never throws, keeps errno; lines of one thread stay in order. Blocks for as long as
/// the write does. A failed write loses the line and is counted, see `lostLines`. A program whose
/// stderr is a pipe ignores SIGPIPE.
template <typename... Args>
inline void logPrintf(const char* function, const LevelCell& cell, int level,
                      FormatString<std::type_identity_t<Args>...> format, Args... args) {
  if (!cell.admits(level)) [[likely]] {
    return;
  }
  detail::emit(function, level, format.text(), detail::printable(args)...);
}

}  // namespace core_log
