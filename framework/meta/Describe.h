#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

#include "framework/meta/Arg.h"
#include "framework/meta/Method.h"
#include "framework/meta/TypeId.h"

namespace meta {

/// The description of a method class, taken from the class itself.
template <class Me>
constexpr Method describe() {
  return {Me::kClassId, Me::kName, std::tuple_size_v<typename Me::InTuple>,
          std::tuple_size_v<typename Me::OutTuple>};
}

namespace detail {

template <class Tuple, std::size_t... kPosition>
constexpr std::array<Arg, sizeof...(kPosition)> args([[maybe_unused]] std::uint32_t methodId,
                                                     [[maybe_unused]] bool isResult,
                                                     std::index_sequence<kPosition...>) {
  static_assert(((typeIdOf<std::tuple_element_t<kPosition, Tuple>>() != TypeId::kNone) && ...),
                "an argument of a type that cannot travel");
  return {Arg{methodId, static_cast<std::uint32_t>(kPosition), isResult,
              static_cast<std::uint32_t>(typeIdOf<std::tuple_element_t<kPosition, Tuple>>())}...};
}

template <class Tuple>
constexpr auto args(std::uint32_t methodId, bool isResult) {
  return args<Tuple>(methodId, isResult, std::make_index_sequence<std::tuple_size_v<Tuple>>());
}

}  // namespace detail

/// The arguments and then the results of a method class, taken from the class itself.
template <class Me>
constexpr auto describeArgs() {
  constexpr auto kIn = detail::args<typename Me::InTuple>(Me::kClassId, false);
  constexpr auto kOut = detail::args<typename Me::OutTuple>(Me::kClassId, true);
  std::array<Arg, kIn.size() + kOut.size()> all{};
  std::size_t next = 0;
  for (const Arg& arg : kIn) {
    all[next++] = arg;
  }
  for (const Arg& arg : kOut) {
    all[next++] = arg;
  }
  return all;
}

}  // namespace meta
