#pragma once

#include <cstdint>
#include <memory>
#include <tuple>

#include "framework/method/Config.h"
#include "framework/method/MethodObject.h"
#include "framework/mo/Mo.h"

namespace model {

/// The object that a configuration describes, with everything that travels along attached to it, at
/// any depth. Values that its class does not have are left out; an object of a class that is none
/// of the model's is a plain one without values. Never null.
std::unique_ptr<mo::Mo> objectOf(const method::Config& config);

/// A method that is called on a managed object: its argument of type method::Config is that object
/// as it was when the call was made, with what it resolves.
template <class Me, class InTypes, class OutTypes>
class TargetedMethod : public method::MethodObject<Me, InTypes, OutTypes> {
 public:
  /// The object, made from the argument on the first call. Lives as long as this.
  mo::Mo* target() {
    if (target_ == nullptr) {
      target_ = objectOf(std::get<method::Config>(this->in));
    }
    return target_.get();
  }

 private:
  std::unique_ptr<mo::Mo> target_;
};

}  // namespace model
