#pragma once

#include "Mesk/FibForwardingStatus.h"
#include "Orv/Export.h"

namespace Mesk::Fib6 {

// The IPv6 forwarding status of the default VRF.
class LSPPING_EXPORT ForwardingStatus final : public FibForwardingStatus {
public:
  explicit ForwardingStatus(const Orv::Name &name)
      : FibForwardingStatus(name, Wirx::AddrFamily::ipv6) {}
};

} // namespace Mesk::Fib6
