#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// An argument or a result of a method.
struct Arg {
  std::uint32_t methodId;
  std::uint32_t position;  ///< from 0, in the order in which the values travel
  bool isResult;
  std::uint32_t typeId;

  /// The rows are borrowed and stay for the life of the process; those of one method stand
  /// together.
  static void initializeArgMeta(const Arg* table, std::size_t size);
  /// The arguments, then the results, of one method; empty when it has none or is unknown.
  static std::span<const Arg> ofMethod(std::uint32_t methodId);
};

}  // namespace meta
