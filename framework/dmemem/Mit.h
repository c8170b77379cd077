#pragma once

#include <map>
#include <mutex>

#include "framework/mo/Mit.h"

namespace mo {
class Transactor;
}

namespace dmemem {

/// A tree of managed objects in memory. A change made while the transactor has a transaction open
/// is undone when that is rolled back.
class Mit final : public mo::Mit {
 public:
  /// Borrows the transactor for its life; null for a tree without transactions.
  explicit Mit(mo::Transactor* transactor);

  void put(Object object) override;
  bool remove(const mo::Dn& dn) override;
  Object find(const mo::Dn& dn) const override;
  std::vector<Object> below(const mo::Dn& dn) const override;
  std::size_t size() const override;

 private:
  /// Puts what was there before a change back; null takes the object out.
  void restore(const mo::Dn& dn, Object before);

  mo::Transactor* const transactor_;
  mutable std::mutex lock_;
  std::map<mo::Dn, Object> objects_;  // guarded by lock_
};

}  // namespace dmemem
