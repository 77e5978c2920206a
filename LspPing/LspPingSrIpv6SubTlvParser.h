#pragma once

#include "LspPing/LspPingRecordParser.h"
#include "LspPing/LspPingSrIpv6SubTlv.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingSrIpv6SubTlvParser = LspPingRecordParser<LspPingSrIpv6SubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingSrIpv6SubTlvParser>
lspPingSrIpv6SubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
