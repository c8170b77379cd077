#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "framework/base/SvcConfigParams.h"

namespace test_support {

/// Configures the process with KEY=VALUE settings for its lifetime; the defaults come back with its
/// end. One at a time.
class Configured {
 public:
  explicit Configured(std::vector<std::string> settings) {
    settings.push_back("supervisor.state_dir=/tmp");
    const auto outcome =
        base::SvcConfigParams::getInstance().loadText("", "test", std::move(settings));
    EXPECT_TRUE(outcome.has_value()) << outcome.error();
  }
  ~Configured() { base::SvcConfigParams::getInstance().reset(); }

  Configured(const Configured&) = delete;
  Configured& operator=(const Configured&) = delete;
};

}  // namespace test_support
