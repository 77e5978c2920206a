#pragma once

#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingNilFecSubTlvParser = LspPingRecordParser<LspPingNilFecSubTlv>;

Orv::Ptr<LspPingNilFecSubTlvParser>
lspPingNilFecSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
