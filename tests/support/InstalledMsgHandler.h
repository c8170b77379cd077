#pragma once

#include "serviceOrchAG/server/MsgHandler.h"

namespace test_support {

/// Makes a message handler the process's own for its lifetime.
class InstalledMsgHandler {
 public:
  /// Borrows `handler`.
  explicit InstalledMsgHandler(zan_serviceOrchAG::MsgHandler& handler)
      : previous_(zan_serviceOrchAG::MsgHandler::instance.exchange(&handler)) {}
  ~InstalledMsgHandler() { zan_serviceOrchAG::MsgHandler::instance = previous_; }
  InstalledMsgHandler(const InstalledMsgHandler&) = delete;
  InstalledMsgHandler& operator=(const InstalledMsgHandler&) = delete;

 private:
  zan_serviceOrchAG::MsgHandler* const previous_;
};

}  // namespace test_support
