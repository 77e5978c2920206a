#pragma once

#include "LspPing/LspPingOpaqueValSGSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingOpaqueValSGSubTlvParser =
    LspPingRecordParser<LspPingOpaqueValSGSubTlv>;

Orv::Ptr<LspPingOpaqueValSGSubTlvParser>
lspPingOpaqueValSGSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
