#pragma once

#include <memory>
#include <string>

#include "agctl/Job.h"
#include "agctl/Session.h"

namespace agctl {

/// Tells people how far jobs have come.
class Progress {
 public:
  virtual ~Progress() = default;

  /// How a job stands now; the same again says nothing.
  virtual void show(const Job& job) = 0;
  /// Something besides.
  virtual void note(const std::string& text) = 0;
  /// Time passes.
  virtual void tick() = 0;
  /// Leaves the cursor below what was written.
  virtual void end() = 0;
};

/// Where the cursor can move a bar for each job that is open, with as many as the screen has room
/// for; elsewhere a line for each change. On standard error.
std::unique_ptr<Progress> makeProgress(const Console& console);

}  // namespace agctl
