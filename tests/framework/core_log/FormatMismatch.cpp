// Compiled case by case, to see that a format that does not fit its arguments does not compile and
// that the message says why. Case 0 compiles.

#include <cstdint>
#include <string>

#include "framework/core_log/Log.h"

void log(const std::string& text, std::uint64_t large, const char* format) {
  const auto& cell = core_log::serviceLevel();
  static_cast<void>(text);
  static_cast<void>(large);
  static_cast<void>(format);
#if CASE == 0
  core_log::logPrintf(__func__, cell, 5, "%s %lu", text.c_str(), large);
#elif CASE == 1
  core_log::logPrintf(__func__, cell, 5, "%s %d", text.c_str());
#elif CASE == 2
  core_log::logPrintf(__func__, cell, 5, "%s", text.c_str(), 1);
#elif CASE == 3
  core_log::logPrintf(__func__, cell, 5, "%d", large);
#elif CASE == 4
  core_log::logPrintf(__func__, cell, 5, "%d", text.c_str());
#elif CASE == 5
  core_log::logPrintf(__func__, cell, 5, "%s", 1);
#elif CASE == 6
  core_log::logPrintf(__func__, cell, 5, "%s", text);
#elif CASE == 7
  core_log::logPrintf(__func__, cell, 5, "%f", 1);
#elif CASE == 8
  core_log::logPrintf(__func__, cell, 5, "%p", 1);
#elif CASE == 9
  core_log::logPrintf(__func__, cell, 5, "%n", text.c_str());
#elif CASE == 10
  core_log::logPrintf(__func__, cell, 5, "100 %");
#elif CASE == 11
  core_log::logPrintf(__func__, cell, 5, "two\nlines");
#elif CASE == 12
  core_log::logPrintf(__func__, cell, 5, "%*d", text.c_str(), 1);
#elif CASE == 13
  core_log::logPrintf(__func__, cell, 5, format);
#endif
}
