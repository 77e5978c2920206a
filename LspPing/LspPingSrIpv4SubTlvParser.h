#pragma once

#include "LspPing/LspPingRecordParser.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"

namespace LspPing {

using LspPingSrIpv4SubTlvParser = LspPingRecordParser<LspPingSrIpv4SubTlv>;

Orv::Ptr<LspPingSrIpv4SubTlvParser>
lspPingSrIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
