#pragma once

#include "LspPing/LspPingOpaqueValGenSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingOpaqueValGenSubTlvParser =
    LspPingRecordParser<LspPingOpaqueValGenSubTlv>;

Orv::Ptr<LspPingOpaqueValGenSubTlvParser>
lspPingOpaqueValGenSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
