#pragma once

#include <string>

#include "serviceOrchAG/bridge/ClientMap.h"

namespace test_support {

/// Leaves the registry of blades empty at its end.
class RegistryCleaner {
 public:
  RegistryCleaner() = default;
  ~RegistryCleaner() {
    using zan_serviceOrchAG::ClientMap;
    while (!ClientMap.empty()) {
      const std::string slot = ClientMap.begin()->first;
      if (!zan_serviceOrchAG::removeBladeMapEntry(slot)) {
        ClientMap.erase(slot);  // an entry without a client
      }
    }
  }
  RegistryCleaner(const RegistryCleaner&) = delete;
  RegistryCleaner& operator=(const RegistryCleaner&) = delete;
};

}  // namespace test_support
