#pragma once

#include "LspPing/LspPingMultipathSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingMultipathSubTlvParser =
    LspPingRecordParser<LspPingMultipathSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingMultipathSubTlvParser>
lspPingMultipathSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
