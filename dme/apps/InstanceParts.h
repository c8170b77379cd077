#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dme/base/Refusal.h"
#include "dme/store/ObjectStore.h"
#include "framework/method/Config.h"

namespace dme {

/// What an application instance consists of: which classes stand below which, and under which
/// names. One table for checking, storing and reading it.
class InstanceParts {
 public:
  static constexpr std::size_t kMostOfAKind = 64;  ///< links of a device, settings of a network

  /// Whether the description, with what belongs to it as its children, can be kept: classes and
  /// properties of the model in their places, values that can be. The refusal names the value as
  /// people write it, such as "ldu.links[0].vlan".
  static Granted<void> check(const method::Config& instance);

  /// Makes everything below `instance` as the description has it. It has passed check().
  static void store(ObjectStore& store, const mo::Dn& instance, const method::Config& description);

  /// The instance with everything that belongs to it as its children: what a command is made of.
  /// Faults and operations are left out, as is what the engine notes for itself.
  static method::Config read(ObjectStore& store, const Object& instance);
};

}  // namespace dme
