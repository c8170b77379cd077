#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zan_serviceOrchAG {

/// Which of a method's callbacks this service has, and how they get registered.
struct Registration {
  std::string_view method;
  std::uint32_t classId;
  bool hasExecute;
  bool hasSuccess;
  bool hasFailure;
  bool hasFormatSuccess;
  bool hasFormatFailure;
  void (*install)();
};

/// Every method object that the service executes or invokes, in the order of registration.
std::span<const Registration> registrations();

/// Registers them all. Called once, at start-up, before the service is active.
void registerCallbacks();

}  // namespace zan_serviceOrchAG
