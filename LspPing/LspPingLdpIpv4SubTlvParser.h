#pragma once

#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingLdpIpv4SubTlvParser = LspPingRecordParser<LspPingLdpIpv4SubTlv>;

Orv::Ptr<LspPingLdpIpv4SubTlvParser>
lspPingLdpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
