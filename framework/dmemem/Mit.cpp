#include "framework/dmemem/Mit.h"

#include <string>
#include <utility>

#include "framework/mo/Transactor.h"

namespace dmemem {

Mit::Mit(mo::Transactor* transactor) : transactor_(transactor) {}

void Mit::put(Object object) {
  if (object == nullptr) {
    return;
  }
  const mo::Dn dn = object->dn();
  Object before;
  {
    const std::lock_guard guard(lock_);
    before = std::exchange(objects_[dn], std::move(object));
  }
  if (transactor_ != nullptr) {
    transactor_->onRollback([this, dn, before] { restore(dn, before); });
  }
}

bool Mit::remove(const mo::Dn& dn) {
  Object before;
  {
    const std::lock_guard guard(lock_);
    const auto found = objects_.find(dn);
    if (found == objects_.end()) {
      return false;
    }
    before = std::move(found->second);
    objects_.erase(found);
  }
  if (transactor_ != nullptr) {
    transactor_->onRollback([this, dn, before] { restore(dn, before); });
  }
  return true;
}

mo::Mit::Object Mit::find(const mo::Dn& dn) const {
  const std::lock_guard guard(lock_);
  const auto found = objects_.find(dn);
  return found == objects_.end() ? nullptr : found->second;
}

std::vector<mo::Mit::Object> Mit::below(const mo::Dn& dn) const {
  const std::lock_guard guard(lock_);
  std::vector<Object> objects;
  // Every name below "a" begins with "a/"; '0' is the byte after '/'.
  const bool isRoot = dn.empty();
  const std::string prefix = isRoot ? std::string() : dn.text().str() + "/";
  const std::string behind = isRoot ? std::string() : dn.text().str() + "0";
  auto object = isRoot ? objects_.upper_bound(mo::Dn()) : objects_.lower_bound(mo::Dn(prefix));
  const auto end = isRoot ? objects_.end() : objects_.lower_bound(mo::Dn(behind));
  for (; object != end; ++object) {
    objects.push_back(object->second);
  }
  return objects;
}

std::size_t Mit::size() const {
  const std::lock_guard guard(lock_);
  return objects_.size();
}

void Mit::restore(const mo::Dn& dn, Object before) {
  const std::lock_guard guard(lock_);
  if (before == nullptr) {
    objects_.erase(dn);
  } else {
    objects_[dn] = std::move(before);
  }
}

}  // namespace dmemem
