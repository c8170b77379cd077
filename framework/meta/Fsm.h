#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace meta {

/// A state machine's handler as the engine numbers it. Opaque to a service.
struct FsmStateHandler {
  std::uint32_t id;
  std::uint32_t classId;

  /// As Table::load().
  static void install(const FsmStateHandler* table, std::size_t size);
  static std::span<const FsmStateHandler> all();
};

/// How many machines of a kind the engine lets run at once.
struct FsmThrottle {
  std::uint32_t id;
  std::uint32_t most;

  /// Borrows the rows for the life of the process.
  static void install(const FsmThrottle* table, std::size_t size);
  /// Prepares find(). Throws std::invalid_argument when two have one number.
  static void indexById();
  static const FsmThrottle* find(std::uint32_t id);
};

}  // namespace meta
