#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "framework/method/Value.h"

namespace method {

/// Values by property, in ascending order of the property's number. An object has some ten
/// properties, so they stand in one piece of memory; setting them in ascending order is cheapest.
class ValueMap {
 public:
  using Entry = std::pair<std::uint32_t, Value>;
  using const_iterator = std::vector<Entry>::const_iterator;

  const_iterator begin() const { return entries_.begin(); }
  const_iterator end() const { return entries_.end(); }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }

  /// The value, or null when there is none. Valid until the next change.
  const Value* find(std::uint32_t propertyId) const {
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), propertyId, isBefore);
    return place == entries_.end() || place->first != propertyId ? nullptr : &place->second;
  }

  /// `value` is a Value or the content of one.
  template <class T>
  void set(std::uint32_t propertyId, T&& value) {
    if (entries_.capacity() == 0) {
      entries_.reserve(kFirst);
    }
    if (entries_.empty() || entries_.back().first < propertyId) {
      entries_.emplace_back(propertyId, std::forward<T>(value));
      return;
    }
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), propertyId, isBefore);
    if (place->first == propertyId) {
      place->second = std::forward<T>(value);
    } else {
      entries_.emplace(place, propertyId, std::forward<T>(value));
    }
  }

  /// False when there was none.
  bool erase(std::uint32_t propertyId) {
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), propertyId, isBefore);
    if (place == entries_.end() || place->first != propertyId) {
      return false;
    }
    entries_.erase(place);
    return true;
  }

  /// Erases every value whose property `isKept` is not true for, asking in ascending order.
  template <class Predicate>
  void keepIf(Predicate isKept) {
    const auto isErased = [&](const Entry& entry) {
      return !isKept(entry.first);
    };
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), isErased), entries_.end());
  }

  /// Keeps the memory for the next values.
  void clear() { entries_.clear(); }
  void reserve(std::size_t size) { entries_.reserve(size); }

  bool operator==(const ValueMap&) const = default;

 private:
  // Enough for most objects.
  static constexpr std::size_t kFirst = 6;

  static bool isBefore(const Entry& entry, std::uint32_t propertyId) {
    return entry.first < propertyId;
  }

  std::vector<Entry> entries_;
};

}  // namespace method
