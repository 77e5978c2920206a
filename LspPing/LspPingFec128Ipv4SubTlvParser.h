#pragma once

#include "LspPing/LspPingFec128Ipv4SubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingFec128Ipv4SubTlvParser =
    LspPingRecordParser<LspPingFec128Ipv4SubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingFec128Ipv4SubTlvParser>
lspPingFec128Ipv4SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
