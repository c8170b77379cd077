#include "tests/serviceOrchAG/executors/StartHarness.h"

#include <gtest/gtest.h>

namespace zan_serviceOrchAG {

using test_support::LogCapture;
using test_support::LogLine;

std::string elementOf(const std::string& document, const std::string& name) {
  std::size_t begin = document.find('<' + name + '>');
  begin = begin == std::string::npos ? document.find('<' + name + ' ') : begin;
  if (begin == std::string::npos) {
    const std::string empty = '<' + name + "/>";
    return document.find(empty) == std::string::npos ? "" : empty;
  }
  const std::string end = "</" + name + '>';
  return document.substr(begin, document.find(end, begin) + end.size() - begin);
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

std::vector<LogLine> linesOf(const method::Config& target, int level) {
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executorNamed("start"), target).hasFailed);
  std::vector<LogLine> lines;
  for (const LogLine& line : log.lines()) {
    if (line.level == level) {
      lines.push_back(line);
    }
  }
  return lines;
}

}  // namespace zan_serviceOrchAG
