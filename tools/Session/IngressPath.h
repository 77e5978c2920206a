#pragma once

#include <string>
#include <vector>

#include "Orv/Types.h"
#include "Wirx/EthAddr.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/MplsLabel.h"

namespace Session {

// How the ingress sends a target's requests, as only its host knows: out of
// which interface, to which next hop, with which labels, from which
// address. It is also the ingress's own downstream mapping, the one a trace
// carries in its first request.
struct IngressPath {
  // Why there is no path (no route to the FEC, no such interface...);
  // empty when there is one.
  std::string error;
  Wirx::IntfId intf;
  Wirx::EthAddr srcEthAddr;
  Wirx::IpGenAddr src;
  // The downstream router's address on the link, and its MAC address.
  Wirx::IpGenAddr nexthop;
  Wirx::EthAddr nexthopEthAddr;
  // Outermost first; none when the next hop is the egress.
  std::vector<Wirx::MplsLabel> labels;
  Orv::U32 mtu = 1500;
};

// Why requests cannot leave by `path`: its own error, or a label that does
// not fit a label stack entry. Empty when they can.
std::string unusable(const IngressPath &path);

} // namespace Session
