#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "agctl/Failure.h"
#include "agctl/Screen.h"
#include "agctl/Server.h"
#include "framework/os/Clock.h"

namespace agctl {

enum class Format : std::uint8_t { kTable, kJson };

/// What every verb understands, and what those that order something understand besides.
struct Options {
  std::string socket;
  std::string config;
  Format format = Format::kTable;
  std::optional<double> timeout;  ///< seconds
  bool wait = false;
  bool yes = false;
  bool dryRun = false;
  std::optional<double> deliverWithin;  ///< seconds
  std::optional<double> finishWithin;   ///< seconds
};

/// Where the people are.
struct Console {
  std::ostream& out;
  std::ostream& err;
  std::istream& in;
  Screen outScreen = {};
  Screen errScreen = {};
  bool canAsk = false;  ///< somebody can be asked on `err` and answers on `in`
};

/// One run of a verb: whom it asks and where it writes.
class Session {
 public:
  /// How often the user wanted no more; asked while an order is on its way.
  using Interrupts = std::function<unsigned()>;

  Session(Options options, Console console, Server server, Interrupts interrupts);

  const Options& options() const { return options_; }
  const Console& console() const { return console_; }
  Server& server() { return server_; }
  bool isJson() const { return options_.format == Format::kJson; }
  bool isInterrupted() const { return interrupts_ && interrupts_() > 0; }
  /// When --timeout is over; nothing without one.
  std::optional<os::Clock::TimePoint> deadline() const { return deadline_; }

  /// A line for people: on standard error, prefixed, escaped.
  void say(const std::string& text) const;
  /// Tells a failure and returns its code; `label` names its target where there are several.
  ExitCode tell(const Failure& failure, const std::string& label = "") const;
  /// The same, and with JSON its problem document, so that each target has its line there.
  ExitCode fail(const Failure& failure, const std::string& label = "") const;
  /// A document for programs: one line.
  void printJson(const Json& document) const;

  /// Asks for a document and shows it: as it is, or as `table` writes it.
  ExitCode show(const std::string& target, const std::function<Outcome<void>(const Json&)>& table);

 private:
  const Options options_;
  const Console console_;
  Server server_;
  const Interrupts interrupts_;
  std::optional<os::Clock::TimePoint> deadline_;
};

/// What stands for a failure in JSON: the supervisor's document, or one of the same form. A label
/// becomes its member "target".
Json problemDocument(const Failure& failure, const std::string& label);

/// Seconds as a user gives them.
std::chrono::milliseconds toMilliseconds(double seconds);

}  // namespace agctl
