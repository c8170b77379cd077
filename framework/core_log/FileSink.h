#pragma once

#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>

#include <cstddef>
#include <string>
#include <system_error>

namespace core_log {

/// Opens the file at `path` for appending, readable by its owner only, or stands for stderr when
/// the path is empty. On success `descriptor` is for FileSink::use. See core_log::setFile.
std::error_code openLogFile(const std::string& path, int& descriptor);

/// Writes each line with write(2). Not thread-safe: whoever logs through it serialises.
class FileSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  FileSink() = default;
  ~FileSink() override;

  /// Takes over a descriptor and closes the one before, unless that is stderr, where it begins.
  void use(int descriptor);

 protected:
  /// Throws std::system_error when the line was not written as a whole.
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}

 private:
  void writeAll(const char* data, std::size_t size);

  int descriptor_ = 2;
  bool midLine_ = false;  // a write failed after the beginning of a line
};

}  // namespace core_log
