#pragma once

#include "Mesk/FibForwardingStatus.h"
#include "Orv/Export.h"

namespace Mesk::Fib {

// The IPv4 forwarding status of the default VRF.
class LSPPING_EXPORT ForwardingStatus final : public FibForwardingStatus {
public:
  explicit ForwardingStatus(const Orv::Name &name)
      : FibForwardingStatus(name, Wirx::AddrFamily::ipv4) {}
};

} // namespace Mesk::Fib
