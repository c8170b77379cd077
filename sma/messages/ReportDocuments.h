#pragma once

#include <string>

#include "sma/base/Element.h"
#include "sma/platform/Platform.h"

namespace sma {

/// What a blade reports of the progress of a command that it carries out.
struct Progress {
  std::string app;      ///< instance that it concerns; "-1" when it concerns the platform
  std::string command;  ///< e.g. "upgradeApp"
  unsigned percent = 0;
  std::string status;  ///< "running", "succeeded" or "failed"
  unsigned code = 100;
  bool ack = false;   ///< wants a reply
  std::string error;  ///< why it failed
};

/// The report of machine, disks and instances at a time since the start of the run.
Element platformDocument(const BladePlatform& platform, BladePlatform::Duration time);
/// The report that an instance has failed.
Element appFailureDocument(const std::string& app);
Element progressDocument(const Progress& progress);

}  // namespace sma
