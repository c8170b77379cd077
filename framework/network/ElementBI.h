#pragma once

namespace network {

/// This supervisor among the chassis's two.
class ElementBI {
 public:
  /// As configured, from 1 to 255; 1 is the left one.
  static int getSelfId();
};

}  // namespace network
