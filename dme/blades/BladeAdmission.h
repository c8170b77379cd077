#pragma once

#include <cstdint>

#include "dme/chassis/Chassis.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/String.h"

namespace dme {

/// What a blade that registers is told.
struct Verdict {
  bool isRefused = false;  ///< there is no such slot: the method fails with `reason`
  base::String reason;
  base::String token;
  bool isValid = false;
  bool shouldRetry = false;

  bool operator==(const Verdict&) const = default;
};

/// Decides whether the blade in a slot belongs there, by the token that the slot holds.
///
///   the slot       | the blade shows   | verdict                           | token told
///   ---------------+-------------------+-----------------------------------+--------------
///   does not exist | anything          | refused                           | none
///   has no token   | anything          | gets a token; blade comes again   | the new one
///   has a token    | no token          | valid (a new or formatted blade)  | the slot's
///   has a token    | the slot's token  | valid                             | the slot's
///   has a token    | another token     | not valid: must be formatted      | none
///
/// A token is made once and then stays with its slot. A blade that shows another one is not told
/// the slot's: it could pass for the slot's own blade without having been formatted.
///
/// Not thread-safe. The verdict may be told only once the changes that it staged in the store,
/// and all before them, are durable.
class BladeAdmission {
 public:
  /// Both outlive this.
  BladeAdmission(ObjectStore& store, Chassis& chassis) : store_(store), chassis_(chassis) {}

  Verdict judge(std::uint32_t slotNumber, const base::String& runningVersion,
                const base::String& token);

  /// What is told in place of a verdict that could not be made durable: come again.
  static Verdict notNow() { return {false, "", "", false, true}; }

 private:
  ObjectStore& store_;
  Chassis& chassis_;
};

}  // namespace dme
