#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "framework/mo/Dn.h"
#include "framework/mo/Mo.h"

namespace mo {

/// The process's store of objects that are used again and again: building a report takes dozens of
/// them. It holds what was given back, at most kMostPerClass of each class. Thread-safe.
class Pool {
 public:
  static constexpr std::size_t kMostPerClass = 256;

  /// An object without a name, without values and unchanged. The caller owns it. Null when there
  /// is none of the class.
  static Mo* alloc(std::uint32_t classId);
  /// Takes the object back, or frees it when there are enough of its class or the class is none of
  /// the model. Null is fine.
  static void release(Mo* object);

  struct Releaser {
    void operator()(Mo* object) const { Pool::release(object); }
  };
  template <class Me>
  using Lent = std::unique_ptr<Me, Releaser>;

  /// An object of the model's class Me: from the pool, or a new one when it has none.
  template <class Me>
  static Lent<Me> obtain(const Dn& dn = Dn()) {
    Mo* const pooled = alloc(Me::kClassId);
    if (pooled == nullptr) {
      return Lent<Me>(new Me(dn));
    }
    if (!dn.empty()) {
      pooled->renew(dn);
    }
    return Lent<Me>(checkCast<Me>(pooled));
  }
};

}  // namespace mo
