#pragma once

#include "LspPing/LspPingMultipathSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingMultipathSubTlvParser =
    LspPingRecordParser<LspPingMultipathSubTlv>;

Orv::Ptr<LspPingMultipathSubTlvParser>
lspPingMultipathSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
