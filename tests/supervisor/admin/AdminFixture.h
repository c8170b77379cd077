#pragma once

#include <gtest/gtest.h>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/Routes.h"
#include "tests/supervisor/admin/Asking.h"
#include "tests/supervisor/admin/FakeEngine.h"

namespace supervisor::admin {

/// All resources over an engine that answers as a test wants.
class AdminFixture : public testing::Test {
 protected:
  FakeEngine engine_;
  Context context_{"1.2.3", &engine_, "inproc://dme", true};
  const Router router_{routes(), context_};
};

}  // namespace supervisor::admin
