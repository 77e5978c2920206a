#pragma once

#include "LspPing/LspPingOpaqueValSGSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingOpaqueValSGSubTlvParser =
    LspPingRecordParser<LspPingOpaqueValSGSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingOpaqueValSGSubTlvParser>
lspPingOpaqueValSGSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
