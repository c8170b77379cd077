#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "framework/os/CriticalSection.h"
#include "framework/proc/Stimulus.h"

namespace proc {

/// A stimulus that is built as bytes: header and arguments are written into its stream as they
/// come, and the stream is what is sent.
class BinStimulus : public Stimulus {
 public:
  /// Idle stimuli kept for reuse, so that a steady sender allocates nothing. Thread-safe.
  class Pool {
   public:
    /// An idle stimulus, or null when there is none.
    std::unique_ptr<BinStimulus> take();
    /// Keeps the stimulus for reuse, or frees it when enough are idle.
    void give(std::unique_ptr<BinStimulus> stimulus);
    std::size_t idle() const;

   private:
    static constexpr std::size_t kMostIdle = 256;
    mutable os::CriticalSection lock_;
    std::vector<std::unique_ptr<BinStimulus>> idle_;  // guarded by lock_
  };

  static Pool POOL;

  BinStimulus(std::uint32_t classId, std::uint32_t type, std::uint32_t intent, std::uint32_t bulk,
              Priority priority, std::uint32_t responseRequired, std::uint32_t reserved);

  /// Makes a pooled stimulus equal to a fresh one with these values; the stream keeps its memory.
  void reinitialize(std::uint32_t classId, std::uint32_t type, std::uint32_t intent,
                    std::uint32_t bulk, Priority priority, std::uint32_t responseRequired,
                    std::uint32_t reserved);

  base::OBioStream& stream() { return stream_; }
  const base::OBioStream& stream() const { return stream_; }

  void encode(base::OBioStream& stream) const override;

 private:
  base::OBioStream stream_;
};

}  // namespace proc
