#pragma once

#include "Orv/Types.h"
#include "Wirx/EthAddr.h"

namespace Interface {

// What a host needs of a Linux interface beside its status and addresses:
// the kernel's index for its device (what a raw socket binds to), its MAC
// address (unset for a device without one, the loopback's for one), its MTU
// and whether it is up.
struct LinuxIntf {
  int index = 0;
  Wirx::EthAddr ethAddr;
  Orv::U32 mtu = 0;
  // Administratively up (IFF_UP), and with a carrier, able to pass frames
  // (IFF_RUNNING).
  bool up = false;
  bool running = false;
  bool loopback = false;

  bool operator==(const LinuxIntf &) const = default;
};

} // namespace Interface
