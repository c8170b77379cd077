#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/proc/Stimulus.h"

namespace proc {

/// A stimulus that is built as bytes: header and arguments are written into its stream as they
/// come, and the stream is what is sent.
class BinStimulus final : public Stimulus {
 public:
  /// Idle stimuli kept for reuse, so that a steady sender allocates nothing. Thread-safe.
  class Pool {
   public:
    /// An idle stimulus, or null when there is none.
    std::unique_ptr<BinStimulus> take();
    /// Keeps the stimulus for reuse, or frees it when enough are idle or it grew large.
    void give(std::unique_ptr<BinStimulus> stimulus);
    std::size_t idle() const;

   private:
    static constexpr std::size_t kMostIdle = 256;
    static constexpr std::size_t kMostKeptBytes = 16384;
    mutable std::mutex lock_;
    std::vector<std::unique_ptr<BinStimulus>> idle_;  // guarded by lock_
  };

  /// Lives as long as the process, for threads that still send while it exits.
  static Pool& POOL;

  /// A method call's stimulus from the pool, or a new one when the pool is empty: data bit 0 set,
  /// priority default, response required, and everything else as given. Both kinds are equal byte
  /// for byte.
  static std::unique_ptr<BinStimulus> obtain(std::uint32_t classId, std::uint32_t intent,
                                             std::uint32_t bulk);

  /// As reinitialize().
  BinStimulus(std::uint32_t classId, std::uint32_t type, std::uint32_t intent, std::uint32_t bulk,
              Priority priority, std::uint32_t responseRequired, std::uint32_t reserved);

  /// Sets every header field, whatever the stimulus was before: the values given, data bit 0, an
  /// empty cookie and address. Empties the stream, which keeps its memory.
  void reinitialize(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                    std::uint32_t bulk, Priority priority, std::uint32_t responseRequired,
                    std::uint32_t reserved);

  base::OBioStream& stream() { return stream_; }
  const base::OBioStream& stream() const { return stream_; }

  /// Appends what the stream holds: header and arguments, as its builder wrote them.
  void encode(base::OBioStream& stream) const override;

 private:
  base::OBioStream stream_;
};

}  // namespace proc
