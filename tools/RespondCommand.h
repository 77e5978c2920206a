#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `respond --state FILE --in REQUESTS --out REPLIES`, which runs the
// library's echo responder over the frames of a pcap capture against a
// router's forwarding state loaded from a state file, reports for each
// frame the return code it answered with or why it dropped the frame, and
// writes the replies, as Ethernet frames, to another capture. When it runs
// it sets `status` to the program's exit status.
void addRespondCommand(CLI::App &app, int &status);

} // namespace LspPingTool
