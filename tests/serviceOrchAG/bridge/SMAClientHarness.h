#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG::sma_client_test {

using test_support::LogLine;
using test_support::ScriptedChannel;
using test_support::throws;

inline const ScriptedChannel::Parts kAnswer{"serviceOrchAG.stopApp", "nox-xml:1", "1", "100",
                                            "<done/>"};

class SMAClientTest : public testing::Test {
 protected:
  void registerBlade(const std::string& slot, bool status = true) {
    createSMAClient(slot, "10.0.0." + slot, "5560", status);
  }

  std::vector<std::string> sentIds() const {
    std::vector<std::string> ids;
    for (const auto& message : channels_.sent()) {
      ids.push_back(message.parts.at(2));
    }
    return ids;
  }

  ScriptedChannel channels_;
  test_support::LogCapture log_;
  const test_support::RegistryCleaner cleaner_{};
};

}  // namespace zan_serviceOrchAG::sma_client_test
