#pragma once

#include <cstddef>
#include <map>

#include "framework/base/Buffer.h"
#include "framework/os/CriticalSection.h"

namespace method {
class Config;
}

namespace zan_serviceOrchAG {

class ResponseSync;

/// Joins the management engine's answers with the request handlers that wait for them, by the
/// cookie of the call.
///
/// Lock order: the map's lock, then one wait object's. The map's lock is never held while results
/// are written or an event is waited for. All operations may be called from any thread.
class MsgHandlerBase {
 public:
  MsgHandlerBase() = default;
  virtual ~MsgHandlerBase() = default;
  MsgHandlerBase(const MsgHandlerBase&) = delete;
  MsgHandlerBase& operator=(const MsgHandlerBase&) = delete;

  virtual void AG_handleServiceOrchapiRespCb(const base::Buffer& cookie, method::Config* config,
                                             bool flag) = 0;

  /// Files the wait object under its own cookie. It is borrowed until rmResp; PendingResponse sees
  /// to that.
  void fileResp(ResponseSync& waiter);

  /// Withdraws a cookie: answers that come later find nobody. Waits out a callback that is writing
  /// just now, by taking the wait object's lock and keeping it, so the calling thread is the one to
  /// destroy the wait object. The cookie stays in the map without a waiter; that growth, one entry
  /// a call, is accepted.
  void rmResp(base::Buffer cookie);

  /// The wait object of a cookie with its lock taken, or null when nobody waits (any more). The
  /// caller writes the results, sets the event and releases the lock, and does not touch the object
  /// afterwards.
  ResponseSync* lockPending(const base::Buffer& cookie);

  /// Cookies seen so far, and those of them that somebody waits for.
  std::size_t knownCookies() const;
  std::size_t waitingCookies() const;

 private:
  std::map<base::Buffer, ResponseSync*> pending_;  // guarded by pendingLock_; objects borrowed
  mutable os::CriticalSection pendingLock_;
};

/// Files a wait object and withdraws it when the scope is left, on whatever path. Declared after
/// the wait object and used by the thread that made both.
class PendingResponse {
 public:
  PendingResponse(MsgHandlerBase& handler, ResponseSync& waiter);
  ~PendingResponse() { withdraw(); }
  PendingResponse(const PendingResponse&) = delete;
  PendingResponse& operator=(const PendingResponse&) = delete;

  /// Withdraws now; a second call has no effect.
  void withdraw();

 private:
  MsgHandlerBase* handler_;  // null once withdrawn
  base::Buffer cookie_;
};

}  // namespace zan_serviceOrchAG
