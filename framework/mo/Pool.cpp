#include "framework/mo/Pool.h"

#include <mutex>
#include <utility>
#include <vector>

namespace mo {

namespace {

struct Spare {
  std::uint32_t classId;
  std::vector<std::unique_ptr<Mo>> objects;
};

/// The classes whose objects are lent are a handful, so they are looked for one after another.
class Shelf {
 public:
  std::mutex lock;

  /// Null when no object of the class was ever given back. To be called under `lock`.
  Spare* find(std::uint32_t classId) {
    for (Spare& each : spares_) {
      if (each.classId == classId) {
        return &each;
      }
    }
    return nullptr;
  }
  Spare& make(std::uint32_t classId) {
    Spare* const there = find(classId);
    return there != nullptr ? *there : spares_.emplace_back(Spare{classId, {}});
  }

 private:
  std::vector<Spare> spares_;  // guarded by `lock`
};

/// Never destroyed: threads may give objects back while the process exits.
Shelf& shelf() {
  static auto& instance = *new Shelf;
  return instance;
}

}  // namespace

Mo* Pool::alloc(std::uint32_t classId) {
  Shelf& all = shelf();
  const std::lock_guard guard(all.lock);
  Spare* const found = all.find(classId);
  if (found == nullptr || found->objects.empty()) {
    return nullptr;
  }
  Mo* const object = found->objects.back().release();
  found->objects.pop_back();
  return object;
}

void Pool::release(Mo* object) {
  std::unique_ptr<Mo> owned(object);  // freed after the lock when it is not kept
  if (owned == nullptr || owned->classInfo() == nullptr) {
    return;
  }
  owned->renew(Dn());
  Shelf& all = shelf();
  const std::lock_guard guard(all.lock);
  Spare& spare = all.make(owned->classId());
  if (spare.objects.size() < kMostPerClass) {
    spare.objects.push_back(std::move(owned));
  }
}

}  // namespace mo
