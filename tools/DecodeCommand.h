#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `decode FILE...`, which reports on each Ethernet frame of pcap capture
// files whether it is an MPLS echo message and, if so, what the echo parser
// makes of it and what the TLV parsers make of its Target FEC Stack,
// Downstream Mapping and Interface and Label Stack TLVs. When it runs it sets
// `status` to the program's exit status.
void addDecodeCommand(CLI::App &app, int &status);

} // namespace LspPingTool
