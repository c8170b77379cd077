#include "framework/proc/App.h"

#include <stdexcept>

#include "framework/proc/Svc.h"

namespace proc {

base::String App::system() const {
  const std::lock_guard guard(lock_);
  return system_;
}

std::vector<Svc*> App::services() const {
  const std::lock_guard guard(lock_);
  return services_;
}

void regService(App* app, Svc* svc, const base::String& system) {
  if (app == nullptr || svc == nullptr) {
    throw std::invalid_argument("regService: no application or no service");
  }
  if (Svc::instance != nullptr) {
    throw std::logic_error("regService: the process has a service already");
  }
  const std::lock_guard guard(app->lock_);
  app->system_ = system;
  app->services_.push_back(svc);
  Svc::instance = svc;
}

}  // namespace proc
