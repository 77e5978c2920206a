#pragma once

#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingNilFecSubTlvParser = LspPingRecordParser<LspPingNilFecSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingNilFecSubTlvParser>
lspPingNilFecSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
