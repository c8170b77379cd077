#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/proc/Svc.h"

namespace test_support {

/// Is the process's service during its lifetime and keeps what is sent to the management engine.
/// One at a time.
class RecordingSvc final : public proc::Svc {
 public:
  struct Sent {
    std::uint32_t classId;
    bool responseRequired;
    proc::Stimulus::Priority priority;
    base::Buffer cookie;
    std::vector<unsigned char> bytes;  ///< header and arguments, as they travel
  };

  explicit RecordingSvc(std::uint32_t serviceId = 26);
  ~RecordingSvc() override;

  void send(std::unique_ptr<proc::Stimulus> stimulus) override;
  void txSend(std::unique_ptr<proc::Stimulus> stimulus) override;

  /// Called for each stimulus, on the thread that sends it, once it has been kept. It may throw.
  void onSend(std::function<void(const Sent&)> action);

  std::vector<Sent> sent() const;
  std::vector<Sent> sent(std::uint32_t classId) const;
  /// Blocks until `count` stimuli have been sent. False after 30 real seconds.
  [[nodiscard]] bool waitForSent(std::size_t count) const;

  /// The arguments of every call of the method Me, in order.
  template <class Me>
  std::vector<typename Me::InTuple> calls() const {
    std::vector<typename Me::InTuple> arguments;
    for (const Sent& stimulus : sent(Me::kClassId)) {
      base::IBioStream stream(stimulus.bytes.data(), stimulus.bytes.size());
      Me me;
      const bool decoded = me.deserialize(stream) && me.deserializeArgs(stream);
      expectDecoded(decoded && stream.remaining() == 0);
      arguments.push_back(me.in);
    }
    return arguments;
  }

 private:
  static void expectDecoded(bool decoded);

  proc::Svc* const previous_;
  mutable std::mutex mutex_;
  mutable std::condition_variable arrived_;
  // Guarded by mutex_.
  std::vector<Sent> sent_;
  std::function<void(const Sent&)> action_;
};

}  // namespace test_support
