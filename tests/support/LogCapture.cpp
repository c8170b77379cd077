#include "tests/support/LogCapture.h"

#include <algorithm>
#include <chrono>

namespace test_support {
namespace {

constexpr std::chrono::seconds kPatience{30};

}  // namespace

LogCapture::LogCapture(int level) : previousLevel_(core_log::serviceLevel().get()) {
  core_log::setObserver(this);
  core_log::setLevel(level);
}

LogCapture::~LogCapture() {
  core_log::setLevel(previousLevel_);
  core_log::setObserver(nullptr);
}

std::vector<LogLine> LogCapture::lines() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return lines_;
}

std::vector<LogLine> LogCapture::linesOf(std::string_view function) const {
  std::vector<LogLine> all = lines();
  std::erase_if(all, [function](const LogLine& line) { return line.function != function; });
  return all;
}

bool LogCapture::contains(int level, std::string_view text) const {
  return count(level, text) > 0;
}

std::size_t LogCapture::count(int level, std::string_view text) const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return countLocked(level, text);
}

bool LogCapture::waitFor(int level, std::string_view text) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return arrived_.wait_for(lock, kPatience,
                           [this, level, text] { return countLocked(level, text) > 0; });
}

void LogCapture::clear() {
  const std::lock_guard<std::mutex> guard(mutex_);
  lines_.clear();
}

void LogCapture::onLine(int level, std::string_view function, std::string_view text) {
  const std::lock_guard<std::mutex> guard(mutex_);
  lines_.push_back({level, std::string(function), std::string(text)});
  arrived_.notify_all();
}

std::size_t LogCapture::countLocked(int level, std::string_view text) const {
  return static_cast<std::size_t>(std::count_if(
      lines_.begin(), lines_.end(),
      [level, text](const LogLine& line) { return line.level == level && line.text == text; }));
}

}  // namespace test_support
