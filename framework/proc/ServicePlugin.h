#pragma once

namespace proc {

/// What a service library gives the supervisor that loads it: the life-cycle callbacks, in the
/// order in which the supervisor calls them. Plain pointers, valid while the library is loaded.
struct ServicePlugin {
  static constexpr unsigned kVersion = 1;
  /// The name of the function, with C linkage, that every service library exports:
  ///     extern "C" const proc::ServicePlugin* zanServicePlugin();
  static constexpr const char* kEntryPoint = "zanServicePlugin";
  using EntryPoint = const ServicePlugin* (*)();

  unsigned version;
  const char* name;
  /// Start-up entry. Returns when the service accepts requests.
  void (*init)(int argc, char** argv);
  /// Opens the channels to the management engine.
  void (*initSvc)();
  /// Blocks until the channels are up.
  void (*main)();
  void (*preShutdown)();
  void (*shutdown)();
  void (*postShutdown)();
};

}  // namespace proc
