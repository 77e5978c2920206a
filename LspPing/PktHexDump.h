#pragma once

#include <string>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"

namespace LspPing {

// "\x45\x00..." – four characters a byte, for traces of whole packets.
LSPPING_EXPORT std::string pktHexDump(const U8 *bytes, U32 length);

} // namespace LspPing
