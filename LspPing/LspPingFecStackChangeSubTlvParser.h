#pragma once

#include "LspPing/LspPingFecStackChangeSubTlv.h"
#include "LspPing/LspPingRecordParser.h"

namespace LspPing {

using LspPingFecStackChangeSubTlvParser =
    LspPingRecordParser<LspPingFecStackChangeSubTlv>;

Orv::Ptr<LspPingFecStackChangeSubTlvParser>
lspPingFecStackChangeSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
