#pragma once

#include <cstdint>
#include <string_view>

namespace meta {

/// Something that a service configures by itself. Identified by its address.
class Autoconfig {
 public:
  constexpr Autoconfig(std::uint32_t id, std::string_view name) : id_(id), name_(name) {}

  constexpr std::uint32_t id() const { return id_; }
  constexpr std::string_view name() const { return name_; }

 private:
  std::uint32_t id_;
  std::string_view name_;
};

}  // namespace meta
