#pragma once

#include <cstdint>
#include <string_view>

#include "framework/method/MethodObject.h"

/// Methods about the state of the engine and its services.
namespace dmeapi {

using method::In;
using method::MethodObject;
using method::Out;

/// The engine tells a service the cluster's state. In: cluster identifier, state (1 up), epoch.
class ClusterStateMe
    : public MethodObject<ClusterStateMe, In<std::uint64_t, std::uint8_t, std::uint64_t>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 445;
  static constexpr std::string_view kName = "dmeapi::ClusterState";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

/// A service asks for the cluster's state; the engine answers with a ClusterState call.
class ClusterStateRequestMe : public MethodObject<ClusterStateRequestMe, In<>, Out<>> {
 public:
  static constexpr std::uint32_t kClassId = 446;
  static constexpr std::string_view kName = "dmeapi::ClusterStateRequest";
  static constexpr std::uint32_t kIntent = kIntentNone;
  static constexpr std::uint32_t kBulk = kNoBulk;
};

}  // namespace dmeapi
