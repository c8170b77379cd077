#pragma once

#include <mutex>
#include <vector>

#include "framework/base/String.h"

namespace proc {

class Svc;

/// The application that this process is: a number and the services in it. Thread-safe.
class App {
 public:
  explicit App(int id) : id_(id) {}
  App(const App&) = delete;
  App& operator=(const App&) = delete;

  int id() const { return id_; }
  /// The name of the system that the services belong to; empty before the first.
  base::String system() const;
  std::vector<Svc*> services() const;

 private:
  friend void regService(App* app, Svc* svc, const base::String& system);

  const int id_;
  mutable std::mutex lock_;
  base::String system_;         // guarded by lock_
  std::vector<Svc*> services_;  // guarded by lock_; borrowed
};

/// Makes `svc` the process's service, as Svc::instance, and a member of `app` under the system's
/// name. Both are borrowed and stay until the process ends. To be called once, before the service's
/// queue is active. Throws std::invalid_argument when one is null, std::logic_error when the
/// process has a service already.
void regService(App* app, Svc* svc, const base::String& system);

}  // namespace proc
