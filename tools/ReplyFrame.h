#pragma once

#include <vector>

#include "MplsUtils/EthPktParser.h"
#include "Orv/Types.h"
#include "Wirx/UdpDatagram.h"

namespace LspPingTool {

// The Ethernet frame that carries `reply`, a UDP datagram sent in answer to
// the frame `request`: untagged, from the request's destination MAC address
// to its source; an IPv4 header (no options, TTL 64) or an IPv6 header (hop
// limit 64) and a UDP header from the datagram's addresses and ports, with
// every length and checksum filled in; then the datagram's payload. The
// datagram's two addresses are of one family, as a UDP socket sends them.
std::vector<Orv::U8> replyFrame(const MplsUtils::EthPktParser &request,
                                const Wirx::UdpDatagram &reply);

} // namespace LspPingTool
