#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>

#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

// Every line that the gateway logs, one row a line. People's scripts in the field match these
// lines, so a row holds level, function and text as they are emitted, to the byte.

namespace zan_serviceOrchAG {

struct LogRow {
  const char* function;
  int level;
  /// What makes the line appear, with every level let through. Begins and ends without blades.
  void (*trigger)();
  const char* line;       ///< as emitted, without its LF
  std::size_t times = 1;  ///< how often one run of the trigger writes it
};

void PrintTo(const LogRow& row, std::ostream* out);

/// Instantiated with each table.
class LogLines : public testing::TestWithParam<LogRow> {};

/// The request server without its threads, for one run of a trigger: its channels are scripted and
/// its calls of the engine recorded.
struct TestGateway {
  TestGateway() { handler.registerCommands(); }

  test_support::ScriptedChannel channels;
  test_support::RecordingSvc service;
  MsgHandler handler;
  const test_support::InstalledMsgHandler installed{handler};
  const test_support::RegistryCleaner cleaner;
};

}  // namespace zan_serviceOrchAG
