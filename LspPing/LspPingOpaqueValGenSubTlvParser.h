#pragma once

#include "LspPing/LspPingOpaqueValGenSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingOpaqueValGenSubTlvParser =
    LspPingRecordParser<LspPingOpaqueValGenSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingOpaqueValGenSubTlvParser>
lspPingOpaqueValGenSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
