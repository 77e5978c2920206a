#pragma once

#include "LspPing/LspPingFecStackChangeSubTlv.h"
#include "LspPing/LspPingRecordParser.h"
#include "Orv/Export.h"

namespace LspPing {

using LspPingFecStackChangeSubTlvParser =
    LspPingRecordParser<LspPingFecStackChangeSubTlv>;

LSPPING_EXPORT Orv::Ptr<LspPingFecStackChangeSubTlvParser>
lspPingFecStackChangeSubTlvParserFactory(Orv::Ptr<Wirx::Pkt> pkt, U32 offset);

} // namespace LspPing
