#pragma once

#include <CLI/CLI.hpp>

namespace LspPingTool {

// Adds `ping [OPTIONS] FEC` and `trace [OPTIONS] FEC`, which ping and trace
// LSPs from this Linux host over its own interfaces (PingRunner), one LSP
// from the command line or many from a FEC file. When one runs it sets
// `status` to the program's exit status.
void addPingCommands(CLI::App &app, int &status);

} // namespace LspPingTool
