#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "framework/base/BioStream.h"
#include "framework/method/Wire.h"
#include "framework/proc/Svc.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Manner.h"

namespace fuzz {

/// Is the process's service during its lifetime and answers, on the calling thread, what the
/// request handlers ask of the management engine. Each call is checked: it decodes as the method
/// that it names, its arguments encode to the same bytes again, and no cookie comes twice.
class EngineStandIn final : public proc::Svc {
 public:
  explicit EngineStandIn(Manner manner);
  ~EngineStandIn() override;

  void send(std::unique_ptr<proc::Stimulus> stimulus) override;
  void txSend(std::unique_ptr<proc::Stimulus> stimulus) override { send(std::move(stimulus)); }

  /// How many calls came, of any method or of `classId`.
  std::size_t calls() const { return calls_.size(); }
  std::size_t calls(std::uint32_t classId) const;

  /// The arguments of the only call of the method Me; nothing when there was none. Fails when there
  /// were several.
  template <class Me>
  std::optional<typename Me::InTuple> onlyCall() const {
    check(calls(Me::kClassId) <= 1, "a request calls a method once at most", Me::kName);
    for (const Call& call : calls_) {
      if (call.classId == Me::kClassId) {
        return method::decodeCall<Me>(call.bytes.data(), call.bytes.size())->in;
      }
    }
    return std::nullopt;
  }

 private:
  struct Call {
    std::uint32_t classId;
    base::Buffer cookie;
    std::vector<unsigned char> bytes;
  };

  void answer(const Call& call) const;

  const Manner manner_;
  proc::Svc* const previous_;
  std::vector<Call> calls_;
};

}  // namespace fuzz
