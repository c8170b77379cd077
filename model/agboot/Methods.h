#pragma once

#include <cstdint>
#include <string_view>

#include "framework/method/Config.h"
#include "framework/method/MethodObject.h"

/// Methods with which a service asks for what it needs to begin its work.
namespace agboot {

using method::In;
using method::MethodObject;
using method::Out;

/// Out: four sets of configuration.
class BootstrapMe
    : public MethodObject<
          BootstrapMe, In<>,
          Out<method::ConfigSet, method::ConfigSet, method::ConfigSet, method::ConfigSet>> {
 public:
  static constexpr std::uint32_t kClassId = 575;
  static constexpr std::string_view kName = "agboot::Bootstrap";
  static constexpr std::uint32_t kIntent = kIntentBootstrap;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

/// Tells the engine that the service has taken its configuration over.
class BootstrapDoneMe : public MethodObject<BootstrapDoneMe, In<>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 576;
  static constexpr std::string_view kName = "agboot::BootstrapDone";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

}  // namespace agboot
