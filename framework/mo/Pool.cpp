#include "framework/mo/Pool.h"

#include <map>
#include <mutex>
#include <vector>

namespace mo {

namespace {

using Spare = std::vector<std::unique_ptr<Mo>>;

struct Shelf {
  std::mutex lock;
  std::map<std::uint32_t, Spare> spare;  // by class; guarded by `lock`
};

/// Never destroyed: threads may give objects back while the process exits.
Shelf& shelf() {
  static auto& instance = *new Shelf;
  return instance;
}

}  // namespace

Mo* Pool::alloc(std::uint32_t classId) {
  const std::lock_guard guard(shelf().lock);
  const auto found = shelf().spare.find(classId);
  if (found == shelf().spare.end() || found->second.empty()) {
    return nullptr;
  }
  Mo* const object = found->second.back().release();
  found->second.pop_back();
  return object;
}

void Pool::release(Mo* object) {
  std::unique_ptr<Mo> owned(object);  // freed after the lock when it is not kept
  if (owned == nullptr || owned->classInfo() == nullptr) {
    return;
  }
  owned->renew(Dn());
  const std::lock_guard guard(shelf().lock);
  Spare& spare = shelf().spare[owned->classId()];
  if (spare.size() < kMostPerClass) {
    spare.push_back(std::move(owned));
  }
}

}  // namespace mo
