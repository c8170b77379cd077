#pragma once

#include <cstddef>

namespace method {
class ConfigSet;
}

namespace mo {

class Mit;

/// Takes objects that travelled in a stimulus into a tree.
class StimuliHelper {
 public:
  /// The process's one; null for none. Set at start-up, owned by who set it.
  static StimuliHelper* INSTANCE;

  virtual ~StimuliHelper() = default;
  /// Puts every object of the set, and what travels below each, into the tree. Returns how many.
  virtual std::size_t apply(const method::ConfigSet& set, Mit& tree) = 0;
};

class MoStimuliHelper final : public StimuliHelper {
 public:
  std::size_t apply(const method::ConfigSet& set, Mit& tree) override;
};

}  // namespace mo
