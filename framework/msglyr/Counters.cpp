#include "framework/msglyr/Counters.h"

#include "framework/msglyr/CounterCells.h"

namespace msglyr {

CounterCells& counterCells() {
  static CounterCells cells;
  return cells;
}

Counters counters() {
  const CounterCells& cells = counterCells();
  Counters now;
  now.bound = cells.bound.load();
  now.received = cells.received.load();
  now.refusedParts = cells.refusedParts.load();
  now.refusedBytes = cells.refusedBytes.load();
  now.sent = cells.sent.load();
  now.sendFailed = cells.sendFailed.load();
  now.receiveErrors = cells.receiveErrors.load();
  return now;
}

}  // namespace msglyr
