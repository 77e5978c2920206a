#include "Wirx/UdpPam.h"

#include <cerrno>

namespace Wirx {

int UdpPam::txAddressingError() const {
  if (!txDstAddr_ || txDstPort_ == 0) {
    return EDESTADDRREQ;
  }
  if (!!txSrcAddr_ && txSrcAddr_.af() != txDstAddr_.af()) {
    return EAFNOSUPPORT;
  }
  return 0;
}

} // namespace Wirx
