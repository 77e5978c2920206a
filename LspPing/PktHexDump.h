#pragma once

#include <string>

#include "LspPing/LspPingEnum.h"

namespace LspPing {

// "\x45\x00..." – four characters a byte, for traces of whole packets.
std::string pktHexDump(const U8 *bytes, U32 length);

} // namespace LspPing
