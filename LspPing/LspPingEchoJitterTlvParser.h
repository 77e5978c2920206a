#pragma once

#include "LspPing/LspPingEchoJitterTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingEchoJitterTlvParser = LspPingRecordParser<LspPingEchoJitterTlv>;

Orv::Ptr<LspPingEchoJitterTlvParser>
lspPingEchoJitterTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
