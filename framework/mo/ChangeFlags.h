#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mo {

/// The properties of an object that were set or cleared since some moment.
class ChangeFlags {
 public:
  void mark(std::uint32_t propertyId) {
    if (ids_.empty() || ids_.back() < propertyId) {
      ids_.push_back(propertyId);
      return;
    }
    const auto place = std::lower_bound(ids_.begin(), ids_.end(), propertyId);
    if (*place != propertyId) {
      ids_.insert(place, propertyId);
    }
  }
  bool contains(std::uint32_t propertyId) const {
    return std::binary_search(ids_.begin(), ids_.end(), propertyId);
  }
  std::size_t size() const { return ids_.size(); }
  bool empty() const { return ids_.empty(); }
  /// Keeps the memory for the next marks.
  void clear() { ids_.clear(); }

  /// In ascending order.
  std::vector<std::uint32_t>::const_iterator begin() const { return ids_.begin(); }
  std::vector<std::uint32_t>::const_iterator end() const { return ids_.end(); }

 private:
  std::vector<std::uint32_t> ids_;
};

}  // namespace mo
