#include "dme/store/ChangeSet.h"

#include <utility>

namespace dme {

ObjectChange& ChangeSet::at(std::string_view dn) {
  const auto place = objects_.lower_bound(dn);
  return place != objects_.end() && place->first == dn
             ? place->second
             : objects_.emplace_hint(place, dn, ObjectChange())->second;
}

void ChangeSet::create(std::string_view dn, std::string_view className) {
  at(dn).className = className;
}

void ChangeSet::set(std::string_view dn, std::string_view property, Cell value) {
  at(dn).values.insert_or_assign(std::string(property), std::move(value));
}

void ChangeSet::remove(std::string_view dn) {
  eraseBelow(dn);
  ObjectChange& change = at(dn);
  const bool wasNeverStored = !change.className.empty() && !change.isRemoved;
  if (wasNeverStored) {
    objects_.erase(objects_.find(dn));
    return;
  }
  change = ObjectChange();
  change.isRemoved = true;
}

void ChangeSet::eraseBelow(std::string_view dn) {
  const std::string prefix = std::string(dn) + "/";
  const auto first = objects_.lower_bound(prefix);
  auto last = first;
  while (last != objects_.end() && last->first.starts_with(prefix)) {
    ++last;
  }
  objects_.erase(first, last);
}

void ChangeSet::append(ChangeSet later) {
  if (empty()) {
    objects_ = std::move(later.objects_);
    return;
  }
  for (auto& [dn, change] : later.objects_) {
    if (change.isRemoved) {
      remove(dn);
    }
    if (!change.className.empty()) {
      create(dn, change.className);
    }
    if (change.values.empty()) {
      continue;
    }
    auto& values = at(dn).values;
    change.values.merge(values);  // the later values stay
    values.swap(change.values);
  }
}

}  // namespace dme
