#pragma once

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingHdrParser = LspPingRecordParser<LspPingHdr>;

Orv::Ptr<LspPingHdrParser> lspPingHdrParserFactory(Orv::Ptr<Wirx::Pkt> pkt,
                                                   U32 offset);

} // namespace LspPing
