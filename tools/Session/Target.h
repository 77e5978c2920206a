#pragma once

#include <vector>

#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingTunnelType.h"
#include "Rsvp/RsvpSpId.h"
#include "Wirx/EthAddr.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/IpGenPrefix.h"
#include "Wirx/MplsLabel.h"

namespace Session {

// What a session pings or traces: the FEC, and optionally the path to send
// on. Left empty, the path is the host's own route to the FEC.
struct Target {
  LspPing::LspPingTunnelType tunnelType =
      LspPing::LspPingTunnelType::tunnelLdpIpv4;
  Wirx::IpGenPrefix fec;
  // The labels to push, outermost first; empty: the host's route decides,
  // and so do the interface and next hop below.
  std::vector<Wirx::MplsLabel> labels;
  Wirx::IntfId intf;
  Wirx::IpGenAddr nexthop;
  // The next hop's MAC address; unset: the host finds it.
  Wirx::EthAddr nexthopEthAddr;
  // The requests' IP source; unset: the host's address on the interface.
  Wirx::IpGenAddr src;
  // The traffic class of every label pushed.
  Orv::U8 tc = 0;
  // What the Target FEC Stack names besides the prefix: the RSVP-TE LSP
  // and its sender for tunnelRsvpIpv4, the pseudowire for tunnelPwLdp.
  Rsvp::RsvpSpId rsvp;
  Wirx::IpGenAddr rsvpSender;
  LspPing::LspPingPwInfo pw;
};

} // namespace Session
