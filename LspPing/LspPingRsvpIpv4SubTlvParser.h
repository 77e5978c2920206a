#pragma once

#include "LspPing/LspPingRecordParser.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingRsvpIpv4SubTlvParser = LspPingRecordParser<LspPingRsvpIpv4SubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingRsvpIpv4SubTlvParser>
lspPingRsvpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
