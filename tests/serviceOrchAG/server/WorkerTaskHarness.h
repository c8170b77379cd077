#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG::worker_task_test {

using test_support::LogLine;
using test_support::RecordingSvc;
using test_support::ScriptedChannel;
using test_support::throws;

using Parts = ScriptedChannel::Parts;

inline const std::string kDocument =
    "<heartbeatRequest><count>1</count><timer>2</timer></heartbeatRequest>";

inline Parts heartbeat(const std::string& subject = "serviceOrchAG.heartbeat") {
  return {subject, "nox-xml:1", "id-1", "sma_slot3", kDocument};
}

/// A gateway with a valid blade in slot 3.
class WorkerTaskTest : public testing::Test {
 protected:
  WorkerTaskTest();

  /// Lets one worker take everything that is scripted and come back for more.
  void serve(bool left = true);
  /// As serve, and returns how often the worker paused on its way.
  int serveCountingPauses();

  /// The lines of one request: between the first two "waiting" lines.
  std::vector<LogLine> requestLines() const;

  /// How often the worker waited for a request.
  std::size_t waits() const;

  void expectDropped();

  ScriptedChannel channels_;
  RecordingSvc svc_;
  MsgHandler handler_;
  const test_support::InstalledMsgHandler installed_{handler_};
  const test_support::RegistryCleaner cleaner_;
  test_support::LogCapture log_;
};

}  // namespace zan_serviceOrchAG::worker_task_test
