#pragma once

#include "LspPing/LspPingNodeAddrSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingNodeAddrSubTlvParser = LspPingRecordParser<LspPingNodeAddrSubTlv>;

Orv::Ptr<LspPingNodeAddrSubTlvParser>
lspPingNodeAddrSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
