#pragma once

#include "LspPing/LspPingEchoJitterTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingEchoJitterTlvParser = LspPingRecordParser<LspPingEchoJitterTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingEchoJitterTlvParser>
lspPingEchoJitterTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
