#pragma once

#include <memory>
#include <string>

#include "fuzz/support/EngineStandIn.h"
#include "fuzz/support/LogChecks.h"
#include "fuzz/support/Manner.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/RegistryCleaner.h"

namespace fuzz {

using zan_serviceOrchAG::MsgHandler;
using zan_serviceOrchAG::Response;

/// A gateway with nothing behind it, new for each input, so that an input says by itself what it
/// leads to. Its end checks that no handler waits any longer and that no client is lost.
class Gateway {
 public:
  static constexpr int kSlot = 3;

  explicit Gateway(Manner manner);
  ~Gateway();
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  /// Hands a document to the handler, as a request from slot 3. Null when there is no reply, which
  /// is also what a worker makes of the exception of something that is refused; every other
  /// exception passes through.
  std::unique_ptr<Response> handle(MsgHandler::Handler handler, const std::string& document,
                                   const std::string& action = "");

  /// The bytes of a stimulus arrive from the engine. Fails unless they are either carried out or
  /// counted as refused.
  void receive(Input stimulus);

  const EngineStandIn& engine() const { return engine_; }
  /// True when the last request was dropped because something was refused.
  bool hasDropped() const { return hasDropped_; }

 private:
  LogChecks log_;
  EngineStandIn engine_;
  MsgHandler handler_;
  const test_support::InstalledMsgHandler installed_{handler_};
  bool hasDropped_ = false;
};

}  // namespace fuzz
