#pragma once

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingHdrParser = LspPingRecordParser<LspPingHdr>;

LSPPING_EXPORT Orv::Ptr<LspPingHdrParser>
lspPingHdrParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
