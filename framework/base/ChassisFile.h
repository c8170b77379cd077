#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace base {

// The slot numbers that exist anywhere in the system: 1 to this one.
inline constexpr std::uint32_t kHighestSlot = 16384;
// As many application instances can be in one slot.
inline constexpr std::size_t kMostAppsPerSlot = 256;

// A chassis and the slots that it has.
struct ChassisDescription {
  // An application instance that is to be on the slot's blade.
  struct App {
    enum class State { kAny, kStarted, kStopped };

    std::string id;
    std::string version;  // empty for any
    State state = State::kAny;
  };
  struct Slot {
    std::uint32_t number = 0;
    std::string name;
    std::vector<App> apps{};
    // Of the blade that is to be in the slot.
    std::string serial{};
    std::string model{};
  };

  std::uint32_t id = 1;
  std::string name;
  std::string model;
  std::string serial;
  std::vector<Slot> slots;  // one or more, by number, each number once
};

// Reads the description of a chassis. The text is TOML:
//
//   [chassis]            # every key may be left out
//   id = 1               # 1 to 255
//   name = "rack 4, upper"
//   model = "standard"
//   serial = "JX2301"
//
//   [[slot]]             # once for each slot
//   number = 3           # 1 to kHighestSlot
//   name = "left"        # may be left out
//   serial = "JX2302"    # of the blade; may be left out
//   model = "b1"         # of the blade; may be left out
//   apps = [             # application instances that are to be there; may be left out
//     {id = "a1", version = "1.0", state = "started"},   # or "stopped"
//     {id = "a2"},       # any version, any state
//   ]
//
// An application instance is in one slot only, and a slot has up to kMostAppsPerSlot of them.
//
// An error is one line that names the source, the line where there is one, and the cause.
// Thread-safe.
tl::expected<ChassisDescription, std::string> parseChassisText(std::string_view text,
                                                               const std::string& source);
// The same of a file of up to 1 MiB. Blocks on the disk.
tl::expected<ChassisDescription, std::string> readChassisFile(const std::string& path);

}  // namespace base
