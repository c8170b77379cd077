#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace meta {

/// The rows of one kind of model description and their index by number.
///
/// Loaded at start-up, before other threads look, and constant from then on.
template <class Row, std::uint32_t Row::*kKey = &Row::id>
class Table {
 public:
  /// Takes the place of what was loaded before. The rows are borrowed and stay for the life of the
  /// process. Throws std::invalid_argument, leaving the table as it was, when two have one number.
  void load(const Row* rows, std::size_t size) {
    std::vector<const Row*> index;
    index.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
      index.push_back(&rows[i]);
    }
    std::sort(index.begin(), index.end(), isLess);
    for (std::size_t i = 1; i < size; ++i) {
      if (!isLess(index[i - 1], index[i])) {
        throw std::invalid_argument("two descriptions with number " +
                                    std::to_string(index[i]->*kKey));
      }
    }
    rows_ = {rows, size};
    index_ = std::move(index);
  }

  /// Null when there is no such row.
  const Row* find(std::uint32_t key) const {
    const auto found =
        std::lower_bound(index_.begin(), index_.end(), key,
                         [](const Row* row, std::uint32_t wanted) { return row->*kKey < wanted; });
    return found == index_.end() || (*found)->*kKey != key ? nullptr : *found;
  }

  /// In the order in which they were given.
  std::span<const Row> rows() const { return rows_; }

 private:
  static bool isLess(const Row* left, const Row* right) { return left->*kKey < right->*kKey; }

  std::span<const Row> rows_;
  std::vector<const Row*> index_;
};

}  // namespace meta
