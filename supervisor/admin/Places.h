#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <optional>

namespace supervisor::admin {

/// The connections that a server has room for. When all places are taken, a new connection gets
/// that of the one which has been idle for longest. Not synchronised.
class Places {
 public:
  class Place;

  explicit Places(std::size_t most) : most_(most) {}
  Places(const Places&) = delete;
  Places& operator=(const Places&) = delete;

  /// Whether there is a place for one more; if need be, an idle connection loses its own for it.
  bool makeRoom();

 private:
  using Idle = std::list<Place*>;

  const std::size_t most_;
  std::size_t taken_ = 0;
  Idle idle_;  // the longest idle first
};

/// A connection's place, from construction to destruction or until it loses it. Busy at first.
class Places::Place {
 public:
  /// `places` outlives this. `lose` is called once when another one gets the place: the connection
  /// is to end.
  Place(Places& places, std::function<void()> lose);
  ~Place();
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  /// Nothing is lost to anybody when this connection ends; it counts as idle from now on.
  void setIdle();
  void setBusy();

 private:
  friend class Places;
  void leave();

  Places& places_;
  const std::function<void()> lose_;
  std::optional<Idle::iterator> idle_;  // while it is idle
  bool isTaken_ = true;
};

}  // namespace supervisor::admin
