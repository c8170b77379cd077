#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace dme {

/// Why the engine does not do what an operator wants.
struct Refusal {
  enum class Reason : std::uint8_t {
    kUnknownSlot,
    kUnknownApp,
    kUnknownJob,
    kBadValue,      ///< a value that cannot be, or that the blade would refuse
    kAlreadyThere,  ///< what is to be made exists
    kJobInTheWay,   ///< a job that is not over has the same target, or excludes it
    kWrongState,    ///< not now: the detail names the state
    kTooMany,       ///< a bound is reached
    kNotStored      ///< the disk refuses to write
  };

  Reason reason;
  std::string detail;      ///< one line: what, with the names and values it is about
  std::string remedy;      ///< one line: what to do about it
  std::uint64_t job = 0;   ///< the one in the way; 0 for none
  std::string field = {};  ///< the value's name, of kBadValue
};

/// What was asked for, or why not.
template <class T>
using Granted = tl::expected<T, Refusal>;

/// Gets what was asked for, or why not. Called once.
template <class T>
using Done = std::function<void(Granted<T>)>;

}  // namespace dme
