#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "framework/os/Clock.h"

namespace dme {

/// Stimuli that arrived, one after another in one piece of memory.
class StimulusBatch {
 public:
  struct Entry {
    std::uint64_t peer;
    std::size_t offset;
    std::size_t size;
  };

  void append(std::uint64_t peer, const unsigned char* bytes, std::size_t size);
  const std::vector<Entry>& entries() const { return entries_; }
  std::span<const unsigned char> bytesOf(const Entry& entry) const {
    return {bytes_.data() + entry.offset, entry.size};
  }
  std::size_t size() const { return bytes_.size(); }
  /// Keeps the memory for the next ones, unless a burst made it large.
  void clear();

 private:
  std::vector<unsigned char> bytes_;
  std::vector<Entry> entries_;
};

/// Where the link's thread leaves stimuli for the engine's. Thread-safe; one thread takes.
class Inbox {
 public:
  /// More waiting bytes than this are refused: the engine does not keep up.
  static constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;

  /// Copies the bytes. False, and counted, when too much is waiting or the inbox is closed. Does
  /// not block.
  bool push(std::uint64_t peer, const unsigned char* bytes, std::size_t size);
  /// Lets take() return, now or when it is called next, also with nothing to take. Does not block.
  void wake();
  /// Waits until something is there, somebody calls wake() or `deadline` has come, and puts
  /// everything that is there into `batch`, which may then be empty. False when the inbox is
  /// closed.
  bool take(StimulusBatch& batch, std::optional<os::Clock::TimePoint> deadline);
  /// Wakes whoever waits. What was not taken is dropped.
  void close();
  std::uint64_t dropped() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable wake_;
  StimulusBatch waiting_;      // guarded by mutex_
  bool isClosed_ = false;      // guarded by mutex_
  bool isAwake_ = false;       // guarded by mutex_: wake() was called since the last take()
  std::uint64_t dropped_ = 0;  // guarded by mutex_
};

}  // namespace dme
