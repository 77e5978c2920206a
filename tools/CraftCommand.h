#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `craft FILE`, which writes MPLS echo requests built by the library's
// packet generator to a pcap capture file ("-" for standard output), from
// addresses, labels, ports, FEC and downstream mapping given as options.
// When it runs it sets `status` to the program's exit status.
void addCraftCommand(CLI::App &app, int &status);

} // namespace LspPingTool
