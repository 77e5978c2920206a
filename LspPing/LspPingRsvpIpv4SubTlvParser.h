#pragma once

#include "LspPing/LspPingRecordParser.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"

namespace LspPing {

using LspPingRsvpIpv4SubTlvParser = LspPingRecordParser<LspPingRsvpIpv4SubTlv>;

Orv::Ptr<LspPingRsvpIpv4SubTlvParser>
lspPingRsvpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
