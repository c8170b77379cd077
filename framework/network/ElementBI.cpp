#include "framework/network/ElementBI.h"

#include "framework/base/SvcConfigParams.h"

namespace network {

int ElementBI::getSelfId() {
  return base::SvcConfigParams::getInstance().getSelfId();
}

}  // namespace network
