#pragma once

#include "LspPing/LspPingDdmapTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingDdmapTlvParser = LspPingRecordParser<LspPingDdmapTlv>;

Orv::Ptr<LspPingDdmapTlvParser>
lspPingDdmapTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
