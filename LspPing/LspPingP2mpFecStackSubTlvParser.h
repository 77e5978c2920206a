#pragma once

#include "LspPing/LspPingP2mpFecStackSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingP2mpFecStackSubTlvParser =
    LspPingRecordParser<LspPingP2mpFecStackSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingP2mpFecStackSubTlvParser>
lspPingP2mpFecStackSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
