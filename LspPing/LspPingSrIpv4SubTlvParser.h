#pragma once

#include "LspPing/LspPingRecordParser.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingSrIpv4SubTlvParser = LspPingRecordParser<LspPingSrIpv4SubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingSrIpv4SubTlvParser>
lspPingSrIpv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
