#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/LogLines.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {

using test_support::LogCapture;
using test_support::LogLine;

void PrintTo(const LogRow& row, std::ostream* out) {
  *out << row.level << ' ' << row.function << ": \"" << row.line << '"';
}

namespace {

/// What a trigger writes. It runs once for all of its rows: a process starts up once only.
const std::vector<LogLine>& linesOf(void (*trigger)()) {
  static std::map<void (*)(), std::vector<LogLine>> written;
  const auto known = written.find(trigger);
  if (known != written.end()) {
    return known->second;
  }
  const LogCapture log(0);
  trigger();
  return written[trigger] = log.lines();
}

std::string listed(const std::vector<LogLine>& lines) {
  std::string text;
  for (const LogLine& line : lines) {
    text += "  " + std::to_string(line.level) + " " + line.function + ": \"" + line.text + "\"\n";
  }
  return text;
}

TEST_P(LogLines, Trigger_WritesTheLineAtItsLevel) {
  const LogRow& row = GetParam();
  const std::vector<LogLine>& lines = linesOf(row.trigger);
  const auto exact =
      std::count(lines.begin(), lines.end(), LogLine{row.level, row.function, row.line});
  EXPECT_EQ(row.times, static_cast<std::size_t>(exact)) << "written instead:\n" << listed(lines);
  const auto text = std::count_if(lines.begin(), lines.end(),
                                  [&row](const LogLine& line) { return line.text == row.line; });
  EXPECT_EQ(exact, text) << "written at another level or by another function:\n" << listed(lines);
}

}  // namespace
}  // namespace zan_serviceOrchAG
