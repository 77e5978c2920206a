#pragma once

#include "LspPing/LspPingNodeAddrSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingNodeAddrSubTlvParser = LspPingRecordParser<LspPingNodeAddrSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingNodeAddrSubTlvParser>
lspPingNodeAddrSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
