#pragma once

#include "LspPing/LspPingDdmapTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingDdmapTlvParser = LspPingRecordParser<LspPingDdmapTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingDdmapTlvParser>
lspPingDdmapTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
