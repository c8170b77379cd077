#pragma once

#include <string>

namespace zan_serviceOrchAG {

/// Where a report comes from, as the lines about it name it.
struct Origin {
  const std::string& messageId;
  int slot;

  /// The slot as the engine's methods take it.
  unsigned int engineSlot() const { return static_cast<unsigned int>(slot); }
};

}  // namespace zan_serviceOrchAG
