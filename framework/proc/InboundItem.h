#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/base/Buffer.h"
#include "framework/os/Task.h"

namespace proc {

class Svc;

/// One stimulus that arrived, on its way from the link's thread to the service's callbacks.
class InboundItem final : public os::Task {
 public:
  /// What makes two stimuli the same one, sent twice.
  struct Key {
    std::uint32_t classId = 0;
    std::uint32_t type = 0;
    base::Buffer cookie;
    bool operator==(const Key&) const = default;
  };

  /// Copies the bytes. `svc` outlives the item.
  InboundItem(Svc& svc, const unsigned char* bytes, std::size_t size);

  /// False when the bytes do not begin with a header.
  bool isReadable() const { return isReadable_; }
  const Key& key() const { return key_; }
  /// True when it must not overtake another one that is ordered.
  bool isOrdered() const { return isOrdered_; }
  /// True when it was run and its method did not fail.
  bool hasSucceeded() const { return hasSucceeded_; }

  /// Calls the callbacks.
  void run() override;

 private:
  Svc& svc_;
  const std::vector<unsigned char> bytes_;
  bool isReadable_ = false;
  bool isOrdered_ = false;
  bool hasSucceeded_ = false;
  Key key_;
};

}  // namespace proc
