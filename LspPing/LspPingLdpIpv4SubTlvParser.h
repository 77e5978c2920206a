#pragma once

#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingLdpIpv4SubTlvParser = LspPingRecordParser<LspPingLdpIpv4SubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingLdpIpv4SubTlvParser>
lspPingLdpIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
