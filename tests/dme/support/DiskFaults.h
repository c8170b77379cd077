#pragma once

#include <condition_variable>
#include <mutex>

namespace dme_test {

/// Stands between databases and the disk: their writes fail or hang as the test says, for as long
/// as this lives. To be made before the databases are opened, and to go after them. One at a time;
/// thread-safe.
class DiskFaults {
 public:
  DiskFaults();
  ~DiskFaults();
  DiskFaults(const DiskFaults&) = delete;
  DiskFaults& operator=(const DiskFaults&) = delete;

  /// From now on writes find no space, those that hang included.
  void fill();
  /// The next write, or the one that hangs, finds no space.
  void refuseOnce();
  /// From now on writes hang.
  void hold();
  /// Blocks until a write hangs. False after 30 real seconds.
  [[nodiscard]] bool waitUntilHeld();
  /// From now on writes succeed, those that hang included.
  void release();

  /// Whether a write may go to the disk; called, and hangs, in its place.
  bool passes();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  bool isFull_ = false;
  bool refusesNext_ = false;
  bool isHeld_ = false;
  bool hasHeld_ = false;  // a write hangs
};

}  // namespace dme_test
